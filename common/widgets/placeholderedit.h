#pragma once

#include <QList>
#include <QTextEdit>

// A single-line editor for texts with placeholders ("<Filename>"): each
// registered placeholder shows as one token with its display name, while
// text() gives the plain text with the placeholders. Every change is
// reported through textEdited; an insertion at the caret is one undo step.
class PlaceholderEdit final : public QTextEdit
{
    Q_OBJECT
public:
    struct Pattern {
        QString displayName;
        QString placeholder;
    };

    explicit PlaceholderEdit(QWidget *parent = nullptr);

    void addPattern(const QString &displayName, const QString &placeholder);
    const QList<Pattern> &patterns() const { return m_patterns; }

    // Registered placeholders in the text become tokens.
    void setText(const QString &text);
    QString text() const;
    int tokenCount() const;

    // Replaces the selection (or inserts at the caret) as one undoable step.
    void insertPlaceholder(const QString &placeholder);
    void insertPlainText(const QString &text);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

signals:
    void textEdited(const QString &text);

protected:
    void keyPressEvent(QKeyEvent *event) override;
    bool canInsertFromMimeData(const QMimeData *source) const override;
    void insertFromMimeData(const QMimeData *source) override;

private:
    void insertParsed(QTextCursor &cursor, const QString &text);
    const Pattern *patternFor(const QString &placeholder) const;

    QList<Pattern> m_patterns;
    QString m_lastText;
};

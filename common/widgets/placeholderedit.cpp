#include "common/widgets/placeholderedit.h"

#include <QAbstractTextDocumentLayout>
#include <QKeyEvent>
#include <QMimeData>
#include <QPainter>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextObjectInterface>

namespace {

constexpr int TokenObject = QTextFormat::UserObject + 1;
constexpr int PlaceholderProperty = QTextFormat::UserProperty + 1;
constexpr int DisplayNameProperty = QTextFormat::UserProperty + 2;
constexpr int TokenPadding = 4;

// Draws a token as a rounded box with its display name.
class TokenPainter final : public QObject, public QTextObjectInterface
{
    Q_OBJECT
    Q_INTERFACES(QTextObjectInterface)
public:
    using QObject::QObject;

    QSizeF intrinsicSize(QTextDocument *, int, const QTextFormat &format) override
    {
        const QFontMetrics metrics(format.toCharFormat().font());
        return QSizeF(metrics.horizontalAdvance(format.property(DisplayNameProperty).toString()) + 2 * TokenPadding,
                      metrics.height());
    }

    void drawObject(QPainter *painter, const QRectF &rect, QTextDocument *, int, const QTextFormat &format) override
    {
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        const QRectF box = rect.adjusted(0.5, 0.5, -0.5, -0.5);
        painter->setPen(QColor(0x5b, 0x7d, 0xb1));
        painter->setBrush(QColor(0xdc, 0xe6, 0xf5));
        painter->drawRoundedRect(box, 3, 3);
        painter->setPen(Qt::black);
        painter->setFont(format.toCharFormat().font());
        painter->drawText(box, Qt::AlignCenter, format.property(DisplayNameProperty).toString());
        painter->restore();
    }
};

} // namespace

PlaceholderEdit::PlaceholderEdit(QWidget *parent) : QTextEdit(parent)
{
    setAcceptRichText(false);
    setLineWrapMode(QTextEdit::NoWrap);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setTabChangesFocus(true);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    document()->setDocumentMargin(2);
    document()->documentLayout()->registerHandler(TokenObject, new TokenPainter(this));
    // Typing next to a token must not continue the token's format.
    connect(this, &QTextEdit::cursorPositionChanged, this, [this] {
        if (currentCharFormat().objectType() == TokenObject)
            setCurrentCharFormat(QTextCharFormat());
    });
    connect(document(), &QTextDocument::contentsChanged, this, [this] {
        const QString now = text();
        if (now == m_lastText)
            return;
        m_lastText = now;
        emit textEdited(now);
    });
}

void PlaceholderEdit::addPattern(const QString &displayName, const QString &placeholder)
{
    m_patterns.append({displayName, placeholder});
}

const PlaceholderEdit::Pattern *PlaceholderEdit::patternFor(const QString &placeholder) const
{
    for (const Pattern &pattern : m_patterns)
        if (pattern.placeholder == placeholder)
            return &pattern;
    return nullptr;
}

void PlaceholderEdit::insertParsed(QTextCursor &cursor, const QString &text)
{
    QString single = text;
    single.replace(QLatin1String("\r\n"), QLatin1String(" ")).replace(QLatin1Char('\n'), QLatin1Char(' '));
    qsizetype start = 0;
    while (start < single.size()) {
        // The earliest registered placeholder, the longest at one position.
        qsizetype at = -1;
        const Pattern *found = nullptr;
        for (const Pattern &pattern : m_patterns) {
            if (pattern.placeholder.isEmpty())
                continue;
            const qsizetype i = single.indexOf(pattern.placeholder, start);
            if (i >= 0 && (at < 0 || i < at || (i == at && pattern.placeholder.size() > found->placeholder.size()))) {
                at = i;
                found = &pattern;
            }
        }
        if (!found) {
            cursor.insertText(single.mid(start), QTextCharFormat());
            break;
        }
        if (at > start)
            cursor.insertText(single.mid(start, at - start), QTextCharFormat());
        QTextCharFormat token;
        token.setObjectType(TokenObject);
        token.setProperty(PlaceholderProperty, found->placeholder);
        token.setProperty(DisplayNameProperty, found->displayName);
        token.setFont(font());
        cursor.insertText(QString(QChar::ObjectReplacementCharacter), token);
        start = at + found->placeholder.size();
    }
}

void PlaceholderEdit::setText(const QString &text)
{
    document()->blockSignals(true);
    document()->clear();
    QTextCursor cursor(document());
    insertParsed(cursor, text);
    document()->blockSignals(false);
    document()->clearUndoRedoStacks();
    setTextCursor(QTextCursor(document()));
    viewport()->update();
    m_lastText = this->text();
    emit textEdited(m_lastText);
}

QString PlaceholderEdit::text() const
{
    QString result;
    for (QTextBlock block = document()->begin(); block.isValid(); block = block.next()) {
        for (auto it = block.begin(); !it.atEnd(); ++it) {
            const QTextFragment fragment = it.fragment();
            const QTextCharFormat format = fragment.charFormat();
            if (format.objectType() != TokenObject) {
                result += fragment.text();
                continue;
            }
            // One fragment may hold several adjacent tokens of one format.
            for (const QChar c : fragment.text())
                result += c == QChar::ObjectReplacementCharacter ? format.property(PlaceholderProperty).toString()
                                                                 : QString(c);
        }
    }
    return result;
}

int PlaceholderEdit::tokenCount() const
{
    int count = 0;
    for (QTextBlock block = document()->begin(); block.isValid(); block = block.next())
        for (auto it = block.begin(); !it.atEnd(); ++it)
            if (it.fragment().charFormat().objectType() == TokenObject)
                count += static_cast<int>(it.fragment().text().count(QChar::ObjectReplacementCharacter));
    return count;
}

void PlaceholderEdit::insertPlaceholder(const QString &placeholder)
{
    insertPlainText(placeholder);
}

void PlaceholderEdit::insertPlainText(const QString &text)
{
    QTextCursor cursor = textCursor();
    cursor.beginEditBlock();
    cursor.removeSelectedText();
    insertParsed(cursor, text);
    cursor.endEditBlock();
    setTextCursor(cursor);
}

QSize PlaceholderEdit::sizeHint() const
{
    const QFontMetrics metrics(font());
    const int frame = 2 * frameWidth() + 2 * static_cast<int>(document()->documentMargin());
    return {metrics.horizontalAdvance(QLatin1Char('x')) * 30 + frame, metrics.height() + frame + 6};
}

QSize PlaceholderEdit::minimumSizeHint() const
{
    const QSize hint = sizeHint();
    return {hint.width() / 3, hint.height()};
}

void PlaceholderEdit::keyPressEvent(QKeyEvent *event)
{
    // One line: Enter belongs to the dialog.
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        event->ignore();
        return;
    }
    QTextEdit::keyPressEvent(event);
}

bool PlaceholderEdit::canInsertFromMimeData(const QMimeData *source) const
{
    return source->hasText();
}

void PlaceholderEdit::insertFromMimeData(const QMimeData *source)
{
    insertPlainText(source->text());
}

#include "placeholderedit.moc"

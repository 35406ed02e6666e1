#pragma once

#include <QHash>
#include <QLineEdit>

class FocusEdit;

// What a FocusEdit tells its owner.
class FocusEditValue
{
public:
    virtual ~FocusEditValue() = default;
    virtual void valueCommitted(FocusEdit &edit, const QString &text) = 0;
    // A typed character (control characters too) before the edit sees it;
    // true when handled.
    virtual bool characterTyped(FocusEdit &, QChar, bool /*autoRepeat*/) { return false; }
    // After a paste from the keyboard, the context menu or a middle click.
    virtual void pasted(FocusEdit &) {}
};

// A line edit that commits its value on Enter (instead of pressing the
// dialog's default button) or, in live mode, on every change. With a name
// map only known names commit, as their canonical value.
class FocusEdit final : public QLineEdit
{
    Q_OBJECT
public:
    struct Name {
        QString value;
        bool exact = false; // the text must equal the value, not only its lower case
    };

    explicit FocusEdit(QWidget *parent = nullptr);

    void setListener(FocusEditValue *listener) { m_listener = listener; }
    void setLiveMode(bool live) { m_live = live; }
    bool liveMode() const { return m_live; }
    // Keys are lower-case names.
    void setNameMap(QHash<QString, Name> names) { m_names = std::move(names); }

    // Commits the text; false when the name map refused it.
    bool commit();
    bool textChangedSinceCommit() const { return m_changed; }

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    void notifyPasted();

    FocusEditValue *m_listener = nullptr;
    QHash<QString, Name> m_names;
    bool m_live = false;
    bool m_committing = false;
    bool m_changed = false;
};

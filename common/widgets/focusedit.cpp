#include "common/widgets/focusedit.h"

#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QMouseEvent>

FocusEdit::FocusEdit(QWidget *parent) : QLineEdit(parent)
{
    connect(this, &QLineEdit::textChanged, this, [this] {
        m_changed = true;
        if (m_live && !m_committing)
            commit();
    });
}

bool FocusEdit::commit()
{
    if (m_committing)
        return false;
    m_committing = true;
    QString value = text();
    bool accepted = true;
    if (!m_names.isEmpty()) {
        const auto it = m_names.constFind(value.toLower());
        accepted = it != m_names.cend() && !(it->exact && value != it->value);
        if (accepted)
            value = it->value;
    }
    if (accepted) {
        m_changed = false;
        if (m_listener)
            m_listener->valueCommitted(*this, value);
    }
    m_committing = false;
    return accepted;
}

void FocusEdit::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        // Enter commits here; the dialog's default button never sees it.
        const QString typed = text();
        if (commit() && !m_names.isEmpty()) {
            const QString canonical = m_names.value(typed.toLower()).value;
            if (canonical != typed) {
                m_committing = true; // showing the canonical name is no new value
                setText(canonical);
                m_committing = false;
            }
        }
        selectAll();
        event->accept();
        return;
    }
    // Every character, control characters (Backspace, Ctrl+A) included.
    const QString typed = event->text();
    if (typed.size() == 1 && m_listener && m_listener->characterTyped(*this, typed[0], event->isAutoRepeat())) {
        event->accept();
        return;
    }
    QLineEdit::keyPressEvent(event);
    if (event->matches(QKeySequence::Paste))
        notifyPasted();
}

void FocusEdit::contextMenuEvent(QContextMenuEvent *event)
{
    // The standard menu, with its "Paste" heard like the keyboard's.
    QMenu *menu = createStandardContextMenu();
    menu->setAttribute(Qt::WA_DeleteOnClose);
    // Newer Qt names the action; older Qt only gives it the line edit's own
    // (translated) text, followed by its shortcut.
    for (QAction *action : menu->actions())
        if (action->objectName() == QLatin1String("edit-paste")
            || action->text().section(QLatin1Char('\t'), 0, 0) == QLineEdit::tr("&Paste"))
            connect(action, &QAction::triggered, this, &FocusEdit::notifyPasted);
    menu->popup(event->globalPos());
    event->accept();
}

void FocusEdit::mouseReleaseEvent(QMouseEvent *event)
{
    // A middle click pastes the selection where the platform has one.
    const QString before = text();
    QLineEdit::mouseReleaseEvent(event);
    if (event->button() == Qt::MiddleButton && text() != before)
        notifyPasted();
}

void FocusEdit::notifyPasted()
{
    if (m_listener)
        m_listener->pasted(*this);
}

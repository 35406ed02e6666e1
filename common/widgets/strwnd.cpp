#include "common/widgets/strwnd.h"

#include "common/translator.h"

#include <QAbstractButton>
#include <QEvent>
#include <QGroupBox>
#include <QLabel>

namespace {
// The dialog name a window was localised under.
constexpr char LocalisedAs[] = "mctaskDialogName";
} // namespace

StrWnd::StrWnd(QWidget *window) : QObject(window), m_window(window)
{
    window->installEventFilter(this);
}

int StrWnd::localise(const QString &dialogName)
{
    return localise(dialogName, Translator::instance());
}

int StrWnd::localise(const QString &dialogName, const Translator &translator)
{
    int translated = 0;
    auto apply = [&](const QString &key, const QString &english, auto setter) {
        const QString text = translator.dialogText(dialogName, key, english);
        if (text != english) {
            setter(text);
            ++translated;
        }
    };
    apply(QStringLiteral("caption"), m_window->windowTitle(), [&](const QString &t) { m_window->setWindowTitle(t); });
    m_window->setProperty(LocalisedAs, dialogName);
    // A page embedded in the window keeps the texts of its own dialog name.
    auto ownedByAnother = [&](QWidget *child) {
        for (QWidget *parent = child->parentWidget(); parent && parent != m_window; parent = parent->parentWidget())
            if (parent->property(LocalisedAs).isValid())
                return true;
        return child->property(LocalisedAs).isValid();
    };
    for (QWidget *child : m_window->findChildren<QWidget *>()) {
        const QString id = child->objectName();
        if (id.isEmpty() || ownedByAnother(child))
            continue;
        if (auto *label = qobject_cast<QLabel *>(child))
            apply(id, label->text(), [&](const QString &t) { label->setText(t); });
        else if (auto *button = qobject_cast<QAbstractButton *>(child))
            apply(id, button->text(), [&](const QString &t) { button->setText(t); });
        else if (auto *box = qobject_cast<QGroupBox *>(child))
            apply(id, box->title(), [&](const QString &t) { box->setTitle(t); });
    }
    return translated;
}

void StrWnd::addControl(int group, QWidget *control)
{
    if (control)
        m_groups[group].append(control);
}

QList<QWidget *> StrWnd::group(int group) const
{
    QList<QWidget *> controls;
    for (const QPointer<QWidget> &control : m_groups.value(group))
        if (control)
            controls.append(control);
    return controls;
}

void StrWnd::showGroup(int group, bool show)
{
    for (QWidget *control : this->group(group))
        control->setVisible(show);
}

void StrWnd::enableGroup(int group, bool enable)
{
    for (QWidget *control : this->group(group))
        control->setEnabled(enable);
}

void StrWnd::moveGroup(int group, int dx, int dy)
{
    for (QWidget *control : this->group(group)) {
        control->move(control->pos() + QPoint(dx, dy));
        for (Fixed &fixed : m_fixed)
            if (fixed.control == control)
                fixed.geometry.translate(dx, dy);
    }
}

void StrWnd::fixControl(QWidget *control, int anchors)
{
    m_fixed.append({control, anchors, control->geometry(), m_window->size()});
}

void StrWnd::updateFixedControls()
{
    for (const Fixed &fixed : m_fixed) {
        if (!fixed.control)
            continue;
        const int dx = m_window->width() - fixed.windowSize.width();
        const int dy = m_window->height() - fixed.windowSize.height();
        QRect geometry = fixed.geometry;
        if (fixed.anchors & MoveX)
            geometry.translate(dx, 0);
        if (fixed.anchors & MoveY)
            geometry.translate(0, dy);
        if (fixed.anchors & GrowX)
            geometry.setWidth(std::max(0, geometry.width() + dx));
        if (fixed.anchors & GrowY)
            geometry.setHeight(std::max(0, geometry.height() + dy));
        fixed.control->setGeometry(geometry);
    }
}

bool StrWnd::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_window && event->type() == QEvent::Resize && !m_fixed.isEmpty())
        updateFixedControls();
    return QObject::eventFilter(watched, event);
}

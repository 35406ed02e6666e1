#pragma once

#include <QHash>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QRect>
#include <QSize>
#include <QWidget>

class Translator;

// The dialog helper every page and dialog uses: texts localised by dialog
// name, control groups shown, hidden, enabled and moved together, and
// controls kept in place relative to the window's edges on resize.
class StrWnd final : public QObject
{
public:
    // How a fixed control follows the window when it grows by (dx, dy).
    enum Anchor : int {
        MoveX = 1, // keeps its distance to the right edge
        MoveY = 2, // keeps its distance to the bottom edge
        GrowX = 4, // its width follows the window's
        GrowY = 8, // its height follows the window's
    };

    explicit StrWnd(QWidget *window);

    // Replaces the caption and the texts of labels, buttons and group boxes
    // with the dialog's translations (section = dialog name, key = the
    // control's object name; "caption" for the window's title). Returns how
    // many texts were translated.
    int localise(const QString &dialogName);
    int localise(const QString &dialogName, const Translator &translator);

    void addControl(int group, QWidget *control);
    QList<QWidget *> group(int group) const;
    // Hidden controls leave their place to the others when a layout holds them.
    void showGroup(int group, bool show);
    void enableGroup(int group, bool enable);
    void moveGroup(int group, int dx, int dy);

    // Controls placed without a layout; their geometry now is the reference.
    void fixControl(QWidget *control, int anchors);
    void updateFixedControls();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    struct Fixed {
        QPointer<QWidget> control;
        int anchors = 0;
        QRect geometry;
        QSize windowSize;
    };

    QWidget *m_window;
    QHash<int, QList<QPointer<QWidget>>> m_groups;
    QList<Fixed> m_fixed;
};

#include "common/widgets/elidedlabel.h"

#include <QHelpEvent>
#include <QPainter>
#include <QStyle>
#include <QToolTip>

ElidedLabel::ElidedLabel(QWidget *parent) : QLabel(parent)
{
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    setWordWrap(false);
    setTextFormat(Qt::PlainText);
}

QString ElidedLabel::displayedText() const
{
    return fontMetrics().elidedText(text(), Qt::ElideMiddle, contentsRect().width());
}

QSize ElidedLabel::sizeHint() const
{
    // The height of one line; the width is what the layout gives.
    const QSize hint = QLabel::sizeHint();
    return {fontMetrics().averageCharWidth() * 10, hint.height()};
}

QSize ElidedLabel::minimumSizeHint() const
{
    return {0, QLabel::minimumSizeHint().height()};
}

void ElidedLabel::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    drawFrame(&painter);
    style()->drawItemText(&painter, contentsRect(), QStyle::visualAlignment(layoutDirection(), alignment()),
                          palette(), isEnabled(), displayedText(), foregroundRole());
}

bool ElidedLabel::event(QEvent *event)
{
    if (event->type() == QEvent::ToolTip && toolTip().isEmpty()) {
        const QString shown = displayedText();
        if (shown != text())
            QToolTip::showText(static_cast<QHelpEvent *>(event)->globalPos(), text(), this);
        else
            QToolTip::hideText();
        return true;
    }
    return QLabel::event(event);
}

#pragma once

#include <QLabel>

// A one-line label that keeps its whole text but shows it elided in the
// middle to its own width, so a long path neither widens its page nor loses
// its beginning and its end. The whole text is the tool tip while elided.
class ElidedLabel final : public QLabel
{
    Q_OBJECT
public:
    explicit ElidedLabel(QWidget *parent = nullptr);

    // The text as it is drawn at the current width.
    QString displayedText() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
};

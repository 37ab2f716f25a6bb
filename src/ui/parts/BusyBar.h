#pragma once

#include <QWidget>

namespace parcelory {

/// A bar, two pixels high, that moves while an operation takes longer than a second.
class BusyBar : public QWidget {
public:
    explicit BusyBar(QWidget *parent = nullptr);

    void setBusy(bool busy);

protected:
    void paintEvent(QPaintEvent *event) override;
    void timerEvent(QTimerEvent *event) override;

private:
    int m_timer = 0;
    int m_ticks = 0;
};

} // namespace parcelory

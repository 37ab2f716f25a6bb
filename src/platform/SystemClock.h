#pragma once

#include "core/ports/Clock.h"

#include <QElapsedTimer>
#include <QTimer>

#include <map>
#include <memory>

namespace parcelory {

class SystemClock : public Clock {
public:
    SystemClock() { m_running.start(); }

    QDateTime now() const override { return QDateTime::currentDateTime(); }
    QDateTime steadyNow() const override { return m_started.addMSecs(m_running.elapsed()); }
    quint64 after(Duration delay, std::function<void()> action) override;
    void cancel(quint64 timer) override { m_timers.erase(timer); }

private:
    /// A timer may be canceled in its own call, so it is deleted later; until then it must not fire.
    struct StopAndDeleteLater {
        void operator()(QTimer *timer) const
        {
            timer->stop();
            timer->deleteLater();
        }
    };

    const QDateTime m_started = QDateTime::currentDateTime();
    QElapsedTimer m_running;
    quint64 m_lastTimer = 0;
    std::map<quint64, std::unique_ptr<QTimer, StopAndDeleteLater>> m_timers;
};

} // namespace parcelory

#include "platform/SystemClock.h"

#include <functional>
#include <utility>

namespace parcelory {

quint64 SystemClock::after(Duration delay, std::function<void()> action)
{
    const quint64 number = ++m_lastTimer;
    auto &timer = m_timers[number];
    timer.reset(new QTimer);
    timer->setSingleShot(true);
    timer->setTimerType(Qt::PreciseTimer);
    timer->callOnTimeout([this, number, action = std::move(action)] {
        const auto pending = action; // copied, because cancel() releases the timer that owns this function
        cancel(number);
        pending();
    });
    timer->start(delay);
    return number;
}

} // namespace parcelory

#pragma once

#include <QDateTime>

#include <chrono>
#include <coroutine>
#include <functional>

namespace parcelory {

/// The time of day, a steady time, and one-shot timers on the main thread.
class Clock {
public:
    using Duration = std::chrono::milliseconds;

    virtual ~Clock() = default;

    virtual QDateTime now() const = 0;
    /// Advances evenly even if someone sets the time of day; equals now() otherwise. For times to compare within one
    /// run of the program.
    virtual QDateTime steadyNow() const = 0;
    /// Calls `action` on the main thread once `delay` has passed; returns a number for cancel().
    virtual quint64 after(Duration delay, std::function<void()> action) = 0;
    virtual void cancel(quint64 timer) = 0;

    /// `co_await clock.sleep(d)` suspends only the awaiting coroutine.
    auto sleep(Duration delay)
    {
        struct Awaiter {
            Clock &clock;
            Duration delay;
            bool await_ready() const noexcept { return false; }
            void await_suspend(std::coroutine_handle<> waiting)
            {
                clock.after(delay, [waiting] { waiting.resume(); });
            }
            void await_resume() const noexcept {}
        };
        return Awaiter{*this, delay};
    }
};

} // namespace parcelory

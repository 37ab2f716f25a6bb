#pragma once

#include "core/AppError.h"
#include "core/Task.h"
#include "core/ports/Clock.h"

#include <QPromise>

#include <functional>
#include <memory>
#include <mutex>
#include <optional>

namespace parcelory {

/// The system's contacts did not answer in time.
class AddressLoadTimeout : public AppError {
public:
    AddressLoadTimeout();
};

/// Lets one of several threads resume whoever waits, and only once.
class ResumeOnce {
public:
    /// True for the first caller; everyone else has come too late.
    bool take();
    bool isTaken() const;

private:
    mutable std::mutex m_access;
    bool m_used = false;
};

/// Asked by long work: false when nobody waits for it any more.
using StillAwaited = std::function<bool()>;

namespace detail {

/// Work against timer.
template <class Result>
struct Race {
    ResumeOnce once;
    QPromise<void> over;
    std::optional<Result> result;
    std::exception_ptr error;

    void finish(std::optional<Result> value, std::exception_ptr failure = {})
    {
        if (!once.take())
            return;
        result = std::move(value);
        error = std::move(failure);
        over.finish();
    }
};

/// On a thread of its own: a pool would wait for work that hangs before the program may end.
void startOnThread(std::function<void()> work);

} // namespace detail

/// Runs `work(StillAwaited)` on another thread. Throws what it throws, or AddressLoadTimeout when the time is over
/// first; the work then goes on to its end, for nobody.
template <class Work>
Task<std::invoke_result_t<Work, StillAwaited>> blockingWork(Clock &clock, Clock::Duration timeout, Work work)
{
    const auto race = std::make_shared<detail::Race<std::invoke_result_t<Work, StillAwaited>>>();
    race->over.start();
    const quint64 timer =
        clock.after(timeout, [race] { race->finish(std::nullopt, std::make_exception_ptr(AddressLoadTimeout())); });
    detail::startOnThread([race, work = std::move(work)] {
        try {
            race->finish(work([race] { return !race->once.isTaken(); }));
        } catch (...) {
            race->finish(std::nullopt, std::current_exception());
        }
    });
    co_await race->over.future();
    clock.cancel(timer);
    if (race->error)
        std::rethrow_exception(race->error);
    co_return std::move(*race->result);
}

} // namespace parcelory

#pragma once

#include "addressbook/ImportProgress.h"
#include "core/AppError.h"
#include "core/Progress.h"
#include "core/Task.h"
#include "core/ports/Clock.h"

#include <QPromise>

#include <functional>
#include <memory>
#include <mutex>
#include <optional>

namespace parcelory {

/// The system's contacts did not respond in time.
class AddressLoadTimeout : public AppError {
public:
    AddressLoadTimeout();
};

/// Lets only the first of several threads resume a waiting coroutine.
class ResumeOnce {
public:
    /// True for the first caller only.
    bool take();

private:
    std::mutex m_access;
    bool m_used = false;
};

namespace detail {

/// The race between the work and the timer.
template <class Result>
struct Race {
    ResumeOnce once;
    QPromise<void> over;
    std::optional<Result> result;
    std::exception_ptr error;

    std::optional<quint64> nextLook; ///< the timer of the next look at the cancel token

    void finish(std::optional<Result> value, std::exception_ptr failure = {})
    {
        if (!once.take())
            return;
        result = std::move(value);
        error = std::move(failure);
        over.finish();
    }
};

/// Looks again and again whether the work was canceled, and then does not wait for it.
template <class Result>
void endWhenCanceled(Clock &clock, const CancelToken &cancel, const std::shared_ptr<Race<Result>> &race)
{
    constexpr auto interval = std::chrono::milliseconds(250);
    race->nextLook = clock.after(interval, [&clock, cancel, race] {
        if (cancel.isCanceled())
            race->finish(std::nullopt, std::make_exception_ptr(ImportCanceled()));
        else
            endWhenCanceled(clock, cancel, race);
    });
}

/// Starts a separate thread: a pool would wait for hanging work before the program could end.
void startOnThread(std::function<void()> work);

} // namespace detail

/// Runs `work` on another thread. Throws what `work` throws, AddressLoadTimeout if `timeout` passes first, or
/// ImportCanceled if `cancel` is canceled first; then the result of the work is discarded. The timeout cancels
/// `cancel`.
template <class Work>
Task<std::invoke_result_t<Work>> blockingWork(Clock &clock, Clock::Duration timeout, CancelToken cancel, Work work)
{
    const auto race = std::make_shared<detail::Race<std::invoke_result_t<Work>>>();
    race->over.start();
    const quint64 timer = clock.after(timeout, [race, cancel] {
        cancel.cancel(); // ends the work, too, once it looks
        race->finish(std::nullopt, std::make_exception_ptr(AddressLoadTimeout()));
    });
    detail::endWhenCanceled(clock, cancel, race);
    detail::startOnThread([race, work = std::move(work)] {
        try {
            race->finish(work());
        } catch (...) {
            race->finish(std::nullopt, std::current_exception());
        }
    });
    co_await race->over.future();
    clock.cancel(timer);
    clock.cancel(*race->nextLook);
    if (race->error)
        std::rethrow_exception(race->error);
    co_return std::move(*race->result);
}

} // namespace parcelory

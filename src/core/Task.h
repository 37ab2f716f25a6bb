#pragma once

#include <QCoroFuture>
#include <QCoroTask>
#include <QThreadPool>
#include <QUnhandledException>
#include <QtConcurrentRun>

#include <exception>

namespace parcelory {

/// A coroutine that runs on the main thread and starts at once. Parameters are taken by value. Return locals only:
/// `co_return member;` moves the value out of the member.
template <class T = void>
using Task = QCoro::Task<T>;

namespace detail {
template <class Body>
Task<> keepAlive(Body body) // the functor lives in this frame, and with it its captures
{
    try {
        co_await body();
    } catch (const std::exception &error) {
        qWarning("background task failed: %s", error.what());
    } catch (...) {
        qWarning("background task failed");
    }
}
} // namespace detail

/// Starts `body` (a callable that returns a Task) and lets it run to its end on its own.
template <class Body>
void spawn(Body body)
{
    detail::keepAlive(std::move(body));
}

/// The threads for blocking work. More than the machine has cores, because they mostly wait: a hanging print tool or a
/// locked key ring must leave one for the mailing log.
inline QThreadPool &workPool()
{
    static QThreadPool pool;
    pool.setMaxThreadCount(8);
    return pool;
}

/// Runs blocking `work` on the thread pool; the awaiting coroutine resumes on the thread it came from.
/// An exception of `work` arrives with its own type.
template <class Work>
Task<std::invoke_result_t<Work>> onPool(Work work)
{
    auto future = QtConcurrent::run(&workPool(), std::move(work));
    std::exception_ptr error;
    try {
        if constexpr (std::is_void_v<std::invoke_result_t<Work>>) {
            co_await future;
            co_return;
        } else {
            auto result = co_await future;
            co_return result;
        }
    } catch (const QUnhandledException &wrapped) {
        error = wrapped.exception();
    }
    std::rethrow_exception(error);
}

} // namespace parcelory

#pragma once

#include <QCoroFuture>
#include <QCoroTask>
#include <QThreadPool>
#include <QUnhandledException>
#include <QtConcurrentRun>

#include <exception>
#include <functional>
#include <type_traits>

namespace parcelory {

/// A coroutine that runs on the main thread and starts at once. Parameters are taken by value. Return locals only:
/// `co_return member;` moves the value out of the member.
template <class T = void>
using Task = QCoro::Task<T>;

namespace detail {
template <class Body>
Task<> keepAlive(Body body) // this frame keeps the functor and its captures alive
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

/// Starts `body` (a callable that returns a Task) without awaiting it; its exceptions are logged.
template <class Body>
void spawn(Body body)
{
    detail::keepAlive(std::move(body));
}

/// The threads for blocking work. More threads than cores, because they mostly wait: a hanging print tool or a locked
/// key ring must leave a thread free for the mailing log.
inline QThreadPool &workPool()
{
    static QThreadPool pool;
    pool.setMaxThreadCount(8);
    return pool;
}

/// For the destructor of an object that the work uses: waits for its end. An exception of the work is lost.
template <class Result>
void waitForEnd(QFuture<Result> &work) noexcept
{
    try {
        work.waitForFinished();
    } catch (...) {
        return;
    }
}

namespace detail {
template <class Work>
Task<std::invoke_result_t<Work>> runOn(QThreadPool &threads, Work work)
{
    auto future = QtConcurrent::run(&threads, std::move(work));
    std::exception_ptr error;
    try {
        co_return co_await future;
    } catch (const QUnhandledException &wrapped) {
        error = wrapped.exception();
    }
    std::rethrow_exception(error);
}
} // namespace detail

/// Runs blocking `work` on the thread pool; the awaiting coroutine resumes on the thread it came from.
/// An exception of `work` arrives with its own type.
template <class Work>
Task<std::invoke_result_t<Work>> onPool(Work work)
{
    return detail::runOn(workPool(), std::move(work));
}

/// The same for one call: `onPool(log, &ShipmentLog::zpl, id)`. `object` outlives the call.
template <class Object, class Method, class... Arguments>
    requires std::is_member_function_pointer_v<Method>
auto onPool(Object &object, Method method, Arguments... arguments)
{
    return onPool(
        [&object, method, ... arguments = std::move(arguments)] { return std::invoke(method, object, arguments...); });
}

} // namespace parcelory

#pragma once

#include "core/Task.h"         // IWYU pragma: export
#include "support/FakeClock.h" // IWYU pragma: export

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QTimer>

#include <optional>
#include <source_location>

namespace parcelory::test {

/// Runs the event loop until `done` holds. With a `clock`, fires one of its timers after each turn of the loop.
template <class Done>
void runUntil(Done done, FakeClock *clock = nullptr,
              const std::source_location &caller = std::source_location::current())
{
    QDeadlineTimer deadline(std::chrono::seconds(60)); // a busy machine is slow
    QTimer wake;
    wake.start(20);
    while (!done()) {
        if (deadline.hasExpired())
            qFatal("%s:%u: the test waited in vain", caller.file_name(), unsigned(caller.line()));
        QCoreApplication::processEvents();
        if (done() || (clock && clock->fireNext()))
            continue;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
}

/// Runs a task to its end and returns its result or throws its exception.
template <class T>
T runTask(Task<T> task, FakeClock *clock = nullptr,
          const std::source_location &caller = std::source_location::current())
{
    std::exception_ptr error;
    bool done = false;
    std::optional<std::conditional_t<std::is_void_v<T>, int, T>> result;
    const auto drive = [&]() -> Task<> {
        try {
            if constexpr (std::is_void_v<T>)
                co_await task;
            else
                result.emplace(co_await task);
        } catch (...) {
            error = std::current_exception();
        }
        done = true;
    };
    const Task<> driver = drive();
    runUntil([&done] { return done; }, clock, caller);
    if (error)
        std::rethrow_exception(error);
    if constexpr (!std::is_void_v<T>)
        return std::move(*result);
}

/// Processes everything that was posted to the main thread.
inline void settle()
{
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents();
}

/// Waits for the thread pool and delivers its results; each turn may start the next step of a chain.
inline void settlePool(int turns = 1)
{
    for (int turn = 0; turn < turns; ++turn) {
        workPool().waitForDone();
        settle();
    }
}

/// The same with the address book's own thread; more turns than an operation of the book has steps.
template <class Book>
void settleBook(Book &book, int turns = 6)
{
    for (int turn = 0; turn < turns; ++turn) {
        book.flush();
        settlePool();
    }
}

} // namespace parcelory::test

#pragma once

#include "core/Task.h"

namespace parcelory {

/// A thread that runs blocking work in the order in which it was added. The destructor waits for all of it.
class SerialQueue {
public:
    SerialQueue() { m_thread.setMaxThreadCount(1); }

    /// Like onPool().
    template <class Work>
    Task<std::invoke_result_t<Work>> run(Work work)
    {
        return detail::runOn(m_thread, std::move(work));
    }
    /// Starts `work`, which must not throw, and returns at once.
    void post(std::function<void()> work) { m_thread.start(std::move(work)); }
    /// Waits until all work is done.
    void wait() { m_thread.waitForDone(); }

private:
    QThreadPool m_thread;
};

} // namespace parcelory

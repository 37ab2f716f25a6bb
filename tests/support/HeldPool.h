#pragma once

#include "core/Task.h"

#include <QSemaphore> // IWYU pragma: export

#include <memory>

namespace parcelory::test {

/// While it lives, blocking work that is started waits: a coroutine stays suspended at its next onPool().
class HeldPool {
public:
    HeldPool()
    {
        for (int thread = 0; thread < m_threads; ++thread)
            workPool().start([go = m_go] { go->acquire(); });
    }
    ~HeldPool() { m_go->release(m_threads); }
    HeldPool(const HeldPool &) = delete;
    HeldPool &operator=(const HeldPool &) = delete;

private:
    const int m_threads = workPool().maxThreadCount();
    std::shared_ptr<QSemaphore> m_go = std::make_shared<QSemaphore>();
};

} // namespace parcelory::test

#pragma once

#include "core/ports/HidSource.h"
#include "platform/HidEventQueue.h"

#include <QObject>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace parcelory {

/// Scales through hidapi, on a separate thread. hidapi reports neither new devices nor reports by events, so the thread
/// looks for scales every second and polls the open scales.
class HidScales : public HidSource {
public:
    using Duration = std::chrono::milliseconds;

    explicit HidScales(Duration lookEvery = std::chrono::seconds(1)) : m_lookEvery(lookEvery) {}
    ~HidScales() override { stop(); }

    void start(Listener listener) override;
    void stop() override;

private:
    void run();
    bool waitForStop(std::chrono::steady_clock::time_point until);
    void deliver();

    const Duration m_lookEvery;
    Listener m_listener;
    HidEventQueue m_inbox;
    std::thread m_thread;
    std::mutex m_access;
    std::condition_variable m_woken;
    bool m_stopping = false;
    QObject m_receiver; ///< receives the thread's posted calls; its end discards pending calls
};

} // namespace parcelory

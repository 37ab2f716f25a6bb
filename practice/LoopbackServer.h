#pragma once

#include <httplib.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

namespace parcelory {

/// An HTTP server on a free port of the loopback address, for the services that the practice desk simulates.
///
/// The owner declares it as its last member, so that it stops before anything that a handler uses is destroyed.
class LoopbackServer {
public:
    /// Throws std::runtime_error, which names `owner`, if no port is free.
    explicit LoopbackServer(const std::string &owner);
    ~LoopbackServer();
    LoopbackServer(const LoopbackServer &) = delete;
    LoopbackServer &operator=(const LoopbackServer &) = delete;

    std::string base() const; ///< http://127.0.0.1:PORT/

    /// Answers every request with `handler`, which is called on several threads at once. Call once.
    void start(const httplib::Server::Handler &handler);

    /// Delays the calling handler. Returns early, with false, if the server stops.
    bool pause(std::chrono::milliseconds time);

    /// Closes the connection of `request` without a response.
    void hangUp(const httplib::Request &request) const;

    /// True if the client of `request` has disconnected.
    bool isAbandoned(const httplib::Request &request) const;

private:
    httplib::Server m_server;
    int m_port = 0;
    std::thread m_thread;
    std::mutex m_mutex;
    std::condition_variable m_stopping;
    bool m_isStopping = false;
    std::atomic<bool> m_hasEnded = false;
};

} // namespace parcelory

#pragma once

#include <httplib.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

namespace parcelory {

/// An HTTP server on a free port of the loopback address, for the services that a practice desk imitates.
///
/// The owner declares it as its last member, so that it stops before anything that a handler uses is gone.
class LoopbackServer {
public:
    /// Throws std::runtime_error, which names `owner`, when no port can be had.
    explicit LoopbackServer(const std::string &owner);
    ~LoopbackServer();
    LoopbackServer(const LoopbackServer &) = delete;
    LoopbackServer &operator=(const LoopbackServer &) = delete;

    std::string base() const; ///< http://127.0.0.1:PORT/

    /// Answers every request with `handler`, which is called on several threads at once. To be called once.
    void start(const httplib::Server::Handler &handler);

    /// Holds the calling handler up. Returns early, with false, when the server stops.
    bool pause(std::chrono::milliseconds time);

    /// Ends the connection that `request` came from, without an answer.
    void hangUp(const httplib::Request &request) const;

    /// Whether the client of `request` has gone without waiting for the answer.
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

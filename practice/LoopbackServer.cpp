#include "practice/LoopbackServer.h"

#include <netinet/in.h>
#include <sys/socket.h>

#include <algorithm>
#include <chrono>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace parcelory {

namespace {

constexpr auto loopback = "127.0.0.1";

/// The sockets of the connections to `serverPort`: all of them, or only the connection from `clientPort`. The server
/// library does not expose them, so they are looked up among the open files of the process.
std::vector<int> connections(int serverPort, std::optional<int> clientPort = std::nullopt)
{
    constexpr int mostOpenFiles = 4096;
    std::vector<int> found;
    for (int file = 3; file < mostOpenFiles; ++file) {
        sockaddr_in peer{}, own{};
        socklen_t peerSize = sizeof peer, ownSize = sizeof own;
        if (::getpeername(file, reinterpret_cast<sockaddr *>(&peer), &peerSize) == 0 &&
            ::getsockname(file, reinterpret_cast<sockaddr *>(&own), &ownSize) == 0 && peer.sin_family == AF_INET &&
            ntohs(own.sin_port) == serverPort && ntohs(peer.sin_port) == clientPort.value_or(ntohs(peer.sin_port)))
            found.push_back(file);
    }
    return found;
}

void shutDown(const std::vector<int> &files)
{
    for (const int file : files)
        ::shutdown(file, SHUT_RDWR);
}

} // namespace

LoopbackServer::LoopbackServer(const std::string &owner)
{
    // A kept-alive connection would make the destructor wait for seconds.
    m_server.set_keep_alive_max_count(1);
    m_port = m_server.bind_to_any_port(loopback);
    if (m_port <= 0)
        throw std::runtime_error("The " + owner + " cannot listen on " + loopback + '.');
}

LoopbackServer::~LoopbackServer()
{
    if (!m_thread.joinable())
        return;
    {
        const std::lock_guard lock(m_mutex);
        m_isStopping = true;
    }
    m_stopping.notify_all();
    // A server that does not listen yet would ignore stop().
    while (!m_server.is_running() && !m_hasEnded)
        std::this_thread::yield();
    m_server.stop();
    // Browsers open connections in advance. The server would wait seconds for a request on them.
    shutDown(connections(m_port));
    m_thread.join();
}

std::string LoopbackServer::base() const
{
    return "http://" + std::string(loopback) + ':' + std::to_string(m_port) + '/';
}

void LoopbackServer::start(const httplib::Server::Handler &handler)
{
    m_server.Get(".*", handler).Post(".*", handler).Put(".*", handler).Patch(".*", handler).Delete(".*", handler);
    m_thread = std::thread([this] {
        m_server.listen_after_bind();
        m_hasEnded = true;
    });
}

bool LoopbackServer::pause(std::chrono::milliseconds time)
{
    std::unique_lock lock(m_mutex);
    return !m_stopping.wait_for(lock, time, [this] { return m_isStopping; });
}

void LoopbackServer::hangUp(const httplib::Request &request) const
{
    shutDown(connections(m_port, request.remote_port));
}

bool LoopbackServer::isAbandoned(const httplib::Request &request) const
{
    char next = 0;
    return std::ranges::any_of(connections(m_port, request.remote_port), [&next](int file) {
        return ::recv(file, &next, sizeof next, MSG_PEEK | MSG_DONTWAIT) == 0;
    });
}

} // namespace parcelory

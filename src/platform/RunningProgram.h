#pragma once

#include <QDir>
#include <QLocalServer>

#include <chrono>
#include <functional>

namespace parcelory {

/// One window for each data folder: a second start brings the window that is open to the front, and ends.
class RunningProgram {
public:
    static constexpr std::chrono::milliseconds patience{500};

    explicit RunningProgram(const QDir &dataFolder);

    /// True if a Parcelory that runs on this folder has shown its window. False without waiting if no Parcelory runs,
    /// and after `limit` if it does not answer; this start then opens its own window.
    bool handOver(std::chrono::milliseconds limit = patience);
    /// Lets later starts hand over to this program; `show` brings its window to the front.
    void accept(std::function<void()> show);

private:
    void answer();

    QString m_path;         ///< of the socket
    bool m_isTaken = false; ///< another program has the socket, even if it does not answer
    std::function<void()> m_show;
    QLocalServer m_server;
};

} // namespace parcelory

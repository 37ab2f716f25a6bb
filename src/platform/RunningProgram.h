#pragma once

#include <QDir>
#include <QLocalServer>
#include <QLockFile>

#include <chrono>
#include <functional>

namespace parcelory {

/// One window for each data folder: a second start brings the window that is open to the front, and ends.
class RunningProgram {
public:
    static constexpr std::chrono::milliseconds patience{500};

    explicit RunningProgram(const QDir &dataFolder);

    /// True if a Parcelory that runs on this folder has shown its window. False without waiting if no other runs, and
    /// after `limit` if it does not answer; this start then opens its own window. Waits up to `turnLimit` for another
    /// start that opens its window.
    bool handOver(std::chrono::milliseconds limit = patience,
                  std::chrono::milliseconds turnLimit = std::chrono::seconds(5));
    /// Lets later starts hand over to this program; `show` brings its window to the front.
    void accept(std::function<void()> show);
    /// Lets later starts open a window of their own, because this program is ending.
    void stop();

private:
    void answer();

    const QString m_path;   ///< of the socket
    QLockFile m_turn;       ///< held from handOver() to accept(): two starts at once would both find no window
    bool m_isTaken = false; ///< another program has the socket, even if it does not answer
    std::function<void()> m_show;
    QLocalServer m_server;
};

} // namespace parcelory

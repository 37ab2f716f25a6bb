#include "platform/RunningProgram.h"

#include <QCryptographicHash>
#include <QElapsedTimer>
#include <QFile>
#include <QLocalSocket>
#include <QScopeGuard>
#include <QStandardPaths>

#include <algorithm>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

/// In the data folder, or in the user's folder for sockets if the path would be too long for one.
QString socketPath(const QDir &dataFolder)
{
    constexpr qsizetype longestPath = 103; // bytes, on macOS; Linux takes four more
    const QString path = dataFolder.absoluteFilePath(u"parcelory.socket"_s);
    const QByteArray bytes = QFile::encodeName(path);
    if (bytes.size() <= longestPath)
        return path;
    const QByteArray hash = QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex();
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    return QDir(folder.isEmpty() ? QDir::tempPath() : folder)
        .filePath(u"parcelory-%1.socket"_s.arg(QLatin1StringView(hash.first(16))));
}

} // namespace

RunningProgram::RunningProgram(const QDir &dataFolder)
    : m_path(socketPath(dataFolder)), m_turn(dataFolder.filePath(u"parcelory.lock"_s))
{
}

bool RunningProgram::handOver(std::chrono::milliseconds limit, std::chrono::milliseconds turnLimit)
{
    if (!m_turn.tryLock(turnLimit) && m_turn.error() == QLockFile::LockFailedError) {
        m_isTaken = true; // the other start hangs
        return false;
    }
    QElapsedTimer time;
    time.start();
    QLocalSocket other;
    other.connectToServer(m_path);
    if (!other.waitForConnected(int(limit.count()))) {
        const bool isFree = other.error() == QLocalSocket::ServerNotFoundError ||
                            other.error() == QLocalSocket::ConnectionRefusedError; // left by a killed program
        m_isTaken = !isFree;
        return false;
    }
    m_isTaken = true;
    return other.waitForReadyRead(int(std::max<qint64>(1, limit.count() - time.elapsed())));
}

void RunningProgram::accept(std::function<void()> show)
{
    const auto done = qScopeGuard([this] { m_turn.unlock(); });
    if (m_isTaken)
        return;
    m_show = std::move(show);
    QObject::connect(&m_server, &QLocalServer::newConnection, &m_server, [this] { answer(); });
    QLocalServer::removeServer(m_path);
    m_server.setSocketOptions(QLocalServer::UserAccessOption);
    m_server.listen(m_path); // if that fails, a second start opens a second window
}

void RunningProgram::stop()
{
    m_server.close();
}

void RunningProgram::answer()
{
    while (QLocalSocket *start = m_server.nextPendingConnection()) {
        QObject::connect(start, &QLocalSocket::disconnected, start, &QObject::deleteLater);
        m_show();
        start->write("shown");
        start->disconnectFromServer(); // once that is written
    }
}

} // namespace parcelory

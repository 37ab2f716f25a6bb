#include "shell/Trace.h"

#include "core/AppError.h"
#include "core/PrivateFiles.h"
#include "core/SaveFile.h"

#include <QFile>
#include <QFileInfo>

#include <mutex>
#include <optional>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

Trace::Trace(Clock &clock, const QDir &folder) : m_clock(clock), m_path(folder.filePath(u"trace.log"_s)) {}

void Trace::note(QLatin1StringView operation, QLatin1StringView result, std::optional<qint64> number)
{
    QByteArray line = m_clock.now().toUTC().toString(Qt::ISODateWithMs).toLatin1() + ' ' + operation.data();
    if (!result.isEmpty())
        line += QByteArray(": ") + result.data();
    if (number)
        line += ' ' + QByteArray::number(*number);
    m_queue.post([this, line] { append(line); });
}

QList<QByteArray> Trace::lines()
{
    m_queue.wait();
    const std::lock_guard access(m_access);
    load();
    return m_lines.last(qMin(kept, m_lines.size()));
}

/// The caller holds the lock.
void Trace::load()
{
    constexpr qint64 longest = 1 << 20; // bytes; more is not this program's file
    if (std::exchange(m_isLoaded, true))
        return;
    setAsideUnlessFile(m_path, longest);
    QFile file(m_path);
    if (file.open(QIODevice::ReadOnly))
        m_lines = file.readAll().split('\n');
    m_lines.removeAll(QByteArray());
}

void Trace::append(const QByteArray &line)
{
    const std::lock_guard access(m_access);
    load();
    m_lines.append(line);
    if (m_lines.size() > 2 * kept) {
        m_lines = m_lines.last(kept);
        try {
            saveBytes(m_path, m_lines.join('\n') + '\n');
            makePrivate(m_path);
        } catch (const AppError &) { // the next line tries again
        }
        return;
    }
    createPrivateFolder(QFileInfo(m_path).absoluteDir());
    createPrivateFile(m_path);
    QFile file(m_path);
    if (file.open(QIODevice::Append))
        file.write(line + '\n');
}

} // namespace parcelory

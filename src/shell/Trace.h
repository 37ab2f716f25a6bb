#pragma once

#include "core/SerialQueue.h"
#include "core/ports/Clock.h"

#include <QByteArray>
#include <QDir>
#include <QLatin1StringView>
#include <QList>
#include <QString>

#include <mutex>
#include <optional>

namespace parcelory {

/// What the program did last, for support: one line an operation, in trace.log. Takes words of the program and numbers
/// only, so that no name, street, tracking number or token can get into it. A thread of its own writes.
class Trace {
public:
    static constexpr qsizetype kept = 200; ///< lines; the file has at most twice as many

    Trace(Clock &clock, const QDir &folder);

    /// Both words are literals of the program. Does not wait for the disk.
    void note(QLatin1StringView operation, QLatin1StringView result = {}, std::optional<qint64> number = {});
    /// The newest lines, also of earlier runs, oldest first. Waits for the disk.
    QList<QByteArray> lines();

private:
    void load();
    void append(const QByteArray &line);

    Clock &m_clock;
    const QString m_path;
    std::mutex m_access;
    QList<QByteArray> m_lines; ///< of the file
    bool m_isLoaded = false;
    SerialQueue m_queue;
};

} // namespace parcelory

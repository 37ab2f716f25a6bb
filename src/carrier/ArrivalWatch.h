#pragma once

#include "core/ports/Clock.h"

#include <QDateTime>
#include <QString>

#include <map>
#include <utility>

namespace parcelory {

/// Tells whether a recorded request whose response is missing may still reach the carrier. The record holds only the
/// time of day of the request. If someone sets the clock ahead, the time of day is counted on from the start of this
/// run; if someone sets it back, the wait ends a minute after this run has first seen the record.
class ArrivalWatch {
public:
    explicit ArrivalWatch(const Clock &clock) : m_clock(clock), m_start(clock.now()), m_steadyStart(clock.steadyNow())
    {
    }

    /// `request`: any text that names it, such as the id of its record.
    bool mayStillArrive(const QString &request, const QDateTime &askedAt);

private:
    const Clock &m_clock;
    const QDateTime m_start, m_steadyStart;
    std::map<std::pair<QString, QDateTime>, QDateTime> m_firstSeen; ///< in steady time
};

} // namespace parcelory

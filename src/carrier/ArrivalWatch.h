#pragma once

#include "core/ports/Clock.h"

#include <QDateTime>
#include <QString>

#include <map>
#include <utility>

namespace parcelory {

/// Tells whether a recorded request whose response is missing may still reach the carrier. The record holds only the
/// time of day of the request. If someone sets the clock back, the wait ends a minute after this run of the program has
/// first seen the record.
class ArrivalWatch {
public:
    explicit ArrivalWatch(const Clock &clock) : m_clock(clock) {}

    /// `request`: any text that names it, such as the id of its record.
    bool mayStillArrive(const QString &request, const QDateTime &askedAt);

private:
    const Clock &m_clock;
    std::map<std::pair<QString, QDateTime>, QDateTime> m_firstSeen; ///< in steady time
};

} // namespace parcelory

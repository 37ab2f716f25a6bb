#pragma once

#include <QByteArray>
#include <QDateTime>

#include <ctime>

namespace parcelory::test {

/// A test whose clock starts at the time of day lets hours pass, and a practice desk has sold labels for hours: neither
/// may reach midnight. At night, the program gets a zone in which it is afternoon, of the same day in UTC. Called
/// before anything else uses the time.
inline void leaveTheNight()
{
    const QDateTime now = QDateTime::currentDateTime();
    const int hour = now.time().hour(), offset = now.offsetFromUtc() / 60;
    if (hour >= 7 && hour < 20)
        return;
    const int hoursWest = hour >= 20 ? 6 : offset > 0 ? 10 : -14;
    const int west = hoursWest * 60 - offset; // minutes west of UTC, as POSIX counts
    qputenv("TZ", "<afternoon>" + QByteArray(west < 0 ? "-" : "") + QByteArray::number(qAbs(west) / 60) + ':' +
                      QByteArray::number(qAbs(west) % 60));
    tzset();
}

} // namespace parcelory::test

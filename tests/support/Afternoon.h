#pragma once

#include <QByteArray>
#include <QDateTime>

#include <ctime>

namespace parcelory::test {

/// A test whose clock starts at the time of day lets hours pass, and a practice desk has sold labels for hours: neither
/// may reach midnight. At night, and while UTC has another day, the program gets a zone in which it is afternoon.
/// Called before anything else uses the time.
inline void leaveTheNight()
{
    const QDateTime now = QDateTime::currentDateTime(), utc = now.toUTC();
    const int hour = now.time().hour();
    if (hour >= 7 && hour < 20 && now.date() == utc.date())
        return;
    const int west = (utc.time().hour() - 14) * 60; // minutes west of UTC, as POSIX counts
    qputenv("TZ", "<afternoon>" + QByteArray(west < 0 ? "-" : "") + QByteArray::number(qAbs(west) / 60) + ':' +
                      QByteArray::number(qAbs(west) % 60));
    tzset();
}

} // namespace parcelory::test

#include "practice/PracticeTime.h"

#include <atomic>

namespace parcelory {

namespace {
std::atomic<qint64> posed{0}; ///< milliseconds since 1970; 0 while the time is the real one
} // namespace

QDateTime practiceNow()
{
    const qint64 time = posed;
    return time == 0 ? QDateTime::currentDateTime() : QDateTime::fromMSecsSinceEpoch(time);
}

void posePracticeTime(const QDateTime &time)
{
    posed = time.toMSecsSinceEpoch();
}

bool isPracticePosed()
{
    return posed != 0;
}

} // namespace parcelory

#pragma once

#include "platform/SystemClock.h"

#include <QDateTime>

namespace parcelory {

/// The time of day on the practice desk and at its carrier. Any thread.
QDateTime practiceNow();
/// Stops the time of day at `time` and numbers the carrier's records, so that pictures of different days are the same.
/// Timers run on.
void posePracticeTime(const QDateTime &time);
bool isPracticePosed();

class PracticeClock : public SystemClock {
public:
    QDateTime now() const override { return practiceNow(); }
};

} // namespace parcelory

#pragma once

#include <QString>

namespace parcelory {

/// Ships the parcels of an orders file on the practice desk, without a window: each is composed, validated, rated,
/// bought, printed and logged by the label screen. Prints a table of what was done and where the files lie.
/// Returns the process's exit status: 0 when every parcel got its label.
int runPractice(const QString &folder, const QString &ordersFile);

} // namespace parcelory

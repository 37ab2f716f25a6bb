#pragma once

#include <QString>

namespace parcelory {

/// Ships the parcels of an orders file on the practice desk, without a window: the label screen composes, validates,
/// rates, buys, prints and logs each parcel. Prints the results and the locations of the files. Returns the process's
/// exit status: 0 if every parcel got its label.
int runPractice(const QString &folder, const QString &ordersFile);

} // namespace parcelory

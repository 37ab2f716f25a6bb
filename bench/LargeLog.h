#pragma once

#include <QDir>

namespace parcelory::bench {

/// The number of rows in the log that is searched and exported: PARCELORY_BENCH_ROWS, or 100,000. A million rows take
/// 8 GB of the temporary folder.
int rowCount();

/// The folder of a sealed log of rowCount() rows, each with a label of 6 KB; made once for all benchmarks.
const QDir &largeLog();

} // namespace parcelory::bench

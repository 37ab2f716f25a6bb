#pragma once

#include <QString>

namespace parcelory {

/// Waits until a file's bytes are on the disk, or the entries of a folder. False if the system refuses.
bool syncToDisk(const QString &path);

} // namespace parcelory

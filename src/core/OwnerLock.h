#pragma once

#include <QLockFile>
#include <QString>

#include <chrono>

namespace parcelory {

/// A lock file beside the records, which a program holds as long as it uses them. The lock of a running program is
/// never stale, however old: the system holds it, too. The lock of a killed program is free at once if its process id
/// tells that, and otherwise after an hour: if the computer has another name since, the file came with the records from
/// another computer, or it was left empty.
class OwnerLock : public QLockFile {
public:
    explicit OwnerLock(const QString &path) : QLockFile(path) { setStaleLockTime(std::chrono::hours(1)); }
};

} // namespace parcelory

#include "core/DiskSync.h"

#include <QFile>

#include <fcntl.h>
#include <unistd.h>

namespace parcelory {

bool syncToDisk(const QString &path)
{
    const int file = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC);
    if (file < 0)
        return false;
#ifdef F_FULLFSYNC
    const bool done = ::fcntl(file, F_FULLFSYNC) == 0 || ::fsync(file) == 0; // fsync alone stops at the disk's cache
#else
    const bool done = ::fsync(file) == 0;
#endif
    ::close(file);
    return done;
}

} // namespace parcelory

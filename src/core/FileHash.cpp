#include "core/FileHash.h"

#include <QCryptographicHash>

namespace parcelory {

QString contentHash(QFile &file)
{
    QCryptographicHash hash(QCryptographicHash::Blake2b_256);
    return file.seek(0) && hash.addData(&file) ? QString::fromLatin1(hash.result().toHex()) : QString();
}

} // namespace parcelory

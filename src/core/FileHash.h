#pragma once

#include <QFile>
#include <QString>

namespace parcelory {

/// BLAKE2b-256 of an open file's bytes, hexadecimal; empty if it could not be read.
QString contentHash(QFile &file);

} // namespace parcelory

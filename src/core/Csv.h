#pragma once

#include <QString>
#include <QStringList>

namespace parcelory {

/// The fields of a row of comma-separated values, every field quoted; without an end of the line.
QString csvRow(QStringList fields);

} // namespace parcelory

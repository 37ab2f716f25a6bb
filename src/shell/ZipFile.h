#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <utility>

namespace parcelory {

/// A ZIP archive of these files (name, contents). Throws AppError if it cannot be made.
QByteArray zipOf(const QList<std::pair<QString, QByteArray>> &files);

} // namespace parcelory

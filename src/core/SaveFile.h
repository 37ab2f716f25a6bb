#pragma once

#include <QSaveFile>

#include <functional>

namespace parcelory {

/// Writes a temporary file and renames it to `path` once it is complete. If `write` returns false, the old file stays
/// and saveFile() returns false. Throws AppError if the file cannot be written completely.
[[nodiscard]] bool saveFile(const QString &path, const std::function<bool(QIODevice &file)> &write);

void saveBytes(const QString &path, const QByteArray &bytes);

} // namespace parcelory

#pragma once

#include <QSaveFile>

#include <functional>

namespace parcelory {

/// Writes a file beside the one of that name and puts it in its place once it is complete; until then, and when
/// `write` says false, the former file stays. True when the new one stands; throws AppError when it cannot be written
/// whole.
[[nodiscard]] bool saveFile(const QString &path, const std::function<bool(QIODevice &file)> &write);

void saveBytes(const QString &path, const QByteArray &bytes);

} // namespace parcelory

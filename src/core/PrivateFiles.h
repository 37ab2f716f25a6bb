#pragma once

#include <QDir>
#include <QString>

namespace parcelory {

/// The records hold names, addresses and labels, so only their owner may read them, whatever the umask is.

/// Creates the folder, with the folders above it, unless it exists. A new folder is private.
void createPrivateFolder(const QDir &folder);
/// Creates an empty private file unless something has that name.
void createPrivateFile(const QString &path);
/// Makes an existing file private.
void makePrivate(const QString &path);
/// Creates the folder and makes it and the files in it private. Renames pipes and devices in it, with a time-stamped
/// suffix: a store that opened a pipe would wait forever. A socket stays: to open it fails at once, and a running
/// Parcelory listens on it.
void makePrivate(const QDir &folder);

/// Renames what is in a file's place but is no regular file of at most `largest` bytes, in the same way.
void setAsideUnlessFile(const QString &path, qint64 largest);

/// The path with a time-stamped suffix, for a file that is set aside.
QString asidePath(const QString &path);

} // namespace parcelory

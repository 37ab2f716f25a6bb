#pragma once

#include "core/SerialQueue.h"

#include <QByteArray>
#include <QString>

#include <atomic>
#include <functional>
#include <optional>

namespace parcelory {

/// A small file that is rewritten completely on every change. A separate thread writes the changes in order, each to a
/// temporary file that is then renamed over the original, so a crash leaves either the old or the new text. write()
/// never waits; flush() and the destructor do.
class JsonFile {
public:
    /// Bytes; the stores take less than a tenth, and decoding more would hold up the start.
    static constexpr qint64 largest = 32 << 20;

    /// Brings the change from `base` to `ours` into `theirs`; nothing if `theirs` does not decode. Runs on the writer's
    /// thread.
    using Merge = std::function<std::optional<QByteArray>(const QByteArray &base, const QByteArray &ours,
                                                          const QByteArray &theirs)>;

    /// `path`: created with its folders at the first write. With `merge`, a write keeps what another program has
    /// written since this one has read or written the file; without it, the last write wins.
    explicit JsonFile(QString path, Merge merge = {});
    ~JsonFile();

    /// The file's bytes, or nothing if it is missing, unreadable, too large or no regular file. The next write first
    /// renames such a file.
    std::optional<QByteArray> read();
    /// Call if the file does not decode: the next write first renames it with a time-stamped suffix.
    void setAsideBeforeWrite() { m_setAside = true; }
    /// A failed write is only logged; the program continues with the data in memory.
    void write(QByteArray bytes);
    /// Waits until all writes have finished.
    void flush();

private:
    std::optional<QByteArray> contents() const;
    std::optional<QByteArray> mergedWithDisk(const QByteArray &bytes);
    void replace(const QByteArray &bytes);

    const QString m_path;
    const Merge m_merge;
    QByteArray m_base; ///< what this program has read or, later, written last; the writer's once read() is done
    std::atomic<bool> m_setAside = false; ///< reset by the writer once done
    SerialQueue m_writer;
};

} // namespace parcelory

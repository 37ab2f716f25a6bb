#pragma once

#include <QByteArray>
#include <QString>
#include <QThreadPool>

#include <atomic>
#include <optional>

namespace parcelory {

/// A small file that is rewritten whole on every change. Writing happens on a thread of its own, in order, beside the
/// file and then renamed over it, so a crash leaves either the old or the new text. The caller never waits; the
/// destructor does.
class JsonFile {
public:
    /// `path`: created with its folders at the first write.
    explicit JsonFile(QString path);
    ~JsonFile();

    /// The file's bytes, or nothing when it is missing or cannot be read (then it is set aside before a write).
    std::optional<QByteArray> read();
    /// The file does not decode: keep it under another name (a time-stamped suffix) when it is replaced.
    void setAsideBeforeWrite() { m_setAside = true; }
    /// A failed write is only logged: the program goes on with what it has in memory.
    void write(QByteArray bytes);
    /// Waits until everything handed to write() is on the disk.
    void flush();

private:
    QString m_path;
    std::atomic<bool> m_setAside = false; ///< reset by the writer once done
    QThreadPool m_writer;                 ///< one thread, so that writes keep their order
};

} // namespace parcelory

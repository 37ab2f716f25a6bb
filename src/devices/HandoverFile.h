#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

namespace parcelory {

/// A label or document on its way to the print system or to a viewer: a file in the folder for temporary files that
/// only its owner can read, because labels contain addresses. Locked while it exists, so that sweep() leaves it alone.
class HandoverFile {
public:
    /// Throws AppError if the file cannot be written.
    HandoverFile(const QByteArray &bytes, const QString &prefix, const QString &suffix);
    ~HandoverFile();
    HandoverFile(const HandoverFile &) = delete;
    HandoverFile &operator=(const HandoverFile &) = delete;

    QString path() const { return m_file.fileName(); }
    /// Leaves the file for a viewer, which may read it at any time.
    void keepForViewer();

    /// Deletes the files that a program left behind when it was killed, and files for a viewer that are older than a
    /// day. Waits for the disk.
    static void sweep();

private:
    QFile m_file;
    bool m_isKept = false;
};

} // namespace parcelory

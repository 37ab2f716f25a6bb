#pragma once

#include <QFile>
#include <QString>

namespace parcelory {

/// A private folder in the folder for temporary files, where an update is made ready. Locked by the program that made
/// it, so that sweep() leaves it alone. The folder outlives the object: the script that swaps the applications works in
/// it, and deletes it.
class StagingFolder {
public:
    /// Makes a new folder; throws AppError if that fails.
    void create();
    /// Empty before create().
    const QString &path() const { return m_path; }
    /// Deletes the folder with everything in it, if there is one. Waits for the disk.
    void remove();

    /// Deletes the folders that a program left behind when it was killed: older than a day, and not locked. Waits for
    /// the disk.
    static void sweep();

private:
    QString m_path;
    QFile m_lock;
};

} // namespace parcelory

#pragma once

#include "core/Progress.h"
#include "records/RecordCopy.h" // IWYU pragma: export

#include <QDateTime>
#include <QDir>
#include <QList>
#include <QString>

#include <functional>
#include <mutex>

namespace parcelory {

/// Makes, checks, lists and deletes copies of the records: one folder each, with a manifest. May be called from any
/// thread; every call waits for the disk. The mailing log and the address book stay usable meanwhile.
class RecordCopies {
public:
    static constexpr int keptDays = 30, keptMonths = 12;

    /// A database that its owner copies, because others write into it meanwhile. Returns why it could not.
    struct OwnedFile {
        QString name;
        std::function<QString(const QString &path, const Progress &progress)> copyTo;
    };

    /// `records`: the data folder. `copies`: created at the first copy.
    RecordCopies(const QDir &records, const QDir &copies, QList<OwnedFile> owned = {});

    QDir folder() const;
    void setFolder(const QDir &copies);

    /// Copies, checks the copy and deletes copies that are no longer kept. A failed copy keeps only its manifest.
    /// `progress` counts bytes; a canceled copy leaves nothing.
    RecordCopy make(CopyReason reason, const QDateTime &now, const Progress &progress = {});
    struct SetAside {
        RecordCopy copy;
        QString failure; ///< why not everything could be kept, for the end of a sentence; empty if it was
    };
    /// Keeps the present records as they are, also if they are damaged, because a copy is about to replace them. They
    /// are kept until somebody deletes them.
    SetAside setAside(const QDateTime &now, const Progress &progress = {});
    /// Notes that the copy made at `restored` replaces what setAside() kept; false if that could not be written.
    [[nodiscard]] bool markReplaced(RecordCopy aside, const QDateTime &restored) const;
    /// Takes the note of the last markReplaced() back if the present log goes on from what was set aside: a program
    /// that was killed in between has restored nothing. Call it only after RestoreStage::finishInterrupted().
    void correctMark() const;
    /// Deletes what setAside() kept, because nothing was restored.
    void discard(const RecordCopy &aside) const;
    /// "Before Restore 11-20-26": the folder that setAside() would create.
    QString setAsideName(const QDateTime &now) const;
    /// Newest first. A folder without a readable manifest is no copy.
    QList<RecordCopy> list() const;
    /// Without the copies of other logs: several desks may share the folder. `logId`: see RecordCopy::logId.
    static QList<RecordCopy> ofLog(QList<RecordCopy> copies, const QString &logId);
    /// The present log's id; empty if the log has no labels or cannot be read.
    QString logId() const;
    /// The heads of the present log's chain when these copies, in the order of list(), were made.
    static QList<LogChain::Head> headsOf(const QList<RecordCopy> &copies);
    /// Compares a copy's files with its manifest, and the databases with SQLite's own check; returns what is wrong.
    QString check(const RecordCopy &copy) const;

    /// Of copies in the order of list(), those that are no longer kept: a daily copy is kept if it is the newest of one
    /// of the last 30 days with a copy or of the last 12 months; other copies as long as a daily copy of their age.
    static QList<RecordCopy> expired(const QList<RecordCopy> &copies);

private:
    static QString check(const QDir &folder, const QList<RecordCopy::File> &files);
    static QString checkDatabases(const QDir &folder, const QList<RecordCopy::File> &files);
    static QString describe(const QDir &folder, RecordCopy &copy);
    QString keepAsTheyAre(const QDir &folder, RecordCopy &copy, const Progress &progress) const;
    QString fill(const QDir &folder, RecordCopy &copy, const Progress &progress) const;
    QString take(const OwnedFile &file, const QDir &folder, const Progress &progress) const;
    QString copyPlainFiles(const QDir &folder) const;
    static bool writeManifest(const QDir &folder, const RecordCopy &copy);

    const QDir m_records;
    const QList<OwnedFile> m_owned;
    std::mutex m_making;
    mutable std::mutex m_access;
    QDir m_copies;
};

} // namespace parcelory

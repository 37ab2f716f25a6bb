#pragma once

#include "core/OwnerLock.h"
#include "core/Progress.h"
#include "core/RecordField.h"
#include "records/RecordCopies.h"

#include <QDateTime>
#include <QDir>
#include <QString>

#include <optional>
#include <tuple>

namespace parcelory {

/// What a restore did, for the clerk.
struct RestoreNote {
    QDateTime copyMadeAt;
    int broughtBack = 0; ///< labels
    int missing = 0;     ///< labels bought since the copy that did not come back

    bool operator==(const RestoreNote &) const = default;

    static constexpr auto fields()
    {
        using N = RestoreNote;
        return std::tuple{field("copyMadeAt", &N::copyMadeAt), field("broughtBack", &N::broughtBack),
                          field("missing", &N::missing)};
    }
};

/// A copy of the records on its way into the place of the present records, in a folder beside them. Until commit(), the
/// present records are untouched, and a program that is killed leaves only the folder, which the next start deletes.
/// commit() first writes a note of what it is about to do: from then on the next start completes what a killed program
/// began. Every step waits for the disk.
class RestoreStage {
public:
    explicit RestoreStage(const QDir &records);
    /// Deletes what was not committed.
    ~RestoreStage();
    RestoreStage(const RestoreStage &) = delete;
    RestoreStage &operator=(const RestoreStage &) = delete;

    /// Copies the files of `copy` and checks them. Returns why that failed, for the end of a sentence, or nothing.
    QString fill(const QDir &copy, const QList<RecordCopy::File> &files, const Progress &progress = {});
    bool has(const QString &name) const;
    QString path(const QString &name) const;
    /// Waits until all of it is on the disk.
    QString sync() const;
    /// Puts the files in place of the present ones. Close the present files first. If that fails, either no file was
    /// changed or rest() is `begun`.
    QString commit(const RestoreNote &note);
    /// What a failed commit() leaves to the next start.
    enum class Rest {
        nothing,
        note,  ///< no file was moved, but the disk keeps the note: the next start restores if no record changes before
        begun, ///< some files were moved; the next start moves the others
    };
    Rest rest() const { return m_rest; }

    /// At the start of the program, before the records are opened: completes a restore that was interrupted, or gives
    /// it up. Returns the note of a completed restore.
    static std::optional<RestoreNote> finishInterrupted(const QDir &records);
    /// True if finishInterrupted() has a restore to complete.
    static bool isInterrupted(const QDir &records);

private:
    void giveUp();

    const QDir m_records;
    const QDir m_folder;
    OwnerLock m_lock; ///< keeps a second program from taking the folder for a leftover
    QString m_obstacle;
    Rest m_rest = Rest::nothing;
};

} // namespace parcelory

#pragma once

#include "core/Sqlite.h"
#include "records/LogChain.h"
#include "records/LogRead.h"
#include "records/ShipmentLogIndex.h"
#include "records/ShipmentRecord.h"
#include "records/ShipmentStatus.h"

#include <QDir>
#include <QIODevice>
#include <QList>
#include <QObject>

#include <chrono>
#include <functional>
#include <mutex>
#include <optional>

namespace parcelory {

/// Whether an import adds shipments whose tracking number is in the log already.
enum class KnownRows { import, skip };

/// What an import did. Lines are numbered from 1, as an editor shows them.
struct ImportReport {
    bool isCanceled = false; ///< nothing was imported
    int imported = 0;
    int known = 0;           ///< lines with a tracking number that was in the log already
    QList<int> skippedLines; ///< not the header, and too short for a shipment
    QList<int> undatedLines; ///< dated with the import, because theirs is missing or in no known form
};

/// The permanent record of every bought label, in mailing_log.sqlite. Everything but records() and shownSearch() may be
/// called from any thread; reading and writing wait for the disk, so screens call them through onPool. Every call uses
/// the file that is at the path then: another program may restore a copy at any time.
class ShipmentLog : public QObject {
    Q_OBJECT
public:
    /// How many rows the list shows.
    static constexpr int listLimit = 1000;

    /// Opens or creates the log in `folder`, adds missing columns to an older log and loads the newest rows. Waits for
    /// no other program: if that fails, it is logged, and every later call tries again.
    explicit ShipmentLog(const QDir &folder);

    /// The rows last loaded, newest first, without their blobs. Main thread only.
    const QList<ShipmentRecord> &records() const { return m_records; }
    /// The search text of records(). Empty again after a change of the log, which reloads the newest rows. Main thread
    /// only.
    const QString &shownSearch() const { return m_shownSearch; }
    /// True if no row matches shownSearch() as it is: records() match it without its accents and blanks. Main thread
    /// only.
    bool isShownAlike() const { return m_isShownAlike; }
    /// Runs the query now and hands the rows to the main thread. `search` goes into LIKE as it is: % and _ are
    /// wildcards. If no row matches, looks again for a tracking number without its blanks, and for the text without
    /// regard to accents. A canceled query ends early, hands over nothing and returns false.
    bool reload(const QString &search = {}, int limit = listLimit, const CancelToken &cancel = {});

    /// Appends a row; false if it could not be stored (the reason is logged and in lastError()).
    [[nodiscard]] bool insert(const ShipmentRecord &record, bool reloadAfter = true);
    /// Appends a label's row unless the log has it; false if neither is certain.
    [[nodiscard]] bool insertOnce(const ShipmentRecord &record);
    [[nodiscard]] bool setStatus(const ShipmentRecord &label, const QString &status);
    /// Stores the outcome of a refund: in the status, or beside it if the parcel was delivered.
    [[nodiscard]] bool setRefund(const ShipmentRecord &label, RefundState refund);
    [[nodiscard]] bool storeCustomsPDF(const ShipmentRecord &label, const QByteArray &document);
    /// A record's current row, found by its id, or by its transaction for a label that was just bought or has another
    /// id since the log was replaced; nothing if there is no such row.
    LogRead<std::optional<ShipmentRecord>> find(const ShipmentRecord &record) const;
    /// The labels of a day, in the machine's time zone, in the order in which they were bought.
    LogRead<QList<ShipmentRecord>> labelsOf(QDate day) const;
    /// The rows with these transactions since `since`, oldest first. Reads every row since then.
    LogRead<QList<ShipmentRecord>> withTransactions(const QStringList &ids, const QDateTime &since) const;
    /// Labels of one kind of key that were bought for this reference, or since `since` if `isWanted` holds for them,
    /// newest first. A busy day has thousands of labels, so the others are not kept in memory.
    LogRead<QList<ShipmentRecord>> labelsLike(const QString &reference, const QDateTime &since, bool testMode,
                                              const std::function<bool(const ShipmentRecord &)> &isWanted) const;
    /// Shipments with a smaller id than `before` whose refund the carrier has not decided, the last row first.
    LogRead<QList<ShipmentRecord>> openRefunds(qint64 before, int limit) const;
    LogRead<std::optional<QByteArray>> zpl(qint64 id) const;
    LogRead<std::optional<QByteArray>> customsPDF(qint64 id) const;

    /// Writes the whole log as an Endicia mail log, oldest first, in portions: `progress` counts rows. False if it was
    /// canceled or `out` did not accept everything; then, and if the log could not be read to its end, the output must
    /// not replace an earlier export.
    LogRead<bool> exportEndiciaCSV(QIODevice &out, const Progress &progress = {}) const;
    /// How many lines of an Endicia mail log have a tracking number that is in the log already. Throws AppError if the
    /// file or the log cannot be read.
    int knownLines(const QString &path) const;
    /// Appends the rows of an Endicia mail log; `progress` counts bytes of the file. Appends all rows or no rows:
    /// throws AppError if the file cannot be read or a row cannot be stored; in that case, and if canceled, the log is
    /// unchanged.
    ImportReport importEndiciaCSV(const QString &path, KnownRows known = KnownRows::import,
                                  const Progress &progress = {});

    /// Gives the rows of an older version their entries in the chain of hashes. `known` are heads of the chain that
    /// were kept elsewhere: rows whose chain was lost are left for verify() to tell, and are not sealed as they are
    /// now. Waits for the disk for a long time if there are many; others can write meanwhile. False if it was canceled
    /// or failed.
    bool sealOlder(const QList<LogChain::Head> &known = {}, const CancelToken &cancel = {});
    /// Gives a log of an older version the indexes that make exports and the open items fast. Others wait for about a
    /// second for 100,000 rows. False if it failed.
    bool addIndexes();
    /// Compares every row with the chain of hashes; `known` are heads of the chain that were kept elsewhere. `progress`
    /// counts entries. Others can write meanwhile.
    LogRead<LogChain::Report> verify(const QList<LogChain::Head> &known = {}, const Progress &progress = {}) const;

    /// What the clerk must know at the start: that the log cannot be used, and what to do. Empty if it can be read, and
    /// while another program has it open.
    QString trouble() const;
    /// Why the last write failed.
    QString lastError() const;
    /// What is wrong with the file, as far as a check of a few seconds finds it; empty if nothing is.
    QString damage() const;
    /// True if the log can be read and has no rows.
    bool isEmpty() const;
    QString path() const { return m_path; }

    /// Copies the log into the new file `path`. Others can write meanwhile and wait for one portion of it at most; what
    /// this program writes is in the copy. Returns why it failed; the text is empty on success and
    /// after a cancellation.
    QString copyTo(const QString &path, const Progress &progress = {}) const;
    /// Puts another file in the log's place. No label is stored meanwhile: `takeLast` may read the last rows, then the
    /// file is locked and `replace` replaces it. Both return what failed, for the end of a sentence; after a failure of
    /// `takeLast` the file is unchanged. Reloads the newest rows.
    QString replaceFile(const std::function<QString()> &takeLast, const std::function<QString()> &replace);

    // For stores with their own tables in the same file. They share the connection, because a second connection could
    // delay the writing of a bought label, and each of its writes would make the search index read the log again.

    /// Runs `work`, which writes on the connection, as one transaction; false if it failed and nothing was stored.
    [[nodiscard]] bool change(const std::function<bool(Database &)> &work);
    /// The same for the row of a label that was read before: the log may have been replaced since, and the label may
    /// have another id now. False, too, if the label is gone.
    [[nodiscard]] bool changeRow(const ShipmentRecord &label, const std::function<bool(Database &, qint64 id)> &work);
    /// Runs `work`, which reads on the connection and returns nothing if a statement failed. All its statements see the
    /// same state of the file, and only the first one waits for another program.
    template <class T>
    LogRead<T> read(const std::function<std::optional<T>(const Database &)> &work) const
    {
        std::optional<T> value;
        const QString failure = readInTurn([&](const Database &db) { return (value = work(db)).has_value(); });
        return failure.isEmpty() ? LogRead<T>(*std::move(value)) : LogRead<T>::failed(failure);
    }

signals:
    void recordsChanged();
    /// The rows could not be read, because another program has locked the log or its file is damaged: records() is
    /// unchanged. `failure` is a sentence.
    void readingFailed(const QString &failure);
    /// Another program has restored a copy, and the log is the restored file now: records() is still of the former
    /// file. Emitted on the thread of a call, while that call holds the log: connect with Qt::QueuedConnection.
    void replacedElsewhere() const;

private:
    class Turn;
    bool isReady() const;
    void openAgain() const;
    bool begin() const;
    bool migrate() const;
    void prepare() const;
    static QString reasonOf(const Database &db); ///< why its last statement failed, for the end of a sentence
    QString notRead(const Database &db) const;   ///< the same as a sentence that says what to do
    bool load(const QString &search, int limit, const CancelToken &cancel, std::chrono::milliseconds patience);
    QString look(const std::function<bool(const Database &)> &work) const;
    QString readInTurn(const std::function<bool(const Database &)> &work) const;
    std::optional<QList<ShipmentRecord>> rows(const Database &db, const QString &search, int limit,
                                              const CancelToken &cancel) const;
    LogRead<QList<ShipmentRecord>> alike(const QString &search, int limit, const CancelToken &cancel) const;
    bool transact(const std::function<bool(Database &)> &work);
    bool append(const ShipmentRecord &record, bool unlessThere, bool reloadAfter);
    LogRead<std::optional<QByteArray>> blob(const QByteArray &sql, qint64 id) const;

    QString m_path;
    mutable std::mutex m_copying;    ///< the file is neither replaced nor imported into while it is copied
    mutable std::mutex m_connection; ///< m_db serves one thread at a time: the search index depends on its state
    mutable Database m_db;
    mutable bool m_isReady = false; ///< the file has the table with all columns
    mutable ShipmentLogIndex m_index;
    std::mutex m_writing;              ///< one writer of this program at a time
    mutable std::mutex m_reasonAccess; ///< guards m_lastError; never held during a wait for the disk
    QString m_lastError;
    std::mutex m_reloading; ///< the list that is read last is also handed over last
    QList<ShipmentRecord> m_records;
    QString m_shownSearch;
    bool m_isShownAlike = false;
};

} // namespace parcelory

#include "records/ShipmentLog.h"

#include "core/AppError.h"
#include "core/PrivateFiles.h"
#include "core/Progress.h"
#include "core/SqliteCopy.h"
#include "records/LogChain.h"
#include "records/LogExport.h"
#include "records/LogRead.h"
#include "records/RefundNotes.h"
#include "records/ShipmentLogRows.h"
#include "records/ShipmentRecord.h"
#include "records/ShipmentStatus.h"

#include <QElapsedTimer>
#include <QSet>

#include <algorithm>
#include <chrono>
#include <functional>
#include <mutex>
#include <optional>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr auto schema = "CREATE TABLE IF NOT EXISTS shipments (\n"
                        "  id INTEGER PRIMARY KEY AUTOINCREMENT,\n"
                        "  created_at REAL NOT NULL,\n"
                        "  carrier TEXT, service TEXT, postage REAL,\n"
                        "  recipient TEXT, services TEXT,\n"
                        "  tracking TEXT, tracking_url TEXT,\n"
                        "  weight TEXT, description TEXT, reference TEXT,\n"
                        "  transaction_id TEXT, label_url TEXT,\n"
                        "  status TEXT, test_mode INTEGER, zpl BLOB\n"
                        ");\n"
                        "CREATE INDEX IF NOT EXISTS idx_shipments_created ON shipments(created_at DESC);";

/// Columns that later versions added, in the order in which they came.
constexpr std::pair<const char *, const char *> addedColumns[] = {
    {"weight_oz", "REAL DEFAULT 0"},   {"zip11", "TEXT DEFAULT ''"},           {"declared_value", "TEXT DEFAULT ''"},
    {"group_code", "TEXT DEFAULT ''"}, {"email", "TEXT DEFAULT ''"},           {"balance", "TEXT DEFAULT ''"},
    {"is_intl", "INTEGER DEFAULT 0"},  {"customs_doc_url", "TEXT DEFAULT ''"}, {"customs_pdf", "BLOB"}};

constexpr auto newestFirst = " ORDER BY created_at DESC, id DESC LIMIT ";

/// The longest pattern in bytes that LIKE takes by default.
constexpr qsizetype longestPattern = 50000;

QString pathIn(const QDir &folder)
{
    createPrivateFolder(folder);
    return folder.filePath(u"mailing_log.sqlite"_s);
}

} // namespace

/// The connection for one call.
class ShipmentLog::Turn {
public:
    /// A write waits for another program as long as a statement can: what it stores exists nowhere else.
    explicit Turn(const ShipmentLog &log) : m_lock(log.m_connection) { log.m_db.setPatience(Database::busyTimeout); }
    /// For a read, the time since its call counts, too, so that a clerk waits for a locked log only once.
    Turn(const ShipmentLog &log, std::chrono::milliseconds patience, const QElapsedTimer &since)
        : m_lock(log.m_connection)
    {
        const std::chrono::milliseconds left = patience - std::chrono::milliseconds(since.elapsed());
        log.m_db.setPatience(std::max(left, std::chrono::milliseconds(0)));
    }

private:
    const std::lock_guard<std::mutex> m_lock;
};

ShipmentLog::ShipmentLog(const QDir &folder) : m_path(pathIn(folder)), m_db(m_path), m_index(m_db, m_path, m_connection)
{
    if (!m_db.isOpen())
        qWarning("Parcelory: cannot open mailing log at %s", qPrintable(m_path));
    load({}, listLimit, {}, std::chrono::milliseconds(0));
}

/// Follows another program that has replaced the file. Then creates the table and adds missing columns at the first
/// call that can. The caller holds the connection and is in no transaction. A log that could not be prepared may still
/// be readable.
bool ShipmentLog::isReady() const
{
    if (m_db.isReplaced()) {
        openAgain();
        if (!m_db.isReplaced()) // some network disks number their files anew all the time
            emit replacedElsewhere();
    }
    if (!m_isReady)
        m_isReady = (m_db.isOpen() || m_db.reopen()) && m_db.exec(schema) && migrate();
    return m_isReady;
}

void ShipmentLog::openAgain() const
{
    m_db.reopen();
    m_isReady = false;
    m_index.forget();
}

bool ShipmentLog::migrate() const
{
    QSet<QString> existing;
    for (Statement columns(m_db, "PRAGMA table_info(shipments)"); columns.step();)
        existing.insert(columns.text(1));
    const auto isMissing = [&existing](const auto &column) {
        return !existing.contains(QLatin1StringView(column.first));
    };
    if (std::ranges::none_of(addedColumns, isMissing))
        return true;
    // One transaction, so that a locked log is waited for once.
    if (existing.isEmpty() || !m_db.exec("BEGIN IMMEDIATE"))
        return false;
    for (const auto &column : addedColumns) {
        if (isMissing(column))
            m_db.exec(("ALTER TABLE shipments ADD COLUMN " + QByteArray(column.first) + ' ' + column.second + ';')
                          .constData());
    }
    const bool isNew = !Statement(m_db, "SELECT 1 FROM shipments").step();
    if ((!isNew || (LogExport::addIndex(m_db) && RefundNotes::addIndex(m_db))) && m_db.exec("COMMIT"))
        return true;
    m_db.exec("ROLLBACK");
    return false;
}

/// Throws AppError if another program keeps the log from being prepared.
void ShipmentLog::prepare() const
{
    const Turn turn(*this);
    if (!isReady() && m_db.isLocked())
        throw AppError(notRead(m_db));
}

bool ShipmentLog::reload(const QString &search, int limit, const CancelToken &cancel)
{
    return load(search, limit, cancel, Database::busyTimeout);
}

bool ShipmentLog::load(const QString &search, int limit, const CancelToken &cancel, std::chrono::milliseconds patience)
{
    QElapsedTimer since;
    since.start();
    const std::lock_guard reloading(m_reloading);
    std::optional<QList<ShipmentRecord>> found;
    QString failure;
    {
        const Turn turn(*this, patience, since);
        failure = look([&](const Database &db) {
            found = rows(db, search, limit, cancel);
            if (search.isEmpty() && patience.count() > 0) // a start does not wait for the index of a large log
                m_index.isCurrent();
            return found.has_value();
        });
    }
    const bool isAlike = failure.isEmpty() && found && found->isEmpty() && !search.trimmed().isEmpty();
    if (isAlike && !cancel.isCanceled()) {
        const LogRead<QList<ShipmentRecord>> again = alike(search, limit, cancel);
        failure = again.failure();
        found = again.valueOr({});
    }
    if (cancel.isCanceled())
        return false;
    if (!failure.isEmpty()) {
        QMetaObject::invokeMethod(this, [this, failure] { emit readingFailed(failure); }, Qt::QueuedConnection);
        return false;
    }
    QMetaObject::invokeMethod(
        this,
        [this, search, isAlike, loaded = *std::move(found)] {
            m_records = loaded;
            m_shownSearch = search;
            m_isShownAlike = isAlike && !loaded.isEmpty();
            emit recordsChanged();
        },
        Qt::QueuedConnection);
    return true;
}

/// Returns a sentence if a statement failed. The caller holds the connection.
QString ShipmentLog::look(const std::function<bool(const Database &)> &work) const
{
    for (bool isSecond = false;; isSecond = true) {
        if (!isReady() && m_db.isLocked())
            return notRead(m_db); // do not wait again
        const Snapshot snapshot(m_db);
        Statement first(m_db, "SELECT 1 FROM sqlite_master");
        first.step();
        first.reset(); // the snapshot has the lock now, if it can be had
        if (!isSecond && m_db.isReplaced())
            continue; // by the program that had the lock
        const bool isRead = !m_db.isLocked() && work(m_db);
        return isRead ? QString() : notRead(m_db);
    }
}

QString ShipmentLog::readInTurn(const std::function<bool(const Database &)> &work) const
{
    QElapsedTimer since;
    since.start();
    const Turn turn(*this, Database::busyTimeout, since);
    return look(work);
}

/// Nothing if reading failed or was canceled.
std::optional<QList<ShipmentRecord>> ShipmentLog::rows(const Database &db, const QString &search, int limit,
                                                       const CancelToken &cancel) const
{
    const Interruption interruption(db, cancel);
    const QString pattern = u'%' + search + u'%';
    const QByteArray utf8 = pattern.toUtf8();
    if (utf8.size() > longestPattern)
        return QList<ShipmentRecord>(); // more than LIKE takes
    const QByteArray select = ShipmentLogRows::select;
    if (search.isEmpty()) {
        Statement newest(db, select + newestFirst + QByteArray::number(limit));
        return ShipmentLogRows::allOf(db, newest);
    }
    if (m_index.isCurrent())
        return ShipmentLogRows::withIds(db, m_index.find(utf8, limit, cancel));
    Statement query(db, select +
                            " WHERE recipient LIKE ?1 OR tracking LIKE ?1 OR description LIKE ?1 OR reference LIKE ?1" +
                            newestFirst + QByteArray::number(limit));
    if (query.isPrepared())
        query.bind(1, pattern);
    return ShipmentLogRows::allOf(db, query);
}

QString ShipmentLog::lastError() const
{
    const std::lock_guard access(m_reasonAccess);
    return m_lastError;
}

/// Begins a transaction on the file that the path names. While it lasts, no program replaces the file. The caller holds
/// the connection.
bool ShipmentLog::begin() const
{
    for (bool isSecond = false;; isSecond = true) {
        const bool isLocked = !isReady() && m_db.isLocked(); // do not wait again
        if (isLocked || !Statement(m_db, "BEGIN IMMEDIATE").execute())
            return false;
        if (isSecond || !m_db.isReplaced())
            return true;
        Statement(m_db, "ROLLBACK").execute(); // the program that had the lock has replaced the file
    }
}

/// Runs `work` as one transaction; on failure keeps the reason. The caller holds both locks.
bool ShipmentLog::transact(const std::function<bool(Database &)> &work)
{
    const auto run = [this](const char *sql) { return Statement(m_db, sql).execute(); };
    const bool stored = begin() && work(m_db) && run("COMMIT");
    if (!stored) {
        const QString reason = reasonOf(m_db);
        qWarning("Parcelory SQL error: %s", qPrintable(reason));
        run("ROLLBACK");
        const std::lock_guard access(m_reasonAccess);
        m_lastError = reason;
    }
    return stored;
}

bool ShipmentLog::insert(const ShipmentRecord &record, bool reloadAfter)
{
    return append(record, false, reloadAfter);
}

bool ShipmentLog::insertOnce(const ShipmentRecord &record)
{
    return append(record, true, true);
}

bool ShipmentLog::append(const ShipmentRecord &record, bool unlessThere, bool reloadAfter)
{
    std::optional<qint64> added;
    bool stored = false;
    {
        const std::lock_guard writing(m_writing);
        const Turn turn(*this);
        stored = transact([&](Database &db) {
            const auto there = unlessThere ? ShipmentLogRows::rowOf(db, record) : QList<ShipmentRecord>();
            if (!there || !there->isEmpty())
                return there.has_value();
            LogChain::Sealer sealer(db);
            Statement insert(db, ShipmentLogRows::NewRow::insertSql());
            if (!ShipmentLogRows::NewRow(record).store(insert))
                return false;
            added = db.lastInsertedId();
            return sealer.seal(*added);
        });
        if (stored && added)
            m_index.follow(added);
    }
    if (stored && added && reloadAfter)
        reload();
    return stored;
}

bool ShipmentLog::setStatus(const ShipmentRecord &label, const QString &status)
{
    return changeRow(label, [&status](Database &db, qint64 id) { return RefundNotes::putStatus(db, id, status); });
}

bool ShipmentLog::setRefund(const ShipmentRecord &label, RefundState refund)
{
    return changeRow(label, [refund](Database &db, qint64 id) { return RefundNotes::putRefund(db, id, refund); });
}

bool ShipmentLog::storeCustomsPDF(const ShipmentRecord &label, const QByteArray &document)
{
    const bool stored = changeRow(label, [&document](Database &db, qint64 id) {
        return execute(db, "UPDATE shipments SET customs_pdf = ? WHERE id = ?", std::optional(document), id);
    });
    if (stored) // otherwise a locked log would be waited for again
        reload();
    return stored;
}

bool ShipmentLog::change(const std::function<bool(Database &)> &work)
{
    const std::lock_guard writing(m_writing);
    const Turn turn(*this);
    const bool stored = transact(work);
    m_index.skipOwnWrite();
    return stored;
}

bool ShipmentLog::changeRow(const ShipmentRecord &label, const std::function<bool(Database &, qint64)> &work)
{
    bool isThere = true;
    const bool stored = change([&](Database &db) {
        const std::optional<qint64> id = ShipmentLogRows::idOf(db, label);
        isThere = id != 0;
        return id && (!isThere || work(db, *id));
    });
    if (!isThere) {
        const std::lock_guard access(m_reasonAccess);
        m_lastError = u"the label is no longer in it"_s;
    }
    return stored && isThere;
}

QString ShipmentLog::copyTo(const QString &path, const Progress &progress) const
{
    const std::lock_guard copying(m_copying);
    const auto inTurn = [this](const std::function<void()> &work) {
        QElapsedTimer now;
        now.start();
        const Turn turn(*this, std::chrono::milliseconds(0), now);
        work();
    };
    QString failure;
    inTurn([&] {
        if (!isReady() && !m_db.isOpen())
            failure = reasonOf(m_db);
    });
    return failure.isEmpty() ? copyDatabase(m_db, path, progress, inTurn) : failure;
}

QString ShipmentLog::replaceFile(const std::function<QString()> &takeLast, const std::function<QString()> &replace)
{
    QString failure;
    {
        const std::lock_guard copying(m_copying);
        const std::lock_guard writing(m_writing);
        failure = takeLast();
        if (!failure.isEmpty())
            return failure;
        const Turn turn(*this);
        // Other programs must not be in the middle of a write. A damaged file cannot be locked or written.
        if (m_db.isOpen() && !Statement(m_db, "BEGIN EXCLUSIVE").execute() && m_db.isLocked())
            return reasonOf(m_db);
        failure = replace();
        openAgain();
    }
    reload();
    return failure;
}

} // namespace parcelory

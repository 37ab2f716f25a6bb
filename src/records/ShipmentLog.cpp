#include "records/ShipmentLog.h"

#include "core/Progress.h"
#include "records/ShipmentLogRows.h"
#include "records/ShipmentRecord.h"
#include "records/StatusWords.h"

#include <QSet>

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

constexpr auto newestFirst = " ORDER BY created_at DESC LIMIT ";

/// The longest pattern in bytes that LIKE takes by default.
constexpr qsizetype longestPattern = 50000;

QString pathIn(const QDir &folder)
{
    folder.mkpath(u"."_s);
    return folder.filePath(u"mailing_log.sqlite"_s);
}

} // namespace

ShipmentLog::ShipmentLog(const QDir &folder) : m_path(pathIn(folder)), m_db(m_path), m_index(m_db, m_path, m_connection)
{
    if (!m_db.isOpen())
        qWarning("Parcelory: cannot open mailing log at %s", qPrintable(m_path));
    if (m_db.exec(schema))
        migrate();
    reload();
}

void ShipmentLog::migrate()
{
    QSet<QString> existing;
    for (Statement columns(m_db, "PRAGMA table_info(shipments)"); columns.step();)
        existing.insert(columns.text(1));
    if (existing.isEmpty())
        return; // it could not be read: another program has locked the log
    for (const auto &[name, type] : addedColumns) {
        if (!existing.contains(QLatin1StringView(name)))
            m_db.exec(("ALTER TABLE shipments ADD COLUMN " + QByteArray(name) + ' ' + type + ';').constData());
    }
}

bool ShipmentLog::reload(const QString &search, int limit, const CancelToken &cancel)
{
    const std::lock_guard reloading(m_reloading);
    std::optional<QList<ShipmentRecord>> found = rows(search, limit, cancel);
    if (cancel.isCanceled())
        return false;
    if (!found) {
        QMetaObject::invokeMethod(
            this, [this, reason = m_db.lastError()] { emit readingFailed(reason); }, Qt::QueuedConnection);
        return false;
    }
    QMetaObject::invokeMethod(
        this,
        [this, search, loaded = *std::move(found)] {
            m_records = loaded;
            m_shownSearch = search;
            emit recordsChanged();
        },
        Qt::QueuedConnection);
    return true;
}

std::optional<QList<ShipmentRecord>> ShipmentLog::rows(const QString &search, int limit, const CancelToken &cancel)
{
    const std::lock_guard turn(m_connection);
    const Snapshot snapshot(m_db);
    const Interruption interruption(m_db, cancel);
    const QString pattern = u'%' + search + u'%';
    const QByteArray utf8 = pattern.toUtf8();
    if (utf8.size() > longestPattern)
        return QList<ShipmentRecord>(); // more than LIKE takes
    const bool isIndexed = m_index.isCurrent();
    const QByteArray select = ShipmentLogRows::select;
    if (search.isEmpty()) {
        Statement newest(m_db, select + newestFirst + QByteArray::number(limit));
        return ShipmentLogRows::allOf(newest);
    }
    if (isIndexed) {
        QList<ShipmentRecord> found;
        Statement row(m_db, select + " WHERE id = ?");
        for (const qint64 id : m_index.find(utf8, limit, cancel)) {
            row.bind(1, id);
            const auto one = ShipmentLogRows::allOf(row);
            if (!one)
                return std::nullopt;
            found += *one;
            row.reset();
        }
        return found;
    }
    Statement query(
        m_db, select + " WHERE recipient LIKE ?1 OR tracking LIKE ?1 OR description LIKE ?1 OR reference LIKE ?1" +
                  newestFirst + QByteArray::number(limit));
    if (query.isPrepared())
        query.bind(1, pattern);
    return ShipmentLogRows::allOf(query);
}

/// The caller holds both locks.
bool ShipmentLog::write(Statement &statement)
{
    if (statement.execute())
        return true;
    m_lastError = m_db.lastError();
    qWarning("Parcelory SQL error: %s", qPrintable(m_lastError));
    return false;
}

QString ShipmentLog::lastError() const
{
    const std::lock_guard writing(m_writing);
    return m_lastError;
}

bool ShipmentLog::insert(const ShipmentRecord &record, bool reloadAfter)
{
    bool stored = false;
    {
        const std::scoped_lock locks(m_writing, m_connection);
        Statement statement(m_db, ShipmentLogRows::insert);
        if (statement.isPrepared())
            ShipmentLogRows::bind(statement, record);
        stored = write(statement);
        if (stored)
            m_index.follow(m_db.lastInsertedId());
    }
    if (stored && reloadAfter)
        reload();
    return stored;
}

bool ShipmentLog::setStatus(qint64 id, const QString &status)
{
    return update("UPDATE shipments SET status = ? WHERE id = ?", status, id);
}

bool ShipmentLog::storeCustomsPDF(qint64 id, const QByteArray &document)
{
    const bool stored = update("UPDATE shipments SET customs_pdf = ? WHERE id = ?", std::optional(document), id);
    reload();
    return stored;
}

template <class Value>
bool ShipmentLog::update(const QByteArray &sql, const Value &value, qint64 id)
{
    const std::scoped_lock locks(m_writing, m_connection);
    Statement statement(m_db, sql);
    if (statement.isPrepared()) {
        statement.bind(1, value);
        statement.bind(2, id);
    }
    const bool stored = write(statement);
    m_index.follow();
    return stored;
}

bool ShipmentLog::change(const std::function<bool(Database &)> &work)
{
    const std::scoped_lock locks(m_writing, m_connection);
    const auto run = [this](const char *sql) { return Statement(m_db, sql).execute(); };
    const bool stored = run("BEGIN IMMEDIATE") && work(m_db) && run("COMMIT");
    if (!stored) {
        m_lastError = m_db.lastError();
        qWarning("Parcelory SQL error: %s", qPrintable(m_lastError));
        run("ROLLBACK");
    }
    m_index.skipOwnWrite();
    return stored;
}

QList<ShipmentRecord> ShipmentLog::labelsLike(const QString &reference, const QDateTime &since, bool testMode)
{
    QList<ShipmentRecord> found;
    if (!reference.isEmpty())
        found = rows(reference, listLimit, {}).value_or(QList<ShipmentRecord>());
    found.removeIf([&](const ShipmentRecord &label) {
        return label.createdAt >= since || label.reference.compare(reference, Qt::CaseInsensitive) != 0;
    });
    const std::lock_guard turn(m_connection);
    Statement query(m_db, ShipmentLogRows::select + QByteArray(" WHERE created_at >= ? ORDER BY created_at DESC"));
    if (query.isPrepared())
        query.bind(1, ShipmentLogRows::secondsOf(since));
    found = ShipmentLogRows::recordsOf(query) + found;
    found.removeIf([testMode](const ShipmentRecord &label) { return label.testMode != testMode; });
    return found;
}

void ShipmentLog::look(const std::function<void(const Database &)> &work) const
{
    const std::lock_guard turn(m_connection);
    work(m_db);
}

std::optional<ShipmentRecord> ShipmentLog::find(const ShipmentRecord &record) const
{
    const std::lock_guard turn(m_connection);
    const QByteArray select = ShipmentLogRows::select;
    Statement query(m_db, record.id ? select + " WHERE id = ?"
                                    : select + " WHERE created_at >= ? AND transaction_id = ? AND transaction_id <> ''"
                                               " ORDER BY created_at DESC LIMIT 1");
    if (!query.isPrepared())
        return std::nullopt;
    if (record.id) {
        query.bind(1, record.id);
    } else {
        query.bind(1, ShipmentLogRows::secondsOf(record.createdAt.addDays(-1))); // the clock may have been set back
        query.bind(2, record.transactionID);
    }
    const QList<ShipmentRecord> found = ShipmentLogRows::recordsOf(query);
    return found.isEmpty() ? std::nullopt : std::optional(found.first());
}

QList<ShipmentRecord> ShipmentLog::labelsOf(QDate day) const
{
    const std::lock_guard turn(m_connection);
    Statement query(m_db, ShipmentLogRows::select +
                              QByteArray(" WHERE created_at >= ? AND created_at < ? ORDER BY created_at, id"));
    if (!query.isPrepared())
        return {};
    query.bind(1, ShipmentLogRows::secondsOf(day.startOfDay()));
    query.bind(2, ShipmentLogRows::secondsOf(day.addDays(1).startOfDay()));
    return ShipmentLogRows::recordsOf(query);
}

QList<ShipmentRecord> ShipmentLog::openRefunds(const QDateTime &since, int limit) const
{
    const std::lock_guard turn(m_connection);
    Statement query(m_db, ShipmentLogRows::select +
                              QByteArray(" WHERE created_at >= ? AND status IN (?, ?)"
                                         " AND transaction_id <> '' ORDER BY created_at DESC LIMIT ") +
                              QByteArray::number(limit));
    if (query.isPrepared()) {
        query.bind(1, ShipmentLogRows::secondsOf(since));
        query.bind(2, wordOf(LogStatus::refundRequested));
        query.bind(3, wordOf(LogStatus::refundPending));
    }
    return ShipmentLogRows::recordsOf(query);
}

std::optional<QByteArray> ShipmentLog::zpl(qint64 id) const
{
    return blob("SELECT zpl FROM shipments WHERE id = ?", id);
}

std::optional<QByteArray> ShipmentLog::customsPDF(qint64 id) const
{
    return blob("SELECT customs_pdf FROM shipments WHERE id = ?", id);
}

std::optional<QByteArray> ShipmentLog::blob(const QByteArray &sql, qint64 id) const
{
    const std::lock_guard turn(m_connection);
    Statement query(m_db, sql);
    if (!query.isPrepared())
        return std::nullopt;
    query.bind(1, id);
    return query.step() ? query.blob(0) : std::nullopt;
}

} // namespace parcelory

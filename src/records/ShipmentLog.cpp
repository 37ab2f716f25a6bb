#include "records/ShipmentLog.h"

#include "core/AppError.h"
#include "records/EndiciaFormat.h"

#include <QFile>
#include <QSet>
#include <QUtf8StringView>

#include <ranges>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr int wholeLog = 10000000;

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

constexpr auto selectRows = "SELECT id, created_at, carrier, service, postage, recipient, services, tracking,\n"
                            "       tracking_url, weight, weight_oz, description, reference, transaction_id,\n"
                            "       label_url, status, test_mode, zip11, declared_value, group_code, email, balance,\n"
                            "       is_intl, customs_doc_url, (customs_pdf IS NOT NULL) AS has_customs\n"
                            "FROM shipments";

constexpr auto insertRow = "INSERT INTO shipments (created_at, carrier, service, postage, recipient, services,\n"
                           "  tracking, tracking_url, weight, weight_oz, description, reference, transaction_id,\n"
                           "  label_url, status, test_mode, zip11, declared_value, group_code, email, balance, zpl,\n"
                           "  is_intl, customs_doc_url, customs_pdf)\n"
                           "VALUES (?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)";

double secondsOf(const QDateTime &time)
{
    return double(time.toMSecsSinceEpoch()) / 1000;
}

ShipmentRecord recordOf(const Statement &row)
{
    ShipmentRecord record;
    record.id = row.integer(0);
    record.createdAt = QDateTime::fromMSecsSinceEpoch(qRound64(row.real(1) * 1000));
    record.carrier = row.text(2);
    record.service = row.text(3);
    record.postage = row.real(4);
    record.recipient = row.text(5);
    record.services = row.text(6);
    record.tracking = row.text(7);
    record.trackingURL = row.text(8);
    record.weight = row.text(9);
    record.weightOz = row.real(10);
    record.descriptionText = row.text(11);
    record.reference = row.text(12);
    record.transactionID = row.text(13);
    record.labelURL = row.text(14);
    record.status = row.text(15);
    record.testMode = row.integer(16) != 0;
    record.zip11 = row.text(17);
    record.declaredValue = row.text(18);
    record.groupCode = row.text(19);
    record.email = row.text(20);
    record.balance = row.text(21);
    record.isIntl = row.integer(22) != 0;
    record.customsDocURL = row.text(23);
    record.hasCustomsPDF = row.integer(24) != 0;
    return record;
}

void bindRecord(Statement &statement, const ShipmentRecord &record)
{
    int parameter = 0;
    const auto bind = [&](const auto &value) { statement.bind(++parameter, value); };
    bind(secondsOf(record.createdAt));
    bind(record.carrier);
    bind(record.service);
    bind(record.postage);
    bind(record.recipient);
    bind(record.services);
    bind(record.tracking);
    bind(record.trackingURL);
    bind(record.weight);
    bind(record.weightOz);
    bind(record.descriptionText);
    bind(record.reference);
    bind(record.transactionID);
    bind(record.labelURL);
    bind(record.status);
    bind(record.testMode);
    bind(record.zip11);
    bind(record.declaredValue);
    bind(record.groupCode);
    bind(record.email);
    bind(record.balance);
    bind(record.zpl);
    bind(record.isIntl);
    bind(record.customsDocURL);
    bind(record.customsPDF);
}

QString readUtf8(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw AppError(u"The file could not be opened — "_s + file.errorString() + u'.');
    QByteArray bytes = file.readAll();
    if (file.error() != QFile::NoError)
        throw AppError(u"The file could not be read — "_s + file.errorString() + u'.');
    if (!QUtf8StringView(bytes).isValidUtf8())
        throw AppError(u"The file is not UTF-8 text — export it again as a tab-separated mail log."_s);
    if (bytes.startsWith("\xEF\xBB\xBF"))
        bytes.remove(0, 3); // a mark that some editors set; it would hide the header's first name
    return QString::fromUtf8(bytes);
}

AppError notImported(const QString &reason)
{
    return AppError(u"The mailing log could not be written, so nothing was imported — "_s + reason + u'.');
}

/// Appends all lines or none. On a connection of its own, so that no reader sees rows that may yet be taken back.
int appendLines(const QString &path, const QStringList &lines)
{
    Database db(path);
    const auto require = [&db](bool done) {
        if (!done)
            throw notImported(db.lastError()); // closing the connection takes the transaction back
    };
    db.exec("PRAGMA cache_spill = OFF"); // a spilled page would lock readers out until the end
    require(db.exec("BEGIN IMMEDIATE"));
    int count = 0;
    {
        Statement statement(db, insertRow);
        for (const QString &line : lines) {
            const std::optional<ShipmentRecord> record = EndiciaFormat::parse(line);
            if (!record)
                continue;
            require(statement.isPrepared());
            bindRecord(statement, *record);
            require(statement.execute());
            ++count;
        }
    }
    require(db.exec("COMMIT"));
    return count;
}

QString pathIn(const QDir &folder)
{
    folder.mkpath(u"."_s);
    return folder.filePath(u"mailing_log.sqlite"_s);
}

} // namespace

ShipmentLog::ShipmentLog(const QDir &folder) : m_path(pathIn(folder)), m_db(m_path)
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
        return; // it could not be read: another program holds the log
    for (const auto &[name, type] : addedColumns) {
        if (!existing.contains(QLatin1StringView(name)))
            m_db.exec(("ALTER TABLE shipments ADD COLUMN " + QByteArray(name) + ' ' + type + ';').constData());
    }
}

void ShipmentLog::reload(const QString &search, int limit)
{
    const std::lock_guard reloading(m_reloading);
    QMetaObject::invokeMethod(
        this,
        [this, search, loaded = rows(search, limit).found] {
            m_records = loaded;
            m_shownSearch = search;
            emit recordsChanged();
        },
        Qt::QueuedConnection);
}

ShipmentLog::Rows ShipmentLog::rows(const QString &search, int limit) const
{
    QByteArray sql = selectRows;
    if (!search.isEmpty())
        sql += " WHERE recipient LIKE ?1 OR tracking LIKE ?1 OR description LIKE ?1 OR reference LIKE ?1";
    sql += " ORDER BY created_at DESC LIMIT " + QByteArray::number(limit);
    Statement query(m_db, sql);
    if (!search.isEmpty() && query.isPrepared())
        query.bind(1, QString(u'%' + search + u'%'));
    Rows result;
    while (query.step())
        result.found.append(recordOf(query));
    result.complete = query.isComplete();
    return result;
}

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
        const std::lock_guard writing(m_writing);
        Statement statement(m_db, insertRow);
        if (statement.isPrepared())
            bindRecord(statement, record);
        stored = write(statement);
    }
    if (stored && reloadAfter)
        reload();
    return stored;
}

bool ShipmentLog::setStatus(qint64 id, const QString &status)
{
    const std::lock_guard writing(m_writing);
    Statement update(m_db, "UPDATE shipments SET status = ? WHERE id = ?");
    if (update.isPrepared()) {
        update.bind(1, status);
        update.bind(2, id);
    }
    return write(update);
}

bool ShipmentLog::storeCustomsPDF(qint64 id, const QByteArray &document)
{
    bool stored = false;
    {
        const std::lock_guard writing(m_writing);
        Statement update(m_db, "UPDATE shipments SET customs_pdf = ? WHERE id = ?");
        if (update.isPrepared()) {
            update.bind(1, std::optional(document));
            update.bind(2, id);
        }
        stored = write(update);
    }
    reload();
    return stored;
}

qsizetype ShipmentLog::labelCount(QDate day, bool testMode) const
{
    Statement query(m_db, "SELECT count(*) FROM shipments WHERE created_at >= ? AND created_at < ? AND "
                          "(coalesce(test_mode, 0) <> 0) = ?");
    if (!query.isPrepared())
        return 0;
    query.bind(1, secondsOf(day.startOfDay()));
    query.bind(2, secondsOf(day.addDays(1).startOfDay()));
    query.bind(3, testMode);
    return query.step() ? query.integer(0) : 0;
}

QList<ShipmentRecord> ShipmentLog::openRefunds(int limit) const
{
    Statement query(m_db, QByteArray(selectRows) +
                              " WHERE status IN ('REFUND_REQUESTED', 'REFUND_PENDING') AND transaction_id <> ''"
                              " ORDER BY created_at DESC LIMIT " +
                              QByteArray::number(limit));
    QList<ShipmentRecord> found;
    while (query.step())
        found.append(recordOf(query));
    return found;
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
    Statement query(m_db, sql);
    if (!query.isPrepared())
        return std::nullopt;
    query.bind(1, id);
    return query.step() ? query.blob(0) : std::nullopt;
}

QString ShipmentLog::exportEndiciaCSV(bool *complete) const
{
    const Rows all = rows(QString(), wholeLog);
    if (complete)
        *complete = all.complete;
    QString text = EndiciaFormat::header() + u'\n';
    for (const ShipmentRecord &record : std::views::reverse(all.found))
        text += EndiciaFormat::line(record) + u'\n';
    return text;
}

int ShipmentLog::importEndiciaCSV(const QString &path)
{
    const QStringList lines = EndiciaFormat::lines(readUtf8(path));
    int count = 0;
    {
        const std::lock_guard writing(m_writing);
        count = appendLines(m_path, lines);
    }
    reload();
    return count;
}

} // namespace parcelory

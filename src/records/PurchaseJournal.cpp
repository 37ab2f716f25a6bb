#include "records/PurchaseJournal.h"

#include "core/AppError.h"
#include "core/Json.h"
#include "core/PrivateFiles.h"
#include "core/ShippoAddress.h"
#include "core/SqliteCopy.h"
#include "core/Text.h"
#include "records/JournalRescue.h"
#include "records/ShipmentLogRows.h"
#include "records/ShipmentRecord.h"

#include <QFile>
#include <QRegularExpression>
#include <QSet>

#include <algorithm>
#include <chrono>
#include <mutex>
#include <optional>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;
using ShipmentLogRows::secondsOf;
using ShipmentLogRows::timeOf;

namespace {

/// Takes the lock at once and keeps it: a second program on the same data would resolve purchases that the first
/// program still has under way.
constexpr auto schema = "PRAGMA locking_mode = EXCLUSIVE;\n"
                        "PRAGMA synchronous = FULL;\n"
                        "PRAGMA fullfsync = ON;\n"
                        "BEGIN EXCLUSIVE;\n"
                        "CREATE TABLE IF NOT EXISTS purchases (\n"
                        "  id INTEGER PRIMARY KEY AUTOINCREMENT,\n"
                        "  asked_at REAL NOT NULL,\n"
                        "  rate_id TEXT NOT NULL,\n"
                        "  key_name TEXT NOT NULL,\n"
                        "  recipient TEXT NOT NULL,\n"
                        "  keep_recipient INTEGER NOT NULL,\n"
                        "  shipment TEXT NOT NULL,\n"
                        "  label BLOB, customs_pdf BLOB,\n"
                        "  printed INTEGER NOT NULL DEFAULT 0\n"
                        ");\n"
                        "CREATE TABLE IF NOT EXISTS refunds (\n"
                        "  transaction_id TEXT PRIMARY KEY,\n"
                        "  shipment_id INTEGER NOT NULL,\n"
                        "  asked_at REAL NOT NULL\n"
                        ");\n"
                        "COMMIT;";

/// What later versions added. The rate, the times, the mode and the transaction are columns, not only part of the
/// shipment's JSON: they suffice to ask the carrier if the JSON cannot be read.
constexpr std::pair<const char *, const char *> addedColumns[] = {
    {"rated_at", "REAL"}, {"test_mode", "INTEGER"}, {"transaction_id", "TEXT"}, {"prints_papers", "INTEGER"}};

template <class Record>
QString jsonText(const Record &record)
{
    return QString::fromUtf8(encodeJson(record, Keys::asIs));
}

/// A record from its JSON text; a key that the writing version did not know keeps its value in `fallback`. Nothing if
/// the text cannot be read.
template <class Record>
std::optional<Record> recordOf(const QString &text, const Record &fallback)
{
    try {
        Json all = parseJson(encodeJson(fallback, Keys::asIs));
        const Json written = parseJson(text.toUtf8());
        if (!written.is_object())
            return std::nullopt;
        all.update(written);
        return decodeJson<Record>(dumpJson(all), Keys::asIs);
    } catch (const DecodeError &) {
        return std::nullopt;
    }
}

/// An earlier version did not note it: it always printed FedEx's papers, and USPS's only if the clerk wanted them.
bool printsPapers(const Statement &row, int column, const ShipmentRecord &record)
{
    return row.kind(column) == Statement::Kind::null ? record.carrier == u"FedEx" : row.integer(column) != 0;
}

OpenPurchase purchaseOf(const Statement &row)
{
    const QDateTime askedAt = timeOf(row.real(1));
    const ShipmentRecord asked{.createdAt = askedAt, .testMode = row.integer(11) != 0};
    const auto recipient = recordOf(row.text(4), ShippoAddress());
    const auto record = recordOf(row.text(6), asked);
    OpenPurchase purchase{.id = row.integer(0),
                          .askedAt = askedAt,
                          .ratedAt = row.kind(10) == Statement::Kind::null ? QDateTime() : timeOf(row.real(10)),
                          .rateId = row.text(2),
                          .keyName = row.text(3),
                          .recipient = recipient.value_or(ShippoAddress()),
                          .keepRecipient = recipient && row.integer(5) != 0,
                          .record = record.value_or(asked),
                          .printed = row.integer(9) != 0,
                          .printsPapers = printsPapers(row, 13, record.value_or(asked)),
                          .isUnreadable = !recipient || !record};
    if (purchase.record.transactionID.isEmpty())
        purchase.record.transactionID = row.text(12);
    purchase.record.zpl = row.blob(7);
    purchase.record.customsPDF = row.blob(8);
    return purchase;
}

QString reasonOf(const Database &db, bool otherOwner)
{
    if (!db.isLocked())
        return db.lastError();
    return otherOwner ? u"Parcelory is already open. Use that window; labels can't be bought here"_s
                      : u"another program has the file open"_s;
}

} // namespace

PurchaseJournal::PurchaseJournal(const QDir &folder, std::chrono::milliseconds patience)
    : m_folder(folder), m_path(folder.filePath(u"purchase_journal.sqlite"_s)), m_patience(patience),
      m_owner(folder.filePath(u"purchase_journal.lock"_s))
{
}

/// The caller holds the lock.
bool PurchaseJournal::isReady()
{
    if (m_db)
        return true;
    createPrivateFolder(m_folder);
    // The lock of the database is what keeps a second program out. This file only tells whose lock it is.
    const bool otherOwner = !m_owner.tryLock(0) && m_owner.error() == QLockFile::LockFailedError;
    makePrivate(m_owner.fileName());
    const auto patience = otherOwner ? std::chrono::milliseconds(0) : m_patience; // another Parcelory keeps its lock
    Opening opened = openFile(patience, otherOwner);
    if (opened == Opening::damaged) {
        const QString aside = m_path + u".damaged-"_s + QDateTime::currentDateTime().toString(u"yyyyMMdd-HHmmss"_s);
        m_db.reset();
        if (QFile::rename(m_path, aside)) {
            opened = openFile(patience, otherOwner);
            const int rescued = opened == Opening::done ? copyReadableEntries(*m_db, aside) : 0;
            m_damage =
                u"The journal of purchases was damaged. It is kept as %1, and a new journal was started with the %2 "
                "entries that could be read. A label whose purchase was interrupted may be missing from the mailing "
                "log: compare it with the Master Log."_s.arg(aside)
                    .arg(rescued);
        }
    }
    if (opened == Opening::done)
        return true;
    giveUp(opened == Opening::damaged ? u"the damaged file cannot be set aside"_s : std::exchange(m_refusal, {}));
    return false;
}

/// The next call opens the file again.
void PurchaseJournal::giveUp(const QString &obstacle)
{
    if (std::exchange(m_obstacle, obstacle) != obstacle)
        qWarning("Parcelory: cannot open the purchase journal at %s", qPrintable(m_path));
    m_db.reset();
    m_owner.unlock();
}

PurchaseJournal::Opening PurchaseJournal::openFile(std::chrono::milliseconds patience, bool otherOwner)
{
    m_db.emplace(m_path);
    const QByteArray script = "PRAGMA busy_timeout = " + QByteArray::number(patience.count()) + ";\n" + schema;
    Opening opened = m_db->isOpen() && m_db->exec(script.constData()) ? checked() : Opening::refused;
    if (opened == Opening::done && !migrate())
        opened = Opening::refused;
    if (opened == Opening::refused && m_db->isDamaged())
        return Opening::damaged;
    if (opened == Opening::refused && m_refusal.isEmpty())
        m_refusal = reasonOf(*m_db, otherOwner);
    return opened;
}

/// Checks the whole file: otherwise damage further in would be found only when a purchase is recorded, after every
/// start again. A disk that fails to read is no damage of the file: it may read the next time.
PurchaseJournal::Opening PurchaseJournal::checked()
{
    static const QRegularExpression failedRead(u"error code=\\d+|failed to get page"_s);
    Statement check(*m_db, "PRAGMA quick_check(1)");
    if (!check.step())
        return Opening::refused;
    const QString found = check.text(0);
    if (found == u"ok")
        return Opening::done;
    if (!failedRead.match(found).hasMatch())
        return Opening::damaged;
    m_refusal = found;
    return Opening::refused;
}

bool PurchaseJournal::migrate()
{
    QSet<QString> existing;
    for (Statement columns(*m_db, "PRAGMA table_info(purchases)"); columns.step();)
        existing.insert(columns.text(1));
    for (const auto &[name, type] : addedColumns) {
        if (!existing.contains(QLatin1StringView(name)) &&
            !m_db->exec(("ALTER TABLE purchases ADD COLUMN " + QByteArray(name) + ' ' + type).constData()))
            return false;
    }
    return true;
}

void PurchaseJournal::open()
{
    const std::lock_guard turn(m_access);
    if (!isReady())
        refuse();
}

QString PurchaseJournal::failure() const
{
    return u"The purchase journal %1 could not be written — %2."_s.arg(m_path, m_db ? m_db->lastError() : m_obstacle);
}

QString PurchaseJournal::trouble() const
{
    const std::lock_guard turn(m_access);
    if (m_db || m_obstacle.isEmpty())
        return joinPresent({m_damage, m_unreadable}, u" "_s);
    return failure() + u" Until it can be written, no label can be bought here. Parcelory tries again by itself."_s;
}

void PurchaseJournal::refuse() const
{
    throw AppError(failure() + u" No request was sent to the carrier."_s);
}

/// The caller holds the lock.
template <class... Values>
bool PurchaseJournal::run(const QByteArray &sql, const Values &...values)
{
    if (!isReady())
        return false;
    const bool done = execute(*m_db, sql, values...);
    if (!done)
        qWarning("Parcelory SQL error: %s", qPrintable(m_db->lastError()));
    return done;
}

qint64 PurchaseJournal::begin(const OpenPurchase &purchase)
{
    const std::lock_guard turn(m_access);
    const bool begun =
        run("INSERT INTO purchases (asked_at, rate_id, key_name, recipient, keep_recipient, shipment, "
            "customs_pdf, rated_at, test_mode, prints_papers) VALUES (?, ?, ?, ?, ?, ?, ?, NULLIF(?, 0.0), ?, ?)",
            secondsOf(purchase.askedAt), purchase.rateId, purchase.keyName, jsonText(purchase.recipient),
            purchase.keepRecipient, jsonText(purchase.record), purchase.record.customsPDF,
            purchase.ratedAt.isValid() ? secondsOf(purchase.ratedAt) : 0.0, purchase.record.testMode,
            purchase.printsPapers);
    if (!begun)
        refuse();
    return m_db->lastInsertedId();
}

QString PurchaseJournal::copyTo(const QString &path)
{
    const std::lock_guard turn(m_access);
    return isReady() ? copyDatabase(*m_db, path) : m_obstacle;
}

int PurchaseJournal::takeOver(const QString &copy)
{
    const std::lock_guard turn(m_access);
    if (!isReady())
        return 0;
    {
        Statement used(*m_db, "SELECT 1 FROM sqlite_sequence WHERE name = 'purchases'");
        if (used.step() || !used.isComplete())
            return 0;
    }
    return copyReadableEntries(*m_db, copy);
}

bool PurchaseJournal::update(qint64 id, const ShipmentRecord &record)
{
    const std::lock_guard turn(m_access);
    return run("UPDATE purchases SET shipment = ?, label = ?, customs_pdf = ?, transaction_id = ? WHERE id = ?",
               jsonText(record), record.zpl, record.customsPDF, record.transactionID, id);
}

bool PurchaseJournal::markPrinted(qint64 id)
{
    const std::lock_guard turn(m_access);
    return run("UPDATE purchases SET printed = 1 WHERE id = ?", id);
}

bool PurchaseJournal::markPapersPrinted(qint64 id)
{
    const std::lock_guard turn(m_access);
    return run("UPDATE purchases SET prints_papers = 0 WHERE id = ?", id);
}

bool PurchaseJournal::close(qint64 id)
{
    const std::lock_guard turn(m_access);
    return run("DELETE FROM purchases WHERE id = ?", id);
}

QList<OpenPurchase> PurchaseJournal::openPurchases()
{
    const std::lock_guard turn(m_access);
    QList<OpenPurchase> open;
    if (!isReady())
        return open;
    QString obstacle;
    {
        Statement query(
            *m_db,
            "SELECT id, asked_at, rate_id, key_name, recipient, keep_recipient, shipment, label, "
            "customs_pdf, printed, rated_at, test_mode, transaction_id, prints_papers FROM purchases ORDER BY id");
        while (query.step())
            open.append(purchaseOf(query));
        if (!query.isComplete())
            obstacle = m_db->lastError();
    } // the file stays open, and locked, until the query ends
    if (!obstacle.isEmpty()) {
        giveUp(obstacle);
        refuse();
    }
    const auto unreadable = std::ranges::count_if(open, &OpenPurchase::isUnreadable);
    m_unreadable = unreadable == 0
                       ? QString()
                       : u"Open purchases in the journal that cannot be read completely: %1. Parcelory asks the "
                         "carrier about them by their rates; check their labels in the Master Log."_s.arg(unreadable);
    return open;
}

void PurchaseJournal::beginRefund(const OpenRefund &refund)
{
    const std::lock_guard turn(m_access);
    if (!run("INSERT OR REPLACE INTO refunds (transaction_id, shipment_id, asked_at) VALUES (?, ?, ?)",
             refund.transactionId, refund.shipmentId, secondsOf(refund.askedAt)))
        refuse();
}

bool PurchaseJournal::closeRefund(const QString &transactionId)
{
    const std::lock_guard turn(m_access);
    return run("DELETE FROM refunds WHERE transaction_id = ?", transactionId);
}

QList<OpenRefund> PurchaseJournal::openRefunds()
{
    const std::lock_guard turn(m_access);
    QList<OpenRefund> open;
    if (!isReady())
        return open;
    QString obstacle;
    {
        Statement query(*m_db, "SELECT transaction_id, shipment_id, asked_at FROM refunds ORDER BY asked_at");
        while (query.step())
            open.append({query.text(0), query.integer(1), timeOf(query.real(2))});
        if (!query.isComplete())
            obstacle = m_db->lastError();
    }
    if (!obstacle.isEmpty())
        giveUp(obstacle); // the next sync reads the rest
    return open;
}

} // namespace parcelory

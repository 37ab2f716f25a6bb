#include "records/PurchaseJournal.h"

#include "core/AppError.h"
#include "core/Json.h"
#include "core/PrivateFiles.h"
#include "core/ShippoAddress.h"
#include "records/ShipmentLogRows.h"
#include "records/ShipmentRecord.h"

#include <QFile>

#include <chrono>
#include <mutex>
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

template <class Record>
QString jsonText(const Record &record)
{
    return QString::fromUtf8(encodeJson(record, Keys::asIs));
}

OpenPurchase purchaseOf(const Statement &row)
{
    OpenPurchase purchase{.id = row.integer(0),
                          .askedAt = timeOf(row.real(1)),
                          .rateId = row.text(2),
                          .keyName = row.text(3),
                          .recipient = decodeJson<ShippoAddress>(row.text(4).toUtf8(), Keys::asIs),
                          .keepRecipient = row.integer(5) != 0,
                          .record = decodeJson<ShipmentRecord>(row.text(6).toUtf8(), Keys::asIs),
                          .printed = row.integer(9) != 0};
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
    m_owner.setStaleLockTime(0); // valid as long as its program runs, however long that is
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
    Opening opened = openFile(patience);
    if (opened == Opening::damaged) {
        const QString aside = m_path + u".damaged-"_s + QDateTime::currentDateTime().toString(u"yyyyMMdd-HHmmss"_s);
        m_db.reset();
        if (QFile::rename(m_path, aside)) {
            m_damage =
                u"The journal of purchases was damaged. It is kept as %1, and a new journal was started. A label whose "
                "purchase was interrupted may be missing from the mailing log: compare it with the Master Log."_s.arg(
                    aside);
            opened = openFile(patience);
        }
    }
    if (opened == Opening::done)
        return true;
    const QString obstacle = m_db ? reasonOf(*m_db, otherOwner) : u"the damaged file cannot be set aside"_s;
    if (std::exchange(m_obstacle, obstacle) != obstacle)
        qWarning("Parcelory: cannot open the purchase journal at %s", qPrintable(m_path));
    m_db.reset();
    m_owner.unlock();
    return false;
}

/// Checks the whole file: otherwise damage further in would be found only when a purchase is recorded, after every
/// start again.
PurchaseJournal::Opening PurchaseJournal::openFile(std::chrono::milliseconds patience)
{
    m_db.emplace(m_path);
    const QByteArray script = "PRAGMA busy_timeout = " + QByteArray::number(patience.count()) + ";\n" + schema;
    if (!m_db->isOpen() || !m_db->exec(script.constData()))
        return m_db->isDamaged() ? Opening::damaged : Opening::refused;
    Statement check(*m_db, "PRAGMA quick_check(1)");
    return check.step() && check.text(0) == u"ok" ? Opening::done : Opening::damaged;
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
        return m_damage;
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
    const bool begun = run("INSERT INTO purchases (asked_at, rate_id, key_name, recipient, keep_recipient, shipment, "
                           "customs_pdf) VALUES (?, ?, ?, ?, ?, ?, ?)",
                           secondsOf(purchase.askedAt), purchase.rateId, purchase.keyName, jsonText(purchase.recipient),
                           purchase.keepRecipient, jsonText(purchase.record), purchase.record.customsPDF);
    if (!begun)
        refuse();
    return m_db->lastInsertedId();
}

bool PurchaseJournal::update(qint64 id, const ShipmentRecord &record)
{
    const std::lock_guard turn(m_access);
    return run("UPDATE purchases SET shipment = ?, label = ?, customs_pdf = ? WHERE id = ?", jsonText(record),
               record.zpl, record.customsPDF, id);
}

bool PurchaseJournal::markPrinted(qint64 id)
{
    const std::lock_guard turn(m_access);
    return run("UPDATE purchases SET printed = 1 WHERE id = ?", id);
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
    Statement query(*m_db, "SELECT id, asked_at, rate_id, key_name, recipient, keep_recipient, shipment, label, "
                           "customs_pdf, printed FROM purchases ORDER BY id");
    while (query.step()) {
        try {
            open.append(purchaseOf(query));
        } catch (const DecodeError &error) { // it stays in the journal for a version that can read it
            qWarning("Parcelory: purchase %lld of the journal cannot be read: %s", query.integer(0), error.what());
        }
    }
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
    Statement query(*m_db, "SELECT transaction_id, shipment_id, asked_at FROM refunds ORDER BY asked_at");
    while (query.step())
        open.append({query.text(0), query.integer(1), timeOf(query.real(2))});
    return open;
}

} // namespace parcelory

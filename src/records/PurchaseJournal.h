#pragma once

#include "core/ShippoAddress.h"
#include "core/Sqlite.h"
#include "records/ShipmentRecord.h"

#include <QDir>
#include <QList>

#include <mutex>
#include <optional>

namespace parcelory {

/// A purchase that the carrier was asked for and that is not in the books yet.
struct OpenPurchase {
    qint64 id = 0; ///< in the journal
    QDateTime askedAt;
    QString rateId;
    QString keyName; ///< of the API key that it is asked for with: another account knows nothing of it
    ShippoAddress recipient;
    bool keepRecipient = false; ///< the address book takes the recipient once the label is bought
    ShipmentRecord record;      ///< what the mailing log will hold; transactionID is empty until the carrier named it
    bool printed = false;       ///< the printer took the label
};

/// A refund that the carrier was asked for and whose answer is not in the mailing log yet.
struct OpenRefund {
    QString transactionId;
    qint64 shipmentId = 0; ///< the mailing log's row
    QDateTime askedAt;
};

/// What the desk is about to spend or to ask back, written down before the carrier is asked: the carrier takes no
/// mark by which it would know a repeated purchase again, so a label must never be bought because nobody remembers
/// that it was. Every entry is on the disk when its call returns; an entry is open until the books are complete.
///
/// In purchase_journal.sqlite, which one program at a time holds. From any thread; every call waits for the disk.
class PurchaseJournal {
public:
    /// Opens or creates the journal in `folder`. A damaged file is kept under another name and a new one begun.
    explicit PurchaseJournal(const QDir &folder);
    /// What the clerk has to know at the start: that a damaged file was set aside, or why nothing can be bought;
    /// empty when all is well.
    QString trouble() const;

    /// Writes down that `purchase` is about to be asked for and gives its id. Throws AppError when that is not on the
    /// disk: then nothing may be bought.
    qint64 begin(const OpenPurchase &purchase);
    /// What is known by now: the carrier's answer, the documents.
    bool update(qint64 id, const ShipmentRecord &record);
    bool markPrinted(qint64 id);
    /// The books are complete: the label stands in the mailing log, or it was not bought.
    bool close(qint64 id);
    /// Oldest first, with their documents.
    QList<OpenPurchase> openPurchases() const;

    /// Writes down that a refund is about to be asked for; throws AppError when that is not on the disk.
    void beginRefund(const OpenRefund &refund);
    bool closeRefund(const QString &transactionId);
    QList<OpenRefund> openRefunds() const;

private:
    enum class Opening { done, damaged, refused };
    Opening open();
    template <class... Values>
    bool run(const QByteArray &sql, const Values &...values);
    QString failure() const;
    [[noreturn]] void refuse() const;

    QString m_path;
    mutable std::mutex m_access;
    std::optional<Database> m_db; ///< only while it can be written
    QString m_obstacle;           ///< why it cannot
    QString m_damage;
};

} // namespace parcelory

#pragma once

#include "core/OwnerLock.h"
#include "core/ShippoAddress.h"
#include "core/Sqlite.h"
#include "records/ShipmentRecord.h"

#include <QDir>
#include <QList>

#include <chrono>
#include <mutex>
#include <optional>

namespace parcelory {

/// A purchase that was requested from the carrier and is not complete in the mailing log yet.
struct OpenPurchase {
    qint64 id = 0; ///< in the journal
    QDateTime askedAt;
    QDateTime ratedAt; ///< when the rate was made, by the carrier's clock; invalid if the carrier did not tell
    QString rateId;
    QString keyName; ///< of the API key of the request: another account does not know the purchase
    ShippoAddress recipient;
    bool keepRecipient = false; ///< add the recipient to the address book once the label is bought
    ShipmentRecord record;      ///< the mailing log's future row; transactionID is empty until the carrier returns it
    bool printed = false;       ///< the printer took the label
    bool printsPapers = true;   ///< the customs papers of a parcel abroad are wanted on paper and are not printed yet
    bool isUnreadable = false;  ///< recipient or record could not be read; the rest suffices to ask the carrier
};

/// A refund that was requested from the carrier and whose response is not in the mailing log yet.
struct OpenRefund {
    QString transactionId;
    qint64 shipmentId = 0; ///< the mailing log's row
    QDateTime askedAt;
};

/// Records every purchase and refund before the carrier is asked. The carrier's API has no idempotency key that would
/// identify a repeated purchase, so without this record a crash could lead to a second purchase of the same label.
/// Every entry is on the disk when its call returns; an entry is open until the mailing log is complete.
///
/// Stored in purchase_journal.sqlite, which one program at a time locks. The first call opens or creates the file; if
/// that fails, the next call tries again. May be called from any thread; every call waits for the disk, and for up to
/// `patience` while another program has the file open.
class PurchaseJournal {
public:
    explicit PurchaseJournal(const QDir &folder, std::chrono::milliseconds patience = Database::busyTimeout);

    /// Opens or creates the journal. Renames a damaged file and starts a new journal with all entries that can be read.
    /// Throws AppError if that fails: then nothing may be bought.
    void open();
    /// What the clerk must know after the first call: that a damaged file was set aside, that entries cannot be read,
    /// or why nothing can be bought; empty if there is no problem.
    QString trouble() const;

    /// Records that `purchase` is about to be requested and returns its id. Throws AppError if that could not be
    /// stored: then nothing may be bought.
    qint64 begin(const OpenPurchase &purchase);
    /// Stores what is known so far: the carrier's response, the documents.
    bool update(qint64 id, const ShipmentRecord &record);
    bool markPrinted(qint64 id);
    bool markPapersPrinted(qint64 id);
    /// Deletes a finished entry: the label is in the mailing log, or it was not bought.
    bool close(qint64 id);
    /// All open purchases, oldest first, with their documents. Throws AppError if the file cannot be read: a failed
    /// read must not look like a journal without purchases.
    QList<OpenPurchase> openPurchases();

    /// Copies the journal into a new file; returns why it could not, or nothing. This program alone can: it has locked
    /// the file.
    QString copyTo(const QString &path);

    /// Takes over the open purchases and refunds of a copy, unless this journal has ever had a purchase: then it knows
    /// better. Returns how many.
    int takeOver(const QString &copy);

    /// Records that a refund is about to be requested; throws AppError if that could not be stored.
    void beginRefund(const OpenRefund &refund);
    bool closeRefund(const QString &transactionId);
    QList<OpenRefund> openRefunds();

private:
    enum class Opening { done, damaged, refused };
    bool isReady();
    Opening openFile(std::chrono::milliseconds patience, bool otherOwner);
    Opening checked();
    bool migrate();
    void giveUp(const QString &obstacle);
    template <class... Values>
    bool run(const QByteArray &sql, const Values &...values);
    QString failure() const;
    [[noreturn]] void refuse() const;

    const QDir m_folder;
    const QString m_path;
    const std::chrono::milliseconds m_patience;
    mutable std::mutex m_access;
    OwnerLock m_owner;              ///< tells other copies of this program who has the journal open
    std::optional<Database> m_db;   ///< present only if it can be written
    QString m_obstacle;             ///< why it could not be opened
    QString m_refusal;              ///< the same, while it is being opened
    QString m_damage, m_unreadable; ///< sentences for the clerk
};

} // namespace parcelory

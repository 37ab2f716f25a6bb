#pragma once

#include "records/ShipmentLog.h"

#include <QStringList>

namespace parcelory {

/// A SCAN form, from the moment in which the carrier is asked for it.
struct ScanForm {
    qint64 id = 0; ///< given by the database
    QDateTime askedAt;
    bool testMode = false;
    int labels = 0;           ///< of the day, in the mailing log, when it was asked for
    QString manifestId;       ///< empty until it is known that the carrier has made it
    QStringList transactions; ///< of the labels it was asked for, later of those that the carrier says are on it

    bool operator==(const ScanForm &) const = default;
};

/// The SCAN forms of this computer with their documents, in tables of their own in the mailing log's file. A form is
/// under way until its documents are here or it is known that there are none. From any thread; every call waits for
/// the disk.
class ScanForms {
public:
    explicit ScanForms(ShipmentLog &log) : m_log(log) {}

    /// Writes down that a form is about to be asked for; nothing when that could not be stored.
    std::optional<qint64> begin(const ScanForm &form);
    /// The carrier has made it, and says what is on it.
    [[nodiscard]] bool setMade(qint64 id, const QString &manifestId, const QStringList &transactions);
    /// All of its documents are here. An empty list: the carrier has none for it.
    [[nodiscard]] bool store(qint64 id, const QList<QByteArray> &documents);
    /// It was not made.
    [[nodiscard]] bool remove(qint64 id);

    /// Those under way, oldest first.
    QList<ScanForm> underWay(bool testMode) const;
    /// Those with documents, newest first.
    QList<ScanForm> finished(int limit) const;
    bool knowsManifest(const QString &manifestId) const;
    QList<QByteArray> documents(qint64 id) const;
    /// The rows of the mailing log for the labels of a form, in the order of their purchase. Those that the other
    /// desks of the account bought have none.
    QList<ShipmentRecord> labelsOn(const ScanForm &form) const;
    /// When the newest form was asked for that names the label; nothing when none does.
    std::optional<QDateTime> formWith(const QString &transactionId) const;

private:
    QList<ScanForm> list(const QByteArray &condition) const;

    ShipmentLog &m_log;
};

} // namespace parcelory

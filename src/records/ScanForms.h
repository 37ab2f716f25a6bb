#pragma once

#include "records/ShipmentLog.h"

#include <QStringList>

#include <functional>
#include <optional>

namespace parcelory {

/// A SCAN form, from the moment of its request.
struct ScanForm {
    qint64 id = 0; ///< given by the database
    QDateTime askedAt;
    bool testMode = false;
    int labels = 0;           ///< number of the day's labels in the mailing log at the request
    QString manifestId;       ///< empty until the carrier has confirmed the form
    QStringList transactions; ///< of the requested labels, later of the labels that the carrier lists on the form

    bool operator==(const ScanForm &) const = default;
};

/// This computer's SCAN forms with their documents, in separate tables of the mailing log's file. A form is under way
/// until its documents are stored or the carrier has no documents for it. May be called from any thread; every call
/// waits for the disk.
class ScanForms {
public:
    explicit ScanForms(ShipmentLog &log) : m_log(log) {}

    /// Records that a form is about to be requested and returns its id; nothing if that could not be stored.
    std::optional<qint64> begin(const ScanForm &form);
    /// Records that the carrier has made the form. An empty list of transactions keeps the requested labels.
    [[nodiscard]] bool setMade(qint64 id, const QString &manifestId, const QStringList &transactions);
    /// Stores all documents of the form. An empty list: the carrier has no documents for it.
    [[nodiscard]] bool store(qint64 id, const QList<QByteArray> &documents);
    /// Deletes a form that was not made.
    [[nodiscard]] bool remove(qint64 id);

    /// The forms under way, oldest first.
    LogRead<QList<ScanForm>> underWay(bool testMode) const;
    /// The forms with documents, newest first.
    LogRead<QList<ScanForm>> finished(int limit) const;
    LogRead<bool> knowsManifest(const QString &manifestId) const;
    LogRead<QList<QByteArray>> documents(qint64 id) const;
    /// The mailing log's rows of a form's labels, in the order of their purchase. Labels that the account's other desks
    /// bought have no row.
    LogRead<QList<ShipmentRecord>> labelsOn(const ScanForm &form) const;
    /// When the newest form that lists the label was requested; nothing if no form lists it.
    LogRead<std::optional<QDateTime>> formWith(const QString &transactionId) const;

private:
    /// Runs `work`; the empty value for a desk that has made no SCAN form yet.
    template <class T>
    LogRead<T> look(const std::function<std::optional<T>(const Database &)> &work) const
    {
        return m_log.read<T>([&work](const Database &db) { return hasForms(db) ? work(db) : std::optional<T>(T{}); });
    }
    static bool hasForms(const Database &db);
    LogRead<QList<ScanForm>> list(const QByteArray &condition) const;

    ShipmentLog &m_log;
};

} // namespace parcelory

#pragma once

#include "app/AppState.h"
#include "core/Task.h"

#include <QObject>
#include <QProperty>

#include <atomic>
#include <optional>

namespace parcelory {

/// The My Mailing Log screen: what the desk shipped is searched, looked at and printed again. Lives as long as
/// AppState.
class MailingLogScreen : public QObject {
    Q_OBJECT
public:
    explicit MailingLogScreen(AppState &app);

    QProperty<QString> search;                 ///< as typed; setting it reloads the list
    QProperty<std::optional<qint64>> selected; ///< the id of one of records()
    QProperty<QString> message;                ///< what the last operation came to
    QProperty<bool> busy{false};
    /// How far an export or import is, 0 to 1; nothing while none is under way.
    QProperty<std::optional<double>> progress;

    /// The newest shipments that match the search, newest first.
    const QList<ShipmentRecord> &records() const { return m_app.log.records(); }
    std::optional<ShipmentRecord> selectedRecord() const;
    /// "1000 newest shipments", "3 shipments found"
    QString countText() const;

    Task<> reprint(ShipmentRecord record);
    /// The customs papers of a parcel that went abroad.
    Task<> reprintCustoms(ShipmentRecord record);
    void copyTracking(ShipmentRecord record);
    Task<> trackOnline(ShipmentRecord record);
    /// A parcel whose label was bought through the carrier's account.
    static bool isCheckable(const ShipmentRecord &record);
    /// Asks the carrier where the parcel is.
    Task<> checkStatus(ShipmentRecord record);
    /// A label that was bought through the carrier's account and is not refunded; labelBlocker() says why it is none.
    static bool isRefundable(const ShipmentRecord &record);
    /// Gives the label back for its money, once the clerk has agreed. Of a refund that is pending already, the carrier
    /// is asked first whether it knows.
    Task<> refund(ShipmentRecord record);
    /// Writes the whole log to a file of the clerk's choice; cancel() leaves the file as it was.
    Task<> exportCSV();
    /// Appends the shipments of a file of the clerk's choice; cancel() leaves the log as it was.
    Task<> importCSV();
    void cancel() { m_cancelled = true; }

signals:
    /// records() holds what the search asks for. Silent while an answer to another search goes by.
    void recordsChanged();

private:
    bool isUpToDate() const { return m_app.log.shownSearch() == search.value(); }
    void takeRecords();
    Task<bool> storeStatus(qint64 id, QString status);
    Task<bool> noteRefund(ShipmentRecord record);
    Task<> closeRefund(QString transactionId);
    Task<> requestRefund(ShipmentRecord record);
    Task<bool> carrierWasAsked(ShipmentRecord record);
    ShipmentLog::Progress followProgress();
    Task<> catchUp();

    AppState &m_app;
    bool m_reloading = false;
    std::atomic<int> m_searches = 0;       ///< counts changes of the search: an older query is given up
    std::atomic<bool> m_cancelled = false; ///< read by the thread that exports or imports
    QPropertyNotifier m_searchWatch;
};

} // namespace parcelory

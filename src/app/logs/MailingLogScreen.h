#pragma once

#include "app/AppState.h"
#include "app/preview/LabelPreview.h"
#include "core/Observable.h"
#include "core/Task.h"
#include "shell/ErrorLog.h"

#include <QObject>
#include <QProperty>

#include <functional>
#include <optional>

namespace parcelory {

/// The My Mailing Log screen: searches, shows and reprints the desk's shipments. Lives as long as AppState.
class MailingLogScreen : public Observable {
    Q_OBJECT
public:
    explicit MailingLogScreen(AppState &app);
    ~MailingLogScreen() override;

    Observed<QString> search{this};                 ///< as typed; setting it reloads the list
    Observed<std::optional<qint64>> selected{this}; ///< the id of a record in records()
    Observed<QString> message{this};                ///< result of the last operation
    Observed<bool> isFailure{this, false};          ///< the message tells a failure
    /// Why the list could not be read; empty once it is read again. Until then the screen retries by itself.
    Observed<QString> readFailure{this};
    Observed<bool> busy{this, false};
    /// Progress of an export or import, 0 to 1; empty if neither is running.
    Observed<std::optional<double>> progress{this};

    LabelPreview preview; ///< the label of the selected shipment

    /// The newest shipments that match the search, newest first.
    const QList<ShipmentRecord> &records() const { return m_app.log.records(); }
    std::optional<ShipmentRecord> selectedRecord() const;
    /// Selects a label that the list may not have.
    void lookAt(const ShipmentRecord &record);
    /// "1000 newest shipments", "3 shipments found"
    QString countText() const;

    /// At the start: tells the clerk on every tab if the log is damaged.
    Task<> tellTrouble();
    Task<> reprint(ShipmentRecord record);
    /// Prints the customs papers of an international parcel again.
    Task<> reprintCustoms(ShipmentRecord record);
    void copyTracking(ShipmentRecord record);
    /// Shows why an operation on a label could not begin.
    void refuse(const QString &obstacle) { say(obstacle, true); }
    Task<> trackOnline(ShipmentRecord record);
    /// True if the label was bought through the carrier's account and has a tracking number.
    static bool isCheckable(const ShipmentRecord &record);
    /// Asks the carrier where the parcel is.
    Task<> checkStatus(ShipmentRecord record);
    /// True if the label was bought through the carrier's account and is not refunded; otherwise labelBlocker() tells
    /// why not.
    static bool isRefundable(const ShipmentRecord &record);
    /// Requests a refund after the clerk confirms. If a refund is already pending, first asks the carrier whether it
    /// has the request.
    Task<> refund(ShipmentRecord record);
    /// Writes the whole log to a file that the clerk picks; cancel() leaves the file unchanged.
    Task<> exportCSV();
    /// Appends the shipments of a file that the clerk picks; cancel() leaves the log unchanged.
    Task<> importCSV();
    void cancel() { m_cancel.cancel(); }

signals:
    /// records() matches the current search. Not emitted for the results of an older search.
    void recordsChanged();
    /// A label went to the printer again. `printed` is the printer's message.
    void reprinted(const QString &transactionId, const QString &printed);

private:
    bool isUpToDate() const { return m_app.log.shownSearch() == search.value(); }
    void takeRecords();
    void selectBought();
    void showSelected();
    void takeReadFailure(const QString &failure);
    void say(const QString &text, bool failure = false);
    void fail(const QString &context, const AppError &error, Popup popup);
    Task<QString> write(std::function<bool(AppState &app)> change);
    Task<bool> confirmRefund(ShipmentRecord record);
    Task<bool> noteRefund(ShipmentRecord record);
    Task<> closeRefund(QString transactionId);
    Task<> requestRefund(ShipmentRecord record);
    Task<bool> carrierWasAsked(ShipmentRecord record);
    Progress followProgress();
    Task<> catchUp();

    AppState &m_app;
    bool m_reloading = false;
    std::optional<ShipmentRecord> m_unlisted; ///< the selected label, if records() does not have it
    QString m_bought;                         ///< transaction of the label that is selected once it is listed
    QString m_failureMessage;                 ///< `message` if the list could not be read
    quint64 m_retry = 0;                      ///< a timer
    static constexpr Clock::Duration retryPause = std::chrono::seconds(10);
    CancelToken m_query;  ///< of the search that is under way
    CancelToken m_cancel; ///< of the export or import
    QPropertyNotifier m_searchWatch, m_selectedWatch;
};

} // namespace parcelory

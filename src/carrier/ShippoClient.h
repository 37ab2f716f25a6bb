#pragma once

#include "carrier/MasterEntry.h"
#include "carrier/RequestBodies.h"
#include "carrier/ShippoError.h"
#include "carrier/ShippoKeys.h"
#include "carrier/ShippoRecords.h"
#include "core/CompanySanitizer.h"
#include "core/Platform.h"
#include "core/Task.h"

#include <memory>

namespace parcelory {

struct Listing;

/// The only access to the carrier API. Has no mutable state, so any number of calls may run at once. Failures are
/// thrown as ShippoError, as DecodeError (an unexpected response) or, if no response came, as the transport's AppError.
/// Nothing is retried here and nothing is written to the error log.
class ShippoClient {
public:
    /// How long a request without a response may still reach the carrier.
    static constexpr auto arrivalTime = std::chrono::seconds(60);
    /// True if a request that was given up at `since` may still reach the carrier. Both times are steady times: setting
    /// the clock must neither end nor prolong the wait.
    static bool mayStillArrive(const QDateTime &since, const QDateTime &now)
    {
        return since.secsTo(now) <= arrivalTime.count();
    }

    ShippoClient(Platform &platform, ShippoKeys &keys);

    /// The carrier's version of an address; the caller judges it.
    Task<ShippoValidatedAddress> validateAddress(ShippoAddress address);
    /// The rates of a parcel, in the carrier's order. Sanitizes the sender's company line.
    Task<ShippoShipment> rates(RatingRequest request);
    /// Buys a label. `labelFileType`: "ZPLII", "PDF" …; `metadata`: at most its first 100 characters are sent.
    /// Throws Unconfirmed if the carrier accepted the purchase but a later poll failed.
    /// A purchase still queued after the last poll is returned as it is; its label URL is empty.
    Task<ShippoTransaction> purchase(QString rateId, QString labelFileType, QString metadata);
    /// The account's purchases of a rate, newest first; used to look up a purchase whose response was lost. The list is
    /// read back to `rated`, the time of the rate by the carrier's clock; if that is unknown, to a day before `asked`,
    /// the time of the request by the desk's clock. Throws ShippoError if nothing was found and that proves nothing:
    /// the list goes on, and only the desk's clock says that the rest is too old.
    Task<QList<ShippoTransaction>> purchasesOf(QString rateId, QDateTime asked, QDateTime rated);
    /// The account's latest purchases, newest first; one page.
    Task<QList<ShippoTransaction>> newestPurchases();
    /// Downloads a document of the carrier without sending the token.
    Task<QByteArray> downloadLabel(QString url);

    // After the sale.
    Task<ShippoRefund> refund(QString transactionID);
    /// The current state of a purchase.
    Task<ShippoTransaction> transaction(QString transactionID);
    /// `carrier`: the API's name for it, "usps" or "fedex".
    Task<ShippoTrackStatus> track(QString carrier, QString trackingNumber);
    /// The carrier accounts that labels are bought on; one page of a hundred.
    Task<QList<ShippoCarrierAccount>> carrierAccounts();
    /// Creates the SCAN form of the day's labels. Throws ShippoError if it fails, and Unconfirmed if a poll fails or
    /// the form is unfinished after the last poll.
    Task<ShippoManifest> createManifest(QString carrierAccount, ShippoAddress from, QDateTime date);
    /// The current state of a SCAN form. Throws ShippoError if it is not finished after the last poll.
    Task<ShippoManifest> manifest(QString id);
    /// The account's latest SCAN forms, newest first; one page.
    Task<QList<ShippoManifest>> newestManifests();
    /// The account's labels of these days, both included, newest first.
    Task<QList<MasterEntry>> masterLog(QDate from, QDate to, std::shared_ptr<Listing> listing = {});

private:
    /// The body of a 2xx response. `path`: relative to the API, or an absolute address. `body`: sent as JSON if given.
    Task<QByteArray> request(QString path, QByteArray method = "GET", QByteArray body = {});
    Task<ShippoManifest> polled(ShippoManifest manifest);
    Task<QByteArray> listedPurchases(QString path);
    Task<QByteArray> countedPage(QString path, std::shared_ptr<Listing> listing);
    Task<QByteArray> countedPurchases(QString path, std::shared_ptr<Listing> listing);

    HttpTransport &m_http;
    Clock &m_clock;
    ShippoKeys &m_keys;
    QUrl m_base;
    CompanySanitizer m_sanitizer;
};

} // namespace parcelory

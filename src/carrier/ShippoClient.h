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

/// The one door to the carrier API. Without state of its own but the address, so any number of calls may run at once.
/// Failures arrive as ShippoError, as DecodeError (an answer that is not what was asked for) or, when no answer came,
/// as the transport's AppError. Nothing is retried here and nothing is written to the error log.
class ShippoClient {
public:
    /// A request whose answer never came may still reach the carrier for so long.
    static constexpr auto arrivalTime = std::chrono::seconds(60);
    static bool mayStillArrive(const QDateTime &askedAt, const QDateTime &now)
    {
        return std::abs(askedAt.secsTo(now)) <= arrivalTime.count(); // a clock that was put back ends no waiting
    }

    ShippoClient(Platform &platform, ShippoKeys &keys);

    /// The carrier's version of an address; judging it is the caller's business.
    Task<ShippoValidatedAddress> validateAddress(ShippoAddress address);
    /// Prices of a parcel, in the carrier's order. The sender's company line is made discreet on the way.
    Task<ShippoShipment> rates(RatingRequest request);
    /// Buys a label. `labelFileType`: "ZPLII", "PDF" …; `metadata`: at most its first 100 characters are sent.
    /// Throws UnconfirmedPurchase when the purchase was taken on but a later look at it failed.
    /// A purchase still queued after the last poll is returned as it is; its label URL is empty.
    Task<ShippoTransaction> purchase(QString rateId, QString labelFileType, QString metadata);
    /// The account's purchases of a rate since then, newest first: how a purchase whose answer was lost is found again.
    Task<QList<ShippoTransaction>> purchasesOf(QString rateId, QDateTime since);
    /// A document of the carrier, fetched without the token.
    Task<QByteArray> downloadLabel(QString url);

    // After the sale.
    Task<ShippoRefund> refund(QString transactionID);
    /// A purchase as it stands now.
    Task<ShippoTransaction> transaction(QString transactionID);
    /// `carrier`: the API's word for it, "usps" or "fedex".
    Task<ShippoTrackStatus> track(QString carrier, QString trackingNumber);
    /// The accounts that labels are bought on; one page of a hundred.
    Task<QList<ShippoCarrierAccount>> carrierAccounts();
    /// The SCAN form of the day's labels. Throws ShippoError when it fails or is still not there after the last poll.
    Task<ShippoManifest> createManifest(QString carrierAccount, ShippoAddress from, QDateTime date);
    /// A SCAN form as it stands now. Throws ShippoError when it is still not done after the last poll.
    Task<ShippoManifest> manifest(QString id);
    /// The account's last SCAN forms, newest first; one page.
    Task<QList<ShippoManifest>> newestManifests();
    /// The account's labels of these days, both included, newest first.
    Task<QList<MasterEntry>> masterLog(QDate from, QDate to, std::shared_ptr<Listing> listing = {});

private:
    /// The body of a 2xx answer. `path`: relative to the API, or an absolute address. `body`: sent as JSON when given.
    Task<QByteArray> request(QString path, QByteArray method = "GET", QByteArray body = {});
    Task<ShippoManifest> polled(ShippoManifest manifest);
    Task<QByteArray> listedPurchases(QString path);
    Task<QByteArray> countedPage(QString path, std::shared_ptr<Listing> listing);

    HttpTransport &m_http;
    Clock &m_clock;
    ShippoKeys &m_keys;
    QUrl m_base;
    CompanySanitizer m_sanitizer;
};

} // namespace parcelory

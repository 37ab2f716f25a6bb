#include "carrier/CarrierAnswer.h"
#include "carrier/CarrierWords.h"
#include "carrier/ExpandedRates.h"
#include "carrier/MasterEntry.h"
#include "carrier/RequestBodies.h"
#include "carrier/ShippoClient.h"
#include "carrier/ShippoError.h"
#include "carrier/ShippoRecords.h"
#include "core/AppError.h"
#include "core/Json.h"
#include "core/ShippoAddress.h"
#include "core/Task.h"

#include "carrier/PagedList.h"
#include "carrier/Polling.h"
#include "core/IsoDate.h"

#include <chrono>
#include <exception>
#include <memory>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

/// A number or an id as one step of a path, with special characters encoded.
QString step(const QString &text)
{
    return QString::fromLatin1(QUrl::toPercentEncoding(text));
}

constexpr auto usualWait = std::chrono::seconds(30); ///< after a refusal for too many requests that names no time

/// One of several lists of a listing: a failure is noted there and stops the others, the first failure counts.
template <class T>
Task<QList<T>> partOf(std::shared_ptr<Listing> listing, Task<QList<T>> list)
{
    QList<T> records;
    try {
        records = co_await list;
    } catch (const AppError &) {
        if (!listing->failure)
            listing->failure = std::current_exception();
        listing->cancel.cancel();
    }
    co_return records;
}

} // namespace

Task<ShippoRefund> ShippoClient::refund(QString transactionID)
{
    const Json body = {{"transaction", transactionID.toStdString()}, {"async", false}};
    const QByteArray answer = co_await request(u"refunds/"_s, "POST", dumpJson(body));
    co_return co_await readAnswer<ShippoRefund>(answer);
}

Task<ShippoTransaction> ShippoClient::transaction(QString transactionID)
{
    const QByteArray answer = co_await request(u"transactions/"_s + step(transactionID));
    co_return co_await readAnswer<ShippoTransaction>(answer);
}

Task<ShippoTrackStatus> ShippoClient::track(QString carrier, QString trackingNumber)
{
    const QByteArray answer = co_await request(u"tracks/"_s + step(carrier) + u'/' + step(trackingNumber));
    co_return co_await readAnswer<ShippoTrackStatus>(answer);
}

Task<QList<ShippoCarrierAccount>> ShippoClient::carrierAccounts()
{
    const QByteArray answer = co_await request(u"carrier_accounts?results=100"_s);
    auto accounts = co_await readAnswer<ShippoCarrierAccountList>(answer);
    co_return std::move(accounts.results);
}

Task<ShippoManifest> ShippoClient::createManifest(QString carrierAccount, ShippoAddress from, QDateTime date)
{
    const Json body = {{"carrier_account", carrierAccount.toStdString()},
                       {"shipment_date", isoUtc(date).toStdString()},
                       {"address_from", addressObject(from)},
                       {"async", false}};
    const QByteArray created = co_await request(u"manifests/"_s, "POST", dumpJson(body));
    auto manifest = co_await readAnswer<ShippoManifest>(created);
    try {
        manifest = co_await polled(manifest);
    } catch (const AppError &error) {
        throw Unconfirmed(error.description(), manifest.objectId);
    }
    if (manifestStatus(manifest) == ManifestStatus::error)
        throw ShippoError::api(u"Shippo couldn't create the SCAN form — usually this means today's labels were already "
                               "manifested, or the carrier doesn't allow it for these labels."_s);
    co_return manifest;
}

/// The manifest once it is made or has failed.
Task<ShippoManifest> ShippoClient::polled(ShippoManifest manifest)
{
    const auto fetch = [this, path = u"manifests/"_s + step(manifest.objectId)]() -> Task<ShippoManifest> {
        const QByteArray answer = co_await request(path);
        co_return co_await readAnswer<ShippoManifest>(answer);
    };
    manifest = co_await pollWhilePending(m_clock, manifest, fetch);
    const ManifestStatus status = manifestStatus(manifest);
    if (status != ManifestStatus::success && status != ManifestStatus::error)
        throw ShippoError::api(u"Shippo is still generating the SCAN form (status: "_s +
                               manifest.status.value_or(u"unknown"_s) + u"). Try again in a minute."_s);
    co_return manifest;
}

Task<ShippoManifest> ShippoClient::manifest(QString id)
{
    const QByteArray answer = co_await request(u"manifests/"_s + step(id));
    auto manifest = co_await readAnswer<ShippoManifest>(answer);
    co_return co_await polled(manifest);
}

Task<QList<ShippoManifest>> ShippoClient::newestManifests()
{
    const QByteArray answer = co_await request(u"manifests?results=25"_s);
    const auto records = co_await onPool([answer] { return readableRecords<ShippoManifest>(answer); });
    co_return records;
}

Task<QByteArray> ShippoClient::countedPage(QString path, std::shared_ptr<Listing> listing)
{
    if (listing->cancel.isCanceled())
        throw ShippoError::api(u"The listing was canceled."_s);
    constexpr int mostWaits = 3;
    QByteArray page;
    for (int waits = 0;; ++waits) {
        std::chrono::seconds pause{0};
        try {
            page = co_await request(path);
            break;
        } catch (const ShippoError &error) {
            if (!error.isRateLimit() || waits == mostWaits)
                throw;
            pause = error.wait().value_or(usualWait);
        }
        if (listing->onWait)
            listing->onWait(pause);
        co_await m_clock.sleep(pause);
        if (listing->cancel.isCanceled())
            throw ShippoError::api(u"The listing was canceled."_s);
    }
    if (listing->onPage && !listing->cancel.isCanceled())
        listing->onPage();
    co_return page;
}

Task<QByteArray> ShippoClient::countedPurchases(QString path, std::shared_ptr<Listing> listing)
{
    const QByteArray page = co_await countedPage(path, listing);
    const QByteArray known = co_await onPool([page] { return withRateIds(page); });
    co_return known;
}

Task<QList<MasterEntry>> ShippoClient::masterLog(QDate from, QDate to, std::shared_ptr<Listing> listing)
{
    const auto state = listing ? listing : std::make_shared<Listing>();
    const QDateTime start = from.startOfDay(), end = to.addDays(1).startOfDay();
    const auto fetch = [this, state](const QString &path) { return countedPage(path, state); };
    const auto fetchPurchases = [this, state](const QString &path) { return countedPurchases(path, state); };
    const auto created = [](const auto &record) { return record.objectCreated; };
    // Both listings at once; each takes about as long as the other.
    auto bought = partOf(
        state, pagedList<ShippoTransaction>(fetchPurchases, u"transactions?results=100"_s, start, created, state));
    auto rated =
        partOf(state, pagedList<ShippoShipmentListed>(fetch, u"shipments?results=100"_s, start, created, state));
    const QList<ShippoTransaction> transactions = co_await bought;
    const QList<ShippoShipmentListed> shipments = co_await rated;
    if (state->failure)
        std::rethrow_exception(state->failure);
    co_return masterEntries(transactions, shipments, start, end);
}

} // namespace parcelory

#include "carrier/CarrierWords.h"
#include "carrier/RequestBodies.h"
#include "carrier/ShippoClient.h"
#include "carrier/ShippoError.h"
#include "carrier/ShippoRecords.h"
#include "core/AppError.h"
#include "core/Json.h"
#include "core/ShippoAddress.h"
#include "core/Task.h"
#include "core/ports/HttpTransport.h"

#include "carrier/CarrierAnswer.h"
#include "carrier/ExpandedRates.h"
#include "carrier/PagedList.h"
#include "carrier/Polling.h"
#include "core/Text.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

const QString newestHundred = u"transactions?results=100"_s;
constexpr qsizetype metadataLimit = 100;
constexpr qint64 carrierDrift = 3600; ///< seconds by which the clocks of the carrier's machines may differ
constexpr qint64 documentLimit = 16 * 1024 * 1024;
constexpr std::chrono::milliseconds longestListing = std::chrono::minutes(1); ///< of all pages; then no page is read

} // namespace

Task<ShippoValidatedAddress> ShippoClient::validateAddress(ShippoAddress address)
{
    Json body = addressObject(address);
    body["validate"] = true;
    const QByteArray answer = co_await request(u"addresses/"_s, "POST", dumpJson(body));
    co_return co_await readAnswer<ShippoValidatedAddress>(answer);
}

Task<ShippoShipment> ShippoClient::rates(RatingRequest rating)
{
    rating.from.company = m_sanitizer.sanitize(rating.from.company);
    const QByteArray answer = co_await request(u"shipments/"_s, "POST", dumpJson(shipmentBody(rating)));
    co_return co_await readAnswer<ShippoShipment>(answer);
}

Task<ShippoTransaction> ShippoClient::purchase(QString rateId, QString labelFileType, QString metadata)
{
    Json body = {{"rate", rateId.toStdString()}, {"label_file_type", labelFileType.toStdString()}, {"async", false}};
    if (!metadata.isEmpty())
        body["metadata"] = firstCharacters(metadata, metadataLimit).toStdString();
    const QByteArray bought = co_await request(u"transactions/"_s, "POST", dumpJson(body));
    auto transaction = co_await readAnswer<ShippoTransaction>(bought);
    const QString id = transaction.objectId;
    try {
        transaction = co_await pollWhilePending(m_clock, transaction, [this, id] { return this->transaction(id); });
    } catch (const AppError &error) {
        throw Unconfirmed(error.description(), id);
    }
    if (transactionStatus(transaction) == TransactionStatus::error) {
        const QString reasons = joinedTexts(transaction.messages);
        throw ShippoError::api(reasons.isEmpty() ? u"Label purchase failed."_s : reasons);
    }
    co_return transaction;
}

Task<QList<ShippoTransaction>> ShippoClient::purchasesOf(QString rateId, QDateTime asked, QDateTime rated)
{
    const QDateTime begun = m_clock.steadyNow();
    const auto fetch = [this, begun](const QString &path) {
        if (begun.msecsTo(m_clock.steadyNow()) > longestListing.count())
            throw AppError(u"The carrier takes too long to list its labels."_s);
        return listedPurchases(path);
    };
    const auto created = [](const ShippoTransaction &transaction) { return transaction.objectCreated; };
    const auto listing = std::make_shared<Listing>();
    const bool isProof = rated.isValid();
    const QDateTime cutoff = isProof ? rated.addSecs(-carrierDrift) : std::min(asked, m_clock.now()).addDays(-1);
    QList<ShippoTransaction> sold =
        co_await pagedList<ShippoTransaction>(fetch, newestHundred, cutoff, created, listing);
    sold.removeIf([&rateId](const ShippoTransaction &transaction) { return transaction.rate != rateId; });
    if (sold.isEmpty() && (listing->isCut || (!isProof && !listing->isOver)))
        throw ShippoError::api(u"The account has sold too many labels since then to find this one."_s);
    co_return sold;
}

Task<QList<ShippoTransaction>> ShippoClient::newestPurchases()
{
    const QByteArray page = co_await listedPurchases(newestHundred);
    const auto records = co_await onPool([page] { return readableRecords<ShippoTransaction>(page); });
    co_return records;
}

Task<QByteArray> ShippoClient::listedPurchases(QString path)
{
    const QByteArray page = co_await request(path);
    const QByteArray known = co_await onPool([page] { return withRateIds(page); });
    co_return known;
}

Task<QByteArray> ShippoClient::downloadLabel(QString url)
{
    const QUrl address(url, QUrl::StrictMode);
    const bool isWeb = address.scheme() == u"https" || address.scheme() == u"http";
    if (!address.isValid() || !isWeb || address.host().isEmpty())
        throw ShippoError::api(u"Bad label URL"_s);
    // The practice carrier has no certificate.
    const bool isPractice = m_base.scheme() == u"http" && address.host() == m_base.host();
    if (address.scheme() != u"https" && !isPractice) // anybody on the way could print another label
        throw ShippoError::api(u"the carrier's link is not encrypted, so it was not followed"_s);
    HttpRequest message{.url = address, .mostBytes = documentLimit};
    const HttpAnswer answer = co_await m_http.send(std::move(message));
    if (answer.status < 200 || answer.status >= 300)
        throw ShippoError::http(answer.status, u"label download"_s);
    co_return answer.body;
}

} // namespace parcelory

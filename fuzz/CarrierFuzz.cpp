// The carrier's responses: every record, and the bodies of refusals.

#include "OneOf.h"
#include "carrier/CarrierAnswer.h"
#include "carrier/CarrierWords.h"
#include "carrier/MasterEntry.h"
#include "carrier/PurchaseTag.h"
#include "carrier/ShippoError.h"
#include "carrier/ShippoRecords.h"

namespace parcelory {
namespace {

const QDateTime start = QDateTime::fromMSecsSinceEpoch(0), end = start.addYears(200);

void rating(const QByteArray &bytes)
{
    const auto shipment = decodeAnswer<ShippoShipment>(bytes);
    for (const ShippoRate &rate : shipment.rates)
        serviceName(rate.servicelevel);
    joinedTexts(shipment.messages);
}

void purchase(const QByteArray &bytes)
{
    const auto transaction = decodeAnswer<ShippoTransaction>(bytes);
    isPending(transaction);
    if (const auto tag = PurchaseTag::read(transaction.metadata.value_or(QString())))
        fuzz::require(PurchaseTag::read(tag->text()) == tag);
}

void purchases(const QByteArray &bytes)
{
    const auto page = decodeAnswer<ShippoList<ShippoTransaction>>(bytes);
    for (const MasterEntry &entry : masterEntries(page.results, {}, start, end))
        statusDisplay(entry.status);
}

/// A label is bought for each first rate of the list.
void shipments(const QByteArray &bytes)
{
    const auto page = decodeAnswer<ShippoList<ShippoShipmentListed>>(bytes);
    QList<ShippoTransaction> bought;
    for (const ShippoShipmentListed &shipment : page.results) {
        const QList<ShippoRate> rates = shipment.rates.value_or(QList<ShippoRate>());
        if (!rates.isEmpty())
            bought.append({.objectId = QStringLiteral("t"),
                           .status = QStringLiteral("SUCCESS"),
                           .rate = rates.first().objectId,
                           .objectCreated = shipment.objectCreated});
    }
    fuzz::require(masterEntries(bought, page.results, start, end).size() <= bought.size());
}

void manifest(const QByteArray &bytes)
{
    isPending(decodeAnswer<ShippoManifest>(bytes));
}

void refund(const QByteArray &bytes)
{
    refundAnswer(decodeAnswer<ShippoRefund>(bytes));
}

template <class Answer>
void decoded(const QByteArray &bytes)
{
    decodeAnswer<Answer>(bytes);
}

void refusal(const QByteArray &bytes)
{
    if (const auto lines = prettyFieldErrors(bytes))
        fuzz::require(!lines->trimmed().isEmpty());
    ShippoError::http(500, QString::fromUtf8(bytes));
}

} // namespace
} // namespace parcelory

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    using namespace parcelory;
    static constexpr void (*readers[])(const QByteArray &) = {
        rating,
        purchase,
        purchases,
        shipments,
        manifest,
        decoded<ShippoList<ShippoManifest>>,
        refund,
        decoded<ShippoValidatedAddress>,
        decoded<ShippoTrackStatus>,
        decoded<ShippoCarrierAccountList>,
        refusal,
    };
    fuzz::oneOf(readers, data, size);
    return 0;
}

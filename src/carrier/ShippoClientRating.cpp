#include "carrier/ShippoClient.h"

#include "core/Json.h"
#include "core/Text.h"

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype metadataLimit = 100;

/// An answer of the carrier as a record; the failure says that it was the carrier's answer that could not be read.
template <class T>
T decode(const QByteArray &answer)
{
    try {
        return decodeJson<T>(answer, Keys::snake);
    } catch (const DecodeError &error) {
        throw DecodeError(u"Shippo's answer could not be read — "_s + error.description() + u'.');
    }
}

bool isPending(const QString &status)
{
    return status == u"QUEUED" || status == u"WAITING";
}

QString joinedTexts(const std::optional<QList<ShippoMessage>> &messages)
{
    QStringList texts;
    for (const ShippoMessage &message : messages.value_or(QList<ShippoMessage>())) {
        if (message.text && !message.text->isEmpty())
            texts += *message.text;
    }
    return texts.join(u" • "_s);
}

} // namespace

Task<ShippoValidatedAddress> ShippoClient::validateAddress(ShippoAddress address)
{
    Json body = addressObject(address);
    body["validate"] = true;
    const QByteArray answer = co_await request(u"addresses/"_s, "POST", dumpJson(body));
    co_return decode<ShippoValidatedAddress>(answer);
}

Task<ShippoShipment> ShippoClient::rates(RatingRequest rating)
{
    rating.from.company = m_sanitizer.sanitize(rating.from.company);
    const QByteArray answer = co_await request(u"shipments/"_s, "POST", dumpJson(shipmentBody(rating)));
    co_return decode<ShippoShipment>(answer);
}

Task<ShippoTransaction> ShippoClient::purchase(QString rateId, QString labelFileType, QString metadata)
{
    Json body = {{"rate", rateId.toStdString()}, {"label_file_type", labelFileType.toStdString()}, {"async", false}};
    if (!metadata.isEmpty())
        body["metadata"] = firstCharacters(metadata, metadataLimit).toStdString();
    const QByteArray bought = co_await request(u"transactions/"_s, "POST", dumpJson(body));
    auto transaction = decode<ShippoTransaction>(bought);
    for (int poll = 0; poll < maxPolls && isPending(transaction.status); ++poll) {
        co_await m_clock.sleep(pollInterval);
        const QByteArray answer = co_await request(u"transactions/"_s + transaction.objectId);
        transaction = decode<ShippoTransaction>(answer);
    }
    if (transaction.status == u"ERROR") {
        const QString reasons = joinedTexts(transaction.messages);
        throw ShippoError::api(reasons.isEmpty() ? u"Label purchase failed."_s : reasons);
    }
    co_return transaction;
}

Task<QByteArray> ShippoClient::downloadLabel(QString url)
{
    const QUrl address(url, QUrl::StrictMode);
    if (!address.isValid() || address.scheme().isEmpty() || address.host().isEmpty())
        throw ShippoError::api(u"Bad label URL"_s);
    HttpRequest message{.url = address};
    const HttpAnswer answer = co_await m_http.send(std::move(message));
    if (answer.status != 0 && (answer.status < 200 || answer.status >= 300))
        throw ShippoError::http(answer.status, u"label download"_s);
    co_return answer.body;
}

} // namespace parcelory

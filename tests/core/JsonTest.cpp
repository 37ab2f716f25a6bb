#include "core/Json.h"
#include "carrier/ShippoRecords.h"
#include "core/RecordField.h"
#include "support/Table.h"
#include "support/Test.h"

#include <QTimeZone>

namespace parcelory::test {

namespace {

QByteArray answer(const char *name)
{
    return dataFile(u"carrier/"_s + QLatin1StringView(name));
}

template <class T>
T decoded(const QByteArray &text)
{
    return decodeJson<T>(text, Keys::snake);
}

template <class T>
QString complaint(const QByteArray &text, Keys keys = Keys::snake)
{
    return failureOf([&] { decodeJson<T>(text, keys); });
}

/// A shipment with arrays inside one another in a key that nothing reads.
QByteArray nested(int depth)
{
    return R"({"object_id": "s", "rates": [], "x": )" + QByteArray(depth, '[') + QByteArray(depth, ']') + '}';
}

struct Kinds {
    std::optional<bool> flag;
    std::optional<int> count;
    std::optional<QDateTime> when;
    std::optional<QUuid> id;
    std::optional<QUrl> link;

    static constexpr auto fields()
    {
        return std::tuple{field("flag", &Kinds::flag), field("count", &Kinds::count), field("when", &Kinds::when),
                          field("id", &Kinds::id), field("link", &Kinds::link)};
    }
};

} // namespace

TEST(Json, ReadsRatedShipmentsWithAndWithoutTransitDays)
{
    const auto shipment = decoded<ShippoShipment>(answer("shipment-three-usps-rates.json"));
    ASSERT_EQ(shipment.rates.size(), 3);
    const ShippoRate &rate = shipment.rates[1];
    EXPECT_EQ(rate.amount, u"12.44"_s);
    EXPECT_EQ(rate.servicelevel.token, u"usps_priority"_s);
    EXPECT_EQ(rate.estimatedDays, 1);
    EXPECT_EQ(rate.attributes, (QList{u"BESTVALUE"_s, u"FASTEST"_s}));
    EXPECT_EQ(shipment.messages.value().value(0).source, u"DHLExpress"_s);
    EXPECT_EQ(shipment.addressTo.value().street2, u"Ste 480"_s);

    const auto page = decoded<ShippoList<ShippoShipmentListed>>(answer("shipments-page.json"));
    EXPECT_EQ(page.next, u"https://api.goshippo.com/v1/shipments/?results=1&page=2"_s);
    ASSERT_EQ(page.results.size(), 1);
    EXPECT_EQ(page.results[0].objectCreated, u"2017-04-10T21:03:36.279Z"_s);
    EXPECT_EQ(page.results[0].rates.value().first().estimatedDays, std::nullopt);
}

TEST(Json, DistinguishesEmptyTextsOfAQueuedPurchaseFromAbsentTexts)
{
    const auto bought = decoded<ShippoTransaction>(answer("transaction-success.json"));
    EXPECT_EQ(bought.status, u"SUCCESS"_s);
    EXPECT_EQ(bought.trackingNumber, u"92108901755477000000000018"_s);
    EXPECT_TRUE(bought.labelUrl.value().startsWith(u"https://deliver.goshippo.com/3a37"_s));
    EXPECT_EQ(bought.commercialInvoiceUrl, std::nullopt);
    EXPECT_EQ(bought.test, true);

    const auto queued = decoded<ShippoTransaction>(answer("transaction-queued.json"));
    EXPECT_EQ(queued.status, u"QUEUED"_s);
    EXPECT_EQ(queued.labelUrl, u""_s);
    EXPECT_TRUE(queued.messages.value().isEmpty());
    EXPECT_EQ(decoded<ShippoTransaction>(R"({"object_id": "t", "status": "", "test": null})").test, std::nullopt);
}

TEST(Json, ReadsTheShorterResponses)
{
    const auto valid = decoded<ShippoValidatedAddress>(answer("address-validated.json"));
    EXPECT_EQ(valid.validationResults.value().isValid, true);
    EXPECT_EQ(valid.zip, u"94117-1913"_s);
    const auto rejected = decoded<ShippoValidatedAddress>(answer("address-rejected.json")).validationResults.value();
    EXPECT_EQ(rejected.isValid, false);
    EXPECT_EQ(rejected.messages.value().first().code, u"Address Not Found"_s);

    EXPECT_EQ(decoded<ShippoManifest>(answer("manifest-success.json")).documents.value().size(), 1);
    EXPECT_EQ(decoded<ShippoTrackStatus>(answer("track-delivered.json")).trackingStatus.value().status, u"DELIVERED"_s);
    EXPECT_EQ(decoded<ShippoRefund>(answer("refund-queued.json")).status, u"QUEUED"_s);
    const auto accounts = decoded<ShippoCarrierAccountList>(answer("carrier-accounts.json")).results;
    EXPECT_EQ(accounts.value(1).carrier, u"usps"_s);
}

TEST(Json, NamesTheKeyThatIsMissingOrWrong)
{
    Json shipment = parseJson(answer("shipment-three-usps-rates.json"));
    const auto without = [&shipment](const char *pointer) {
        const Json patch = Json::array({{{"op", "remove"}, {"path", pointer}}});
        return complaint<ShippoShipment>(dumpJson(shipment.patch(patch)));
    };
    EXPECT_EQ(without("/rates"), u"missing key \"rates\""_s);
    EXPECT_EQ(without("/rates/2/servicelevel"), u"missing key \"rates[2].servicelevel\""_s);
    EXPECT_EQ(without("/rates/0/servicelevel/token"), u"no failure"_s);
    for (const Json &row : table(u"decoding"_s, "shipments"))
        EXPECT_EQ(complaint<ShippoShipment>(text(row[0]).toUtf8()), text(row[1])) << row;
    const std::pair<QByteArray, QString> rows[] = {
        {"{\"object_id\": \"\xFF\", \"rates\": []}", u"it is not JSON"_s},
        {QByteArray(100, '['), u"it is not JSON"_s},
        {nested(99), u"no failure"_s},
        {nested(100), u"it is nested too deeply"_s},
        {nested(60000), u"it is nested too deeply"_s},
        {R"({"object_id": "s", "rates": [], "x": ")" + QByteArray(200, '[') + "\\\"" + QByteArray(200, '{') + "\"}",
         u"no failure"_s},
    };
    for (const auto &[text, expected] : rows)
        EXPECT_EQ(complaint<ShippoShipment>(text), expected) << text.left(60).toStdString();
}

TEST(Json, ChecksEveryKindOfValue)
{
    for (const Json &row : table(u"decoding"_s, "kinds"))
        EXPECT_EQ(complaint<Kinds>(text(row[0]).toUtf8(), Keys::asIs), text(row[1])) << row;
}

TEST(Json, KeepsDatesIdsAndEveryCharacterOfATextThroughAFile)
{
    const QByteArray text = R"({"count":-3,"when":816878465.25,"id":"0E1F2A3B-4C5D-6E7F-8091-A2B3C4D5E6F7"})";
    const auto read = decodeJson<Kinds>(text, Keys::asIs);
    EXPECT_EQ(read.when, QDateTime(QDate(2026, 11, 20), QTime(14, 41, 5, 250), QTimeZone::utc()));
    EXPECT_EQ(read.id, QUuid(u"{0e1f2a3b-4c5d-6e7f-8091-a2b3c4d5e6f7}"_s));
    EXPECT_EQ(read.count, -3);

    const QList<QString> odd = {u"\U0001FA99 \"\\/\u0001\n\u2028"_s, QString(u'\0'), u""_s};
    EXPECT_EQ(decodeJson<QList<QString>>(encodeJson(odd, Keys::asIs), Keys::asIs), odd);
    EXPECT_NO_THROW(encodeJson(QList{QString(QChar(0xD83E))}, Keys::asIs)); // half of a surrogate pair
}

} // namespace parcelory::test

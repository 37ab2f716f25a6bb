#include "core/Json.h"
#include "carrier/ShippoRecords.h"
#include "core/RecordField.h"
#include "support/Table.h"

#include <map>

namespace parcelory::test {
namespace {

QByteArray answer(const char *name)
{
    return dataFile(u"carrier/"_s + QLatin1StringView(name));
}

/// What was read of a response, as JSON again.
template <class T>
Json recoded(const QByteArray &text)
{
    return parseJson(encodeJson(decodeJson<T>(text, Keys::snake), Keys::snake));
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

TEST(Json, ReadsTheCarriersResponses)
{
    const std::map<std::string, Json (*)(const QByteArray &)> readers = {
        {"shipment-three-usps-rates", recoded<ShippoShipment>},
        {"shipments-page", recoded<ShippoList<ShippoShipmentListed>>},
        {"transaction-success", recoded<ShippoTransaction>},
        {"transaction-queued", recoded<ShippoTransaction>},
        {"address-validated", recoded<ShippoValidatedAddress>},
        {"address-rejected", recoded<ShippoValidatedAddress>},
        {"manifest-success", recoded<ShippoManifest>},
        {"track-delivered", recoded<ShippoTrackStatus>},
        {"refund-queued", recoded<ShippoRefund>},
        {"carrier-accounts", recoded<ShippoCarrierAccountList>}};
    for (const Json &row : table(u"decoding"_s, "responses")) {
        const auto name = row[0].get<std::string>();
        const Json read = readers.at(name)(answer((name + ".json").c_str()));
        for (const auto &[pointer, value] : row[1].items())
            EXPECT_EQ(read.value(Json::json_pointer(pointer), Json()), value) << name << pointer;
    }
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

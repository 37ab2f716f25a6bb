#include "ClientTest.h"
#include "carrier/RequestBodies.h"
#include "compose/Customs.h"

#include <QTimeZone>

namespace parcelory::test {
namespace {

class ShippoClientTest : public ClientTest {
protected:
    RatingRequest parcel() const
    {
        return {.from = deskAddress(),
                .to = homeAddress(),
                .parcel = {u"9"_s, u"6"_s, u"2"_s, u"in"_s, u"17.3"_s, u"oz"_s},
                .shipDate = QDateTime::currentDateTimeUtc()};
    }
    /// The body that a rating request sent.
    Json rated(const RatingRequest &request)
    {
        desk.carrier.clearRequests();
        run(client.rates(request));
        return desk.sent("/shipments/").first();
    }
    ShippoTransaction buy(const QString &metadata = {})
    {
        const ShippoShipment shipment = run(client.rates(parcel()));
        for (const ShippoRate &rate : shipment.rates) {
            if (rate.servicelevel.token == u"usps_priority")
                return run(client.purchase(rate.objectId, u"ZPLII"_s, metadata));
        }
        ADD_FAILURE() << "no priority rate";
        return {};
    }
    template <class T>
    QString failureOf(Task<T> task)
    {
        return test::failureOf([&] { run(std::move(task)); });
    }
    void answerWith(int status, const QByteArray &body, const QByteArray &contentType = "application/json",
                    int times = 1)
    {
        desk.carrier.setScenario({.failNext = CarrierFailure{"", status, contentType, body, times, ""}});
    }
};

} // namespace

TEST_F(ShippoClientTest, ReadsTheKeyAtEveryRequestAndSendsNothingWithoutAKey)
{
    run(client.validateAddress(homeAddress()));
    EXPECT_EQ(desk.carrier.requests().last().authorization, "ShippoToken shippo_test_practice");
    EXPECT_EQ(desk.carrier.requests().last().contentType, "application/json");
    EXPECT_EQ(desk.sent("/addresses/").first()["validate"], true);
    keys.set(PracticeCarrier::liveToken, u"Live"_s);
    keys.makeActive(u"Live"_s);
    run(client.validateAddress(homeAddress()));
    EXPECT_EQ(desk.carrier.requests().last().authorization, "ShippoToken shippo_live_practice");

    desk.carrier.clearRequests();
    keys.remove(u"Live"_s);
    keys.remove(u"Practice"_s);
    EXPECT_EQ(failureOf(client.validateAddress(homeAddress())), u"No Shippo API token set. Add one in Settings."_s);
    keys.set(u""_s, u"Empty"_s);
    EXPECT_EQ(failureOf(client.validateAddress(homeAddress())), u"No Shippo API token set. Add one in Settings."_s);
    EXPECT_THAT(desk.carrier.requests(), IsEmpty());
}

TEST_F(ShippoClientTest, DescribesEveryKindOfBadResponseWithoutTheToken)
{
    for (const Json &row : table(u"carrier-errors"_s, "responses")) {
        answerWith(row[0], text(row[1]).toUtf8(), text(row[2]).toUtf8());
        const QString said = failureOf(client.rates(parcel()));
        EXPECT_EQ(said, text(row[3]));
        EXPECT_FALSE(said.contains(u"shippo_test"_s));
    }
    answerWith(503, "\xff\xfe", "text/plain");
    EXPECT_EQ(failureOf(client.rates(parcel())), u"Shippo HTTP 503: "_s);
    desk.carrier.setScenario({.dropConnection = true});
    const QString dropped = failureOf(client.rates(parcel()));
    EXPECT_EQ(dropped, u"No answer from the carrier — check the network."_s);
}

TEST_F(ShippoClientTest, ThePracticeCarrierKeepsItsLabelsOverARestart)
{
    const QString kept = desk.path(u"practice_carrier.json"_s);
    const auto next = std::make_unique<PracticeCarrier>();
    ShippoTransaction sold;
    {
        PracticeCarrier first;
        first.keepIn(kept);
        desk.platform.deployment.carrierApi = first.baseUrl();
        ShippoClient before(desk.platform, keys);
        const ShippoShipment shipment = run(before.rates(parcel()));
        sold = run(before.purchase(shipment.rates.first().objectId, u"ZPLII"_s, {}));
    }
    next->keepIn(kept);
    desk.platform.deployment.carrierApi = next->baseUrl();
    ShippoClient after(desk.platform, keys);
    EXPECT_EQ(run(after.transaction(sold.objectId)).trackingNumber, sold.trackingNumber);
    const QUrl label(*run(after.transaction(sold.objectId)).labelUrl);
    EXPECT_EQ(label.port(), next->baseUrl().port()) << "its link leads to the new address";
    EXPECT_TRUE(run(after.downloadLabel(label.toString())).startsWith("^XA"));
    EXPECT_TRUE(run(after.refund(sold.objectId)).status.has_value());
    const ShippoShipment again = run(after.rates(parcel()));
    const auto second = run(after.purchase(again.rates.first().objectId, u"ZPLII"_s, {}));
    EXPECT_NE(second.trackingNumber, sold.trackingNumber);
}

TEST_F(ShippoClientTest, KeepsTheTokenAndTheStatusWhereTheyBelong)
{
    answerWith(
        200,
        R"({"next": "https://elsewhere.example.com/transactions", "results": [{"object_id": "t", "status": ""}]})");
    EXPECT_EQ(failureOf(client.purchasesOf(u"r"_s, desk.clock.now(), desk.clock.now())),
              u"Bad API path: https://elsewhere.example.com/transactions"_s);
    answerWith(409, "{}");
    EXPECT_THAT([&] { run(client.rates(parcel())); },
                testing::Throws<ShippoError>(testing::Property(&ShippoError::status, 409)));
}

TEST_F(ShippoClientTest, SendsAddressesInTheCarriersForm)
{
    RatingRequest request = parcel();
    request.to.name = QString(70, u'n');
    request.to.street1 = u"# Box 239 Rural Route"_s;
    request.to.street2 = u"#box 12"_s;
    request.to.country = QString();
    const Json body = rated(request);
    EXPECT_EQ(body["address_from"]["company"], "Corvallon R C");
    EXPECT_EQ(body["address_to"]["name"], std::string(50, 'n'));
    EXPECT_EQ(body["address_to"]["street1"], "Box 239 Rural Route");
    EXPECT_EQ(body["address_to"]["street2"], "box 12");
    EXPECT_EQ(body["address_to"]["country"], "US");
    EXPECT_EQ(body["address_to"]["phone"], "");
    EXPECT_EQ(body["address_to"].size(), 10U);
    EXPECT_EQ(body["async"], false);
    EXPECT_FALSE(body.contains("extra") || body.contains("customs_declaration"));
}

TEST_F(ShippoClientTest, SendsTemplateOrSizeAndTheRequestedExtras)
{
    RatingRequest request = parcel();
    EXPECT_EQ(
        rated(request)["parcels"][0],
        parseJson(R"({"weight":"17.3","mass_unit":"oz","length":"9","width":"6","height":"2","distance_unit":"in"})"));
    desk.carrier.setScenario({.acceptsWeightOnly = true});
    request.parcel.height = QString();
    EXPECT_EQ(rated(request)["parcels"][0].size(), 2U) << "half a size is no size";
    request.parcel.height = u"2"_s;
    desk.carrier.setScenario({});
    request.parcelTemplate = u"USPS_SmallFlatRateBox"_s;
    EXPECT_EQ(rated(request)["parcels"][0],
              parseJson(R"({"weight":"17.3","mass_unit":"oz","template":"USPS_SmallFlatRateBox"})"));

    for (const QString &none : {u"0"_s, u""_s, u"much"_s, u"-5"_s}) {
        request.insuranceAmount = none;
        EXPECT_FALSE(rated(request).contains("extra")) << none.toStdString();
    }
    request.insuranceAmount = u"100"_s;
    request.signatureConfirmation = u"ADULT"_s;
    EXPECT_EQ(rated(request)["extra"],
              parseJson(R"({"signature_confirmation":"ADULT","insurance":{"amount":"100","currency":"USD"}})"));
    request.insuranceProvider = u"FEDEX"_s;
    request.isResidential = false;
    EXPECT_EQ(rated(request)["extra"]["insurance"]["provider"], "FEDEX");
    EXPECT_EQ(rated(request)["extra"]["is_residential"], false);
}

TEST_F(ShippoClientTest, DeclaresContentsUnderTheirTariffNumber)
{
    RatingRequest request = parcel();
    request.to = londonAddress();
    for (const CustomsItem &item : customsItems()) {
        request.customs = CustomsInfo{item.type, u"3"_s, u"310.00"_s, {}};
        Json expected = parseJson(dataFile(u"carrier/customs-declaration.json"_s));
        expected["contents_explanation"] = expected["items"][0]["description"] = item.description.toStdString();
        expected["items"][0]["tariff_number"] = item.hsCode.toStdString();
        EXPECT_EQ(rated(request)["customs_declaration"], expected);
    }
    for (const QString &odd : {u""_s, u"few"_s, u"2.5"_s}) {
        request.customs->quantity = odd;
        EXPECT_EQ(rated(request)["customs_declaration"]["items"][0]["quantity"], 1) << odd.toStdString();
    }
}

TEST_F(ShippoClientTest, PollsAQueuedPurchaseAndReturnsItIfItStaysQueued)
{
    desk.carrier.setScenario({.queuedReads = 3});
    EXPECT_EQ(buy(QString(120, u'm')).status, u"SUCCESS"_s);
    EXPECT_EQ(desk.sent("/transactions/").first()["metadata"], std::string(100, 'm'));
    EXPECT_EQ(desk.sent("/transactions/").first()["async"], false);

    desk.carrier.setScenario({.queuedReads = 99});
    const auto before = desk.clock.elapsed();
    const ShippoTransaction waiting = buy();
    EXPECT_EQ(waiting.status, u"QUEUED"_s);
    EXPECT_EQ(waiting.labelUrl, u""_s);
    EXPECT_EQ(desk.clock.elapsed() - before, 15s);
}

TEST_F(ShippoClientTest, OnlyTheCarriersOwnTimeProvesThatNothingWasBought)
{
    const QDateTime rated(QDate(2026, 11, 20), QTime(12, 0), QTimeZone::utc());
    const auto page = [](const QDateTime &newest, const char *next) {
        return R"({"next": )" + QByteArray(next) +
               R"(, "results": [{"object_id": "t", "status": "SUCCESS", "rate": "other", "object_created": ")" +
               newest.toString(Qt::ISODate).toLatin1() + R"("}]})";
    };
    for (const Json &row : table(u"carrier-errors"_s, "proofs of no purchase")) {
        const QDateTime asked = desk.clock.start = rated.addDays(row[2]);
        const char *next = row[1].get<bool>() ? "null" : R"("transactions?results=100")";
        answerWith(200, page(rated.addSecs(row[0]), next), "application/json", 100);
        const QString failure = failureOf(client.purchasesOf(u"r"_s, asked, row[3].get<bool>() ? rated : QDateTime()));
        EXPECT_EQ(failure == u"no failure"_s, row[4].get<bool>()) << row;
    }
}

TEST_F(ShippoClientTest, FindsItsOwnPurchaseInAnyList)
{
    const auto found = [this](const QByteArray &rate, const char *next = "null") {
        answerWith(200,
                   R"({"next": )" + QByteArray(next) +
                       R"(, "results": [{"object_id": "t", "status": "SUCCESS", "rate": )" + rate + "}]}",
                   "application/json", 40);
        return run(client.purchasesOf(u"r"_s, desk.clock.now(), desk.clock.now())).size();
    };
    EXPECT_EQ(found(R"("r")"), 1);
    EXPECT_EQ(found(R"({"object_id": "r"})"), 1) << "another program bought the label in one call";
    EXPECT_EQ(found(R"("other")"), 0);
    EXPECT_EQ(found(R"("r")", R"("transactions")"), 40);
    EXPECT_THROW(found(R"("other")", R"("transactions")"), ShippoError) << "the list goes on";

    desk.carrier.setScenario(
        {.failNext = CarrierFailure{"transactions/", 404, "application/json", "{}", 1, "GET"}, .queuedReads = 2});
    EXPECT_THROW(buy(), Unconfirmed) << "the label is sold, only its state is unknown";
}

TEST_F(ShippoClientTest, ReportsWhyAPurchaseFailed)
{
    const std::pair<QStringList, QString> rows[] = {
        {{}, u"Label purchase failed."_s}, {{u"Bad address."_s, {}, u"No funds."_s}, u"Bad address. • No funds."_s}};
    for (const auto &[messages, text] : rows) {
        desk.carrier.setScenario({.purchaseFails = true, .purchaseMessages = messages});
        EXPECT_EQ(test::failureOf([&] { buy(); }), text);
    }
}

TEST_F(ShippoClientTest, FetchesDocumentsWithoutTheTokenAndReportsABadLink)
{
    const ShippoTransaction bought = buy();
    EXPECT_TRUE(run(client.downloadLabel(*bought.labelUrl)).startsWith("^XA"));
    EXPECT_EQ(desk.carrier.requests().last().authorization, "");
    desk.carrier.setScenario({.labelAnswer = LabelAnswer::expired});
    EXPECT_EQ(failureOf(client.downloadLabel(*bought.labelUrl)), u"Shippo HTTP 403: label download"_s);
    desk.carrier.setScenario({.labelAnswer = LabelAnswer::brokenOff});
    EXPECT_TRUE(failureOf(client.downloadLabel(*bought.labelUrl)).startsWith(u"No answer"_s));
    for (const QString &bad : {u""_s, u"not a link"_s, u"/relative"_s})
        EXPECT_EQ(failureOf(client.downloadLabel(bad)), u"Bad label URL"_s);
    const QString notEncrypted = u"the carrier's link is not encrypted, so it was not followed"_s;
    EXPECT_EQ(failureOf(client.downloadLabel(u"http://labels.example/1.zpl"_s)), notEncrypted);
    desk.platform.deployment.carrierApi = u"https://127.0.0.1:1/"_s; // the practice carrier alone has no certificate
    EXPECT_EQ(failureOf(ShippoClient(desk.platform, keys).downloadLabel(*bought.labelUrl)), notEncrypted);
}

} // namespace parcelory::test

#include "carrier/ShippoRecords.h"
#include "compose/Customs.h"
#include "compose/Mailpieces.h"
#include "compose/Services.h"
#include "core/Json.h"
#include "core/ShippoAddress.h"
#include "core/Task.h"
#include "practice/carrier/CarrierScenario.h"
#include "records/SenderProfile.h"
#include "support/CarrierDesk.h"
#include "support/LabelDesk.h"
#include "support/Printing.h"

#include "app/label/LabelTexts.h"
#include <gmock/gmock.h>

#include <utility>

namespace parcelory::test {
using namespace Qt::StringLiterals;

namespace {

class LabelRatingTest : public testing::Test, public LabelDesk {
protected:
    QStringList offeredTokens()
    {
        QStringList tokens;
        for (const ShippoRate &rate : screen().rates.value())
            tokens += rate.servicelevel.token.value_or(QString());
        return tokens;
    }
    ShippoAddress boxAddress()
    {
        ShippoAddress to = homeAddress();
        to.street1 = u"PO Box 239 #12"_s;
        to.street2 = QString();
        return to;
    }
    /// Makes the carrier answer the next shipment request with these rates.
    void answerRates(const QByteArray &rates)
    {
        CarrierScenario scenario;
        scenario.failNext =
            CarrierFailure{"shipments", 201, "application/json", R"({"object_id":"s","rates":[)" + rates + "]}", 1, ""};
        carrier.setScenario(scenario);
    }
    static QByteArray rate(const char *id, const char *amount, const char *provider, const char *token)
    {
        return QByteArray(R"({"object_id":")") + id + R"(","amount":")" + amount +
               R"(","currency":"USD","provider":")" + provider + R"(","servicelevel":{"token":")" + token + R"("}})";
    }
};

} // namespace

TEST_F(LabelRatingTest, LeavesOutRatesThatHaveNoPriceAndAllButTheCheapestOfAnEndlessList)
{
    QByteArrayList rates = {rate("good", "9.40", "USPS", "usps_ground_advantage")};
    for (const char *amount : {"NaN", "inf", "1e999", "1e2", "5,00", "-7.00", "", "$5", "99999999", "0x1"})
        rates += rate("bad", amount, "USPS", "usps_priority");
    composeParcel(homeAddress());
    answerRates(rates.join(','));
    run(screen().fetchRates());
    ASSERT_EQ(screen().rates.value().size(), 1);
    EXPECT_EQ(screen().rates.value().first().objectId, u"good"_s);
    EXPECT_EQ(errors->entries().value(0).context, u"Get Rates"_s);
    EXPECT_THAT(errors->entries().value(0).detail.toStdString(), testing::HasSubstr("usps_priority (“5,00”)"));

    rates.clear();
    for (int price = 2000; price > 0; --price)
        rates += rate("r", QByteArray::number(price).constData(), "USPS", "usps_priority");
    answerRates(rates.join(','));
    run(screen().fetchRates());
    ASSERT_EQ(screen().rates.value().size(), 500);
    EXPECT_EQ(screen().rates.value().last().amount, u"500"_s);
    EXPECT_EQ(errors->entries().value(0).detail, u"Only the 500 cheapest of 2000 rates are shown."_s);
}

TEST_F(LabelRatingTest, NamesTheFirstReasonWhyADraftCannotBeRated)
{
    const QString sizeText = u"Enter the package size — length, width, and height are required for "_s;
    const auto check = [&](const char *what, const QString &text, const auto &spoil) {
        composeParcel(londonAddress());
        screen().carrier = Carrier::fedex;
        screen().customs = CustomsInfo{.value = u"310"_s};
        screen().insuranceValue = QString();
        spoil();
        run(screen().fetchRates());
        EXPECT_EQ(banner(), text) << what;
        EXPECT_TRUE(bannerIsWarning()) << what;
        screen().mailpiece = BuiltinMailpiece::package;
    };
    check("no size", sizeText + u"your own packaging"_s, [&] { screen().dimWidth = u""_s; });
    check("size 0", sizeText + u"your own packaging"_s, [&] { screen().dimHeight = u"0"_s; });
    check("box without size", sizeText + u"Jiffy Rigi Bag #2 - S-1611"_s, [&] {
        screen().mailpiece = PresetMailpiece{u"uline-s-1611"_s};
        screen().dimHeight = u"?"_s;
    });
    check("no value", u"Enter the declared value in the Customs Declaration to rate an international shipment."_s,
          [&] { screen().customs = CustomsInfo{.value = u"0"_s}; });
    for (const QString &typed : {QString(), u"  "_s, u"-5"_s})
        check("blank or negative value",
              u"Enter the declared value in the Customs Declaration to rate an international shipment."_s,
              [&] { screen().customs = CustomsInfo{.value = typed}; });
    for (const QString &typed : {u"1,860.00"_s, u"$1860"_s})
        check("value with a comma",
              u"The declared value is not a plain number — type it in dollars without commas, for example 1860.00."_s,
              [&] { screen().customs = CustomsInfo{.value = typed}; });
    check("FedEx limit", u"150 lb 1.6 oz is over FedEx's 150 lb limit."_s, [&] { screen().weightLb = u"150.1"_s; });
    check("no phone",
          u"FedEx international shipments require the recipient's phone number — add it to the To section."_s, [&] {
              ShippoAddress to = londonAddress();
              to.phone = u"  "_s;
              app->draftTo = to;
          });
    const QString notANumber = u"The weight is not a number — type pounds and ounces as plain numbers, for example 1 "
                               "and 3.5."_s;
    check("weight with a comma", notANumber, [&] {
        screen().weightLb = u"1,5"_s;
        screen().weightOz = u"3"_s;
    });
    check("negative ounces", notANumber, [&] { screen().weightOz = u"-5"_s; });
    screen().weightOz = QString();
    check("quantity in words", u"The quantity in the Customs Declaration is not a whole number."_s,
          [&] { screen().customs = CustomsInfo{.quantity = u"two"_s, .value = u"310"_s}; });
    check("insurance", u"The insured value is not a number — type it as plain dollars, for example 1500.00."_s,
          [&] { screen().insuranceValue = u"1,500"_s; });
    EXPECT_EQ(requestsTo("/shipments"), 0);
}

TEST_F(LabelRatingTest, WeighsUpToTheCarriersLimit)
{
    composeParcel(homeAddress());
    screen().weightLb = u"70"_s;
    run(screen().fetchRates());
    EXPECT_FALSE(screen().rates.value().isEmpty()) << banner().toStdString();
    screen().weightLb = u"71"_s;
    screen().weightOz = u"2"_s;
    run(screen().fetchRates());
    EXPECT_EQ(banner(), u"71 lb 2.0 oz is over USPS's 70 lb limit."_s);
    screen().weightLb = u"70.1"_s;
    screen().weightOz = u""_s;
    run(screen().fetchRates());
    EXPECT_TRUE(banner().endsWith(u"is over USPS's 70 lb limit."_s)) << banner().toStdString();
}

TEST_F(LabelRatingTest, OpensThePaperworkSheetBeforeAnInternationalRating)
{
    composeParcel(londonAddress());
    screen().customs = CustomsInfo{.quantity = u"1"_s, .value = u"310.00"_s, .signer = u"Dana Marsh"_s};
    run(screen().fetchRates());
    EXPECT_TRUE(screen().showIntlPaperwork.value());
    EXPECT_EQ(requestsTo("/shipments"), 0);
    EXPECT_EQ(LabelTexts::paperworkText(screen()),
              u"Pick what's in this shipment for Harriet Ashcombe — this goes on the label's customs form and the "
              "commercial invoice, then rates load."_s);
    EXPECT_EQ(LabelTexts::internationalHint(screen()), u"International — customs declaration required below"_s);
    run(screen().fetchRates(true));
    EXPECT_FALSE(screen().showIntlPaperwork.value());
    EXPECT_EQ(screen().selectedRate()->servicelevel.token, u"usps_priority_mail_international"_s);
    EXPECT_EQ(sent("/shipments/").last()["customs_declaration"]["certify_signer"], "Dana Marsh");
}

TEST_F(LabelRatingTest, WarnsOfAnExportFilingAboveItsLimit)
{
    const std::tuple<ShippoAddress, QString, bool> rows[] = {{londonAddress(), u"2500.00"_s, false},
                                                             {londonAddress(), u"2500.01"_s, true},
                                                             {homeAddress(), u"9000"_s, false}};
    for (const auto &[to, value, warns] : rows) {
        composeParcel(to);
        screen().customs = CustomsInfo{.value = value};
        EXPECT_EQ(!LabelTexts::exportFilingWarning(screen()).isEmpty(), warns) << value.toStdString();
    }
}

TEST_F(LabelRatingTest, SendsTheDesksOwnContactForASenderWithoutOne)
{
    preferences.setValue(u"sender.fallbackEmail"_s, u"shipping@example.com"_s);
    preferences.setValue(u"sender.fallbackPhone"_s, u"503-555-0100"_s);
    for (const QString &blank : {QString(), u" "_s}) {
        SenderProfile profile{.address = deskAddress()};
        profile.address.email = profile.address.phone = blank;
        app->senders.profiles = QList<SenderProfile>{profile};
        composeAndRate(homeAddress());
        const Json from = sent("/shipments/").last()["address_from"];
        EXPECT_EQ(from["email"], "shipping@example.com");
        EXPECT_EQ(from["phone"], "503-555-0100");
    }
}

TEST_F(LabelRatingTest, KeepsTheCarriersOwnRatesCheapestFirstAndEqualOnesInOrder)
{
    composeParcel(homeAddress());
    screen().carrier = Carrier::fedex;
    answerRates(rate("a", "61.98", "FedEx", "fedex_ground") + ',' + rate("b", "7.40", "USPS", "usps_priority") + ',' +
                rate("c", "9.10", "My FedEx Account", "fedex_2_day") + ',' +
                rate("d", "61.98", "FEDEX", "fedex_2_day") + ',' + rate("e", "100.00", "UPS", "ups_ground"));
    run(screen().fetchRates());
    QStringList ids;
    for (const ShippoRate &rate : screen().rates.value())
        ids += rate.objectId;
    EXPECT_EQ(ids, (QStringList{u"c"_s, u"a"_s, u"d"_s}));
    EXPECT_EQ(screen().selectedRateID.value(), u"c"_s) << "the cheaper one of the wanted class";
    EXPECT_EQ(LabelTexts::transitText(screen().rates.value().first()), u"Unknown"_s);

    screen().svcClass = ServiceClass::fedexFirstOvernight; // the rates stay valid, only the choice changes
    EXPECT_FALSE(screen().selectedRate());
    EXPECT_TRUE(banner().endsWith(u" rate came back — pick from the list."_s));
    screen().svcClass = ServiceClass::fedexGround;
    EXPECT_EQ(screen().selectedRateID.value(), u"a"_s);
}

TEST_F(LabelRatingTest, AFlatRateShipsPriorityMailInEveryClass)
{
    screen().mailpiece = BuiltinMailpiece::smallFlatRateBox;
    screen().svcClass = ServiceClass::express;
    composeAndRate(homeAddress());
    EXPECT_EQ(screen().selectedRate()->servicelevel.token, u"usps_priority"_s);
    EXPECT_EQ(sent("/shipments/").last()["parcels"][0]["template"], "USPS_SmallFlatRateBox");
}

TEST_F(LabelRatingTest, ReportsMissingRatesAndKeepsTheDraftUsableAfterAFailure)
{
    carrier.setScenario({.fedexConnected = false});
    screen().carrier = Carrier::fedex;
    composeAndRate(homeAddress());
    const QString noFedex = u"No FedEx rates returned — is your FedEx account connected in the Shippo dashboard?"_s;
    EXPECT_EQ(banner(), noFedex + u"\nAuthentication Failed: the FedEx account is not connected."_s);
    screen().carrier = Carrier::usps;
    carrier.setScenario({.noRates = true});
    composeAndRate(homeAddress());
    EXPECT_EQ(banner(), u"No USPS rates returned for this shipment.\nNo rates are available for this shipment."_s);

    CarrierScenario failing;
    failing.failNext = CarrierFailure{"shipments", 500, "text/plain", "down", 1, ""};
    carrier.setScenario(failing);
    composeAndRate(homeAddress());
    EXPECT_EQ(banner(), u"Shippo HTTP 500: down"_s);
    EXPECT_FALSE(screen().busy.value());
    run(screen().fetchRates());
    EXPECT_FALSE(screen().rates.value().isEmpty());
}

TEST_F(LabelRatingTest, DiscardsRatesForADraftEditedInTheMeantime)
{
    composeParcel(homeAddress());
    Task<> rating = screen().fetchRates();
    EXPECT_TRUE(screen().busy.value());
    screen().weightLb = u"9"_s;
    run(std::move(rating));
    EXPECT_TRUE(screen().rates.value().isEmpty());
    EXPECT_TRUE(bannerIsWarning());
}

TEST_F(LabelRatingTest, ValidationAdoptsTheStandardizedAddressAndContinuesWithRating)
{
    composeParcel(homeAddress());
    run(screen().validate());
    EXPECT_EQ(screen().validationStatus.value(), u"Valid ✓ (USPS version)"_s);
    EXPECT_EQ(app->draftTo.value().city, u"ASHEVILLE"_s);
    EXPECT_EQ(app->draftTo.value().name, u"Eleanor Whitfield"_s);
    EXPECT_TRUE(prompts.questions.isEmpty());
    EXPECT_FALSE(screen().rates.value().isEmpty());
    app->draftTo = homeAddress();
    EXPECT_FALSE(screen().validationOK.value()) << "the checked street was replaced";
}

TEST_F(LabelRatingTest, ValidationSaysWhatIsStillMissing)
{
    ShippoAddress to = homeAddress();
    app->draftTo = to;
    run(screen().validate());
    EXPECT_EQ(banner(),
              u"Address valid — add a weight (put the package on the scale and press Weigh) and rates will load."_s);
    to.name = QString();
    app->draftTo = to;
    screen().weightLb = u"1"_s;
    run(screen().validate());
    EXPECT_EQ(banner(), u"Address valid — complete the package details to get rates."_s);
    app->draftTo = londonAddress();
    screen().weightLb = QString();
    run(screen().validate());
    EXPECT_EQ(screen().validationStatus.value(), u"International — address not validated"_s);
    EXPECT_EQ(banner(),
              u"Add a weight (put the package on the scale and press Weigh) and international rates will load."_s);
    EXPECT_EQ(requestsTo("/addresses"), 2);
}

TEST_F(LabelRatingTest, ARejectedAddressLeavesTheDraftUnchanged)
{
    for (const auto &[street, status] : {std::pair{u"9 Nowhere Ln"_s, u"The address as submitted could not be found"_s},
                                         std::pair{u"9 Silent Way"_s, u"Address could not be validated."_s},
                                         std::pair{u"9 Unchecked Rd"_s, u"Address could not be validated."_s}}) {
        ShippoAddress to = homeAddress();
        to.street1 = street;
        composeParcel(to);
        run(screen().validate());
        EXPECT_TRUE(screen().validationStatus.value().startsWith(status))
            << screen().validationStatus.value().toStdString();
        EXPECT_FALSE(screen().validationOK.value());
        EXPECT_EQ(app->draftTo.value(), to);
        EXPECT_TRUE(screen().rates.value().isEmpty());
    }
}

TEST_F(LabelRatingTest, AsksBeforeAStandardizedAddressLosesANumber)
{
    composeParcel(boxAddress());
    run(screen().validate());
    ASSERT_EQ(prompts.questions.size(), 1);
    EXPECT_EQ(prompts.questions.first().title, u"USPS Rewrote This Address"_s);
    EXPECT_TRUE(prompts.questions.first().text.startsWith(
        u"USPS standardization DROPPED: 12\n\nUSPS version:\nPO BOX 239\nASHEVILLE NC 28801"_s));
    EXPECT_TRUE(prompts.questions.first().text.endsWith(u"\n\nWhich should ship?"_s));
    EXPECT_EQ(screen().validationStatus.value(), u"Valid ✓ (kept as typed)"_s);
    EXPECT_EQ(app->draftTo.value(), boxAddress());

    prompts.answer = 1;
    composeParcel(boxAddress());
    app->draftTo = boxAddress();
    run(screen().validate());
    EXPECT_EQ(screen().validationStatus.value(), u"Valid ✓ (USPS version)"_s);
    EXPECT_EQ(app->draftTo.value().street1, u"PO BOX 239"_s);
}

TEST_F(LabelRatingTest, AVerdictDoesNotApplyToARecipientFilledInBehindTheDialog)
{
    prompts.answer = 1;
    prompts.whileAsked = [&] { app->fillRecipient({.name = u"Other Person"_s, .street1 = u"1 Main St"_s}); };
    composeParcel(boxAddress());
    run(screen().validate());
    EXPECT_EQ(app->draftTo.value().street1, u"1 Main St"_s);
    EXPECT_FALSE(screen().validationOK.value());
    EXPECT_EQ(banner(), u"The draft was changed while its address was checked — validate again."_s);
    EXPECT_TRUE(screen().rates.value().isEmpty());
}

TEST_F(LabelRatingTest, AFailedCheckClearsTheOldVerdictAndKeepsItsMessage)
{
    composeParcel(homeAddress());
    run(screen().validate());
    ASSERT_TRUE(screen().validationOK.value());
    CarrierScenario failing;
    failing.failNext = CarrierFailure{"addresses", 500, "text/plain", "down", 1, ""};
    carrier.setScenario(failing);
    run(screen().validate());
    EXPECT_FALSE(screen().validationOK.value());
    EXPECT_EQ(banner(), u"Shippo HTTP 500: down"_s);
}

TEST_F(LabelRatingTest, AsksAgainWhenTheLabelWouldDropANumber)
{
    carrier.setScenario({.rewrittenAddressTo = true});
    composeAndRate(boxAddress());
    ASSERT_EQ(prompts.questions.size(), 1);
    EXPECT_EQ(prompts.questions.first().title, u"The Label Will Drop: 12, 239"_s);
    EXPECT_TRUE(prompts.questions.first().text.contains(u"\n\nThe carrier will print:\n"_s));
    EXPECT_TRUE(screen().rates.value().isEmpty());
    EXPECT_FALSE(screen().validationOK.value());
    EXPECT_EQ(banner(), u"Rates cleared — adjust the address and validate again."_s);

    prompts.answer = 1;
    run(screen().fetchRates());
    EXPECT_FALSE(screen().rates.value().isEmpty());
    EXPECT_TRUE(screen().selectedRate());
}

} // namespace parcelory::test

#include "app/label/LabelTexts.h"
#include "support/AppTest.h"

namespace parcelory::test {
namespace {

class LabelRatingTest : public LabelTest {
protected:
    ShippoAddress boxAddress()
    {
        ShippoAddress to = homeAddress();
        to.street1 = u"PO Box 239 #12"_s;
        to.street2 = QString();
        return to;
    }
    QStringList offered() { return each(screen().rates.value(), &ShippoRate::objectId); }
    void validate(const ShippoAddress &to)
    {
        app->draftTo = to;
        run(screen().validate());
    }
    /// Makes the carrier answer the next shipment request with these rates.
    void answerRates(const QByteArrayList &rates)
    {
        carrier.setScenario(answering("shipments", 201, R"({"object_id":"s","rates":[)" + rates.join(',') + "]}"));
    }
    static QByteArray rate(const char *id, const QByteArray &amount, const char *provider, const char *token)
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
    answerRates(rates);
    run(screen().fetchRates());
    EXPECT_EQ(offered(), QStringList{u"good"_s});
    EXPECT_EQ(errors->entries().value(0).context, u"Get Rates"_s);
    EXPECT_THAT(errors->entries().value(0).detail.toStdString(), testing::HasSubstr("usps_priority (“5,00”)"));

    rates.clear();
    for (int price = 2000; price > 0; --price)
        rates += rate("r", QByteArray::number(price), "USPS", "usps_priority");
    answerRates(rates);
    run(screen().fetchRates());
    ASSERT_EQ(screen().rates.value().size(), 500);
    EXPECT_EQ(screen().rates.value().last().amount, u"500"_s);
    EXPECT_EQ(errors->entries().value(0).detail, u"Only the 500 cheapest of 2000 rates are shown."_s);
}

TEST_F(LabelRatingTest, NamesTheFirstReasonWhyADraftCannotBeRated)
{
    for (const Json &row : table(u"ratings"_s, "reasons against a rating")) {
        const auto typed = [&row](const char *field, const QString &usual) {
            return row[0].contains(field) ? text(row[0][field]) : usual;
        };
        screen().clearDraft();
        screen().mailpiece = BuiltinMailpiece::package;
        screen().carrier = Carrier::fedex;
        composeAbroad({.quantity = typed("quantity", {}), .value = typed("value", u"310"_s)});
        ShippoAddress to = londonAddress();
        to.phone = typed("phone", to.phone);
        app->draftTo = to;
        screen().carrier = *carrierFrom(typed("carrier", u"fedex"_s));
        if (row[0].contains("mailer"))
            screen().mailpiece = PresetMailpiece{typed("mailer", {})};
        screen().dimWidth = typed("width", screen().dimWidth);
        screen().dimHeight = typed("height", screen().dimHeight);
        screen().weightLb = typed("lb", u"1"_s);
        screen().weightOz = typed("oz", {});
        screen().insuranceValue = typed("insured", {});
        run(screen().fetchRates());
        EXPECT_EQ(banner(), text(row[1]));
        EXPECT_TRUE(bannerIsWarning());
    }
    EXPECT_EQ(requestsTo("/shipments"), 0);
    screen().clearDraft();
    screen().carrier = Carrier::usps;
    composeParcel(homeAddress());
    screen().weightLb = u"70"_s; // the limit itself
    run(screen().fetchRates());
    EXPECT_TRUE(isRated()) << banner().toStdString();
}

TEST_F(LabelRatingTest, OpensThePaperworkSheetBeforeAnInternationalRating)
{
    composeAbroad({.quantity = u"1"_s, .value = u"310.00"_s, .signer = u"Dana Marsh"_s});
    run(screen().fetchRates());
    EXPECT_TRUE(screen().showIntlPaperwork.value());
    EXPECT_EQ(LabelTexts::nextStepHint(screen()), u"Waiting for your choice."_s);
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
    answerRates({rate("a", "61.98", "FedEx", "fedex_ground"), rate("b", "7.40", "USPS", "usps_priority"),
                 rate("c", "9.10", "My FedEx Account", "fedex_2_day"), rate("d", "61.98", "FEDEX", "fedex_2_day"),
                 rate("e", "100.00", "UPS", "ups_ground")});
    run(screen().fetchRates());
    EXPECT_EQ(offered(), (QStringList{u"c"_s, u"a"_s, u"d"_s}));
    EXPECT_EQ(screen().selectedRateID.value(), u"c"_s) << "the cheaper one of the wanted class";
    EXPECT_EQ(LabelTexts::transitText(screen().rates.value().first()), u"Unknown"_s);

    screen().svcClass = ServiceClass::fedexFirstOvernight; // the rates stay valid, only the choice changes
    EXPECT_FALSE(isRated());
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
    composeAbroad({.quantity = u"1"_s, .value = u"310.00"_s});
    run(screen().fetchRates(true));
    EXPECT_EQ(screen().selectedRate()->servicelevel.token, u"usps_priority_mail_international"_s);
}

TEST_F(LabelRatingTest, ReportsMissingRatesAndKeepsTheDraftUsable)
{
    const std::tuple<Carrier, CarrierScenario, QString> rows[] = {
        {Carrier::fedex,
         {.fedexConnected = false},
         u"No FedEx rates returned — is your FedEx account connected in the Shippo dashboard?\nAuthentication "
         "Failed: the FedEx account is not connected."_s},
        {Carrier::usps,
         {.noRates = true},
         u"No USPS rates returned for this shipment.\nNo rates are available for this shipment."_s},
        {Carrier::usps, answering("shipments", 500, "down"), u"Shippo HTTP 500: down"_s},
    };
    for (const auto &[by, scenario, text] : rows) {
        screen().carrier = by;
        carrier.setScenario(scenario);
        composeAndRate(homeAddress());
        EXPECT_EQ(banner(), text);
    }
    Task<> rating = screen().fetchRates();
    EXPECT_TRUE(screen().busy.value());
    screen().weightLb = u"9"_s;
    run(std::move(rating));
    EXPECT_FALSE(isRated()) << "rates of another weight";
    EXPECT_TRUE(bannerIsWarning());
    run(screen().fetchRates());
    EXPECT_TRUE(isRated());
}

TEST_F(LabelRatingTest, ValidationAdoptsTheStandardizedAddressAndContinuesWithRating)
{
    composeParcel(homeAddress());
    run(screen().validate());
    EXPECT_EQ(screen().validationStatus.value(), u"Valid ✓ (USPS version)"_s);
    EXPECT_EQ(app->draftTo.value().city, u"ASHEVILLE"_s);
    EXPECT_EQ(app->draftTo.value().name, u"Eleanor Whitfield"_s);
    EXPECT_TRUE(prompts.questions.isEmpty() && isRated());
    app->draftTo = homeAddress();
    EXPECT_FALSE(screen().validationOK.value()) << "the checked street was replaced";

    run(screen().validate());
    ASSERT_TRUE(screen().validationOK.value());
    carrier.setScenario(answering("addresses", 500, "down"));
    run(screen().validate());
    EXPECT_FALSE(screen().validationOK.value()) << "the old verdict";
    EXPECT_EQ(banner(), u"Shippo HTTP 500: down"_s);

    carrier.setScenario(answering("addresses", 200,
                                  R"({"street1": "418 MONTFORD AVE REAR", "validation_results": {"is_valid": true}})"));
    ShippoAddress typed = homeAddress();
    typed.street2 = u"Rear"_s;
    validate(typed);
    EXPECT_EQ(app->draftTo.value().street1 + app->draftTo.value().street2, u"418 MONTFORD AVE REAR"_s);
    EXPECT_EQ(app->draftTo.value().city, typed.city);
}

TEST_F(LabelRatingTest, ValidationSaysWhatIsStillMissing)
{
    validate(homeAddress());
    EXPECT_EQ(banner(),
              u"Address valid — add a weight (put the package on the scale and press Weigh) and rates will load."_s);
    screen().weightLb = u"1"_s;
    validate(homeOf({}));
    EXPECT_EQ(banner(), u"Address valid — complete the package details to get rates."_s);
    screen().weightLb = QString();
    validate(londonAddress());
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
        EXPECT_TRUE(screen().validationStatus.value().startsWith(status)) << street.toStdString();
        EXPECT_FALSE(screen().validationOK.value());
        EXPECT_EQ(app->draftTo.value(), to);
        EXPECT_FALSE(isRated());
    }
}

TEST_F(LabelRatingTest, AsksBeforeAStandardizedAddressLosesANumber)
{
    composeParcel(boxAddress());
    run(screen().validate());
    ASSERT_EQ(prompts.questions.size(), 1);
    const QString &question = prompts.questions.first().text;
    EXPECT_EQ(prompts.questions.first().title, u"USPS Rewrote This Address"_s);
    EXPECT_TRUE(
        question.startsWith(u"USPS standardization DROPPED: 12\n\nUSPS version:\nPO BOX 239\nASHEVILLE NC 28801"_s));
    EXPECT_TRUE(question.endsWith(u"\n\nWhich should ship?"_s));
    EXPECT_EQ(screen().validationStatus.value(), u"Valid ✓ (kept as typed)"_s);
    EXPECT_EQ(app->draftTo.value(), boxAddress());

    prompts.answer = 1;
    validate(boxAddress());
    EXPECT_EQ(screen().validationStatus.value(), u"Valid ✓ (USPS version)"_s);
    EXPECT_EQ(app->draftTo.value().street1, u"PO BOX 239"_s);

    prompts.whileAsked = [&] { app->fillRecipient({.name = u"Other Person"_s, .street1 = u"1 Main St"_s}); };
    validate(boxAddress());
    EXPECT_EQ(app->draftTo.value().street1, u"1 Main St"_s) << "the verdict is another recipient's";
    EXPECT_FALSE(screen().validationOK.value());
    EXPECT_EQ(banner(), u"The draft was changed while its address was checked — validate again."_s);
    EXPECT_FALSE(isRated());
}

TEST_F(LabelRatingTest, AsksAgainWhenTheLabelWouldDropANumber)
{
    carrier.setScenario({.rewrittenAddressTo = true});
    composeAndRate(boxAddress());
    ASSERT_EQ(prompts.questions.size(), 1);
    EXPECT_EQ(prompts.questions.first().title, u"The Label Will Drop: 12, 239"_s);
    EXPECT_TRUE(prompts.questions.first().text.contains(u"\n\nThe carrier will print:\n"_s));
    EXPECT_FALSE(isRated() || screen().validationOK.value());
    EXPECT_EQ(banner(), u"Rates cleared — adjust the address and validate again."_s);

    prompts.answer = 1;
    run(screen().fetchRates());
    EXPECT_TRUE(isRated());
}

} // namespace parcelory::test

#include "app/label/LabelTexts.h"
#include "support/AppTest.h"

namespace parcelory::test {

using LabelDraftTest = LabelTest;

TEST_F(LabelDraftTest, IsCompleteOnlyWithSenderRecipientAndWeight)
{
    composeParcel(homeAddress());
    EXPECT_TRUE(screen().formComplete());
    EXPECT_EQ(LabelTexts::ratesHint(screen()), u"Enter the package details, then get rates."_s);
    for (QString ShippoAddress::*field :
         {&ShippoAddress::name, &ShippoAddress::street1, &ShippoAddress::city, &ShippoAddress::zip}) {
        ShippoAddress to = homeAddress();
        (to.*field).clear();
        app->draftTo = to;
        EXPECT_FALSE(screen().formComplete());
    }
    composeParcel(homeAddress());
    screen().weightLb = u"a pound"_s;
    EXPECT_FALSE(screen().formComplete());
    EXPECT_EQ(LabelTexts::ratesHint(screen()), u"Need a sender address, recipient, and weight before rating."_s);
    screen().weightOz = u" .5 "_s;
    EXPECT_TRUE(screen().formComplete());
    const SenderProfile added = app->senders.add(); // a country alone is not an address
    screen().senderID = added.id;
    EXPECT_FALSE(screen().formComplete());
    EXPECT_EQ(LabelTexts::senderHint(screen()), u"This profile has no address yet — fill it in under Settings."_s);
}

TEST_F(LabelDraftTest, WritesTheCountryAsItsCodeOnceItIsFilledInLeftOrUsed)
{
    const std::tuple<QString, QString, bool> rows[] = {
        {u"U.S.A."_s, u"US"_s, false},          {u" America "_s, u"US"_s, false}, {u"The Netherlands"_s, u"NL"_s, true},
        {u"Atlantis "_s, u"Atlantis "_s, true}, {QString(), QString(), false},
    };
    const std::function<void()> occasions[] = {
        [&] { app->fillDraft(app->draftTo, {}); },
        [&] { screen().settleCountry(); },
        [&] { runTask(screen().validate()); },
        [&] { runTask(screen().fetchRates()); },
    };
    for (const auto &[typed, code, abroad] : rows) {
        for (const auto &occasion : occasions) {
            ShippoAddress to = homeAddress();
            to.country = typed;
            app->draftTo = to;
            occasion();
            EXPECT_EQ(app->draftTo.value().country, code) << typed.toStdString();
            EXPECT_EQ(screen().isInternational(), abroad) << typed.toStdString();
        }
    }
}

TEST_F(LabelDraftTest, KeepsTheClassFittingToCarrierAndDestination)
{
    screen().svcClass = ServiceClass::groundAdvantage;
    app->draftTo = homeAddress();
    EXPECT_EQ(screen().svcClass.value(), ServiceClass::groundAdvantage);
    app->draftTo = londonAddress();
    EXPECT_EQ(screen().svcClass.value(), ServiceClass::priorityIntl);
    screen().carrier = Carrier::fedex;
    EXPECT_EQ(screen().svcClass.value(), ServiceClass::fedexIntlPriority);
    EXPECT_EQ(screen().service.value(), ServiceOption::fedexNone);
    app->draftTo = homeAddress();
    EXPECT_EQ(screen().svcClass.value(), ServiceClass::fedex2Day);
    screen().service = ServiceOption::fedexIndirect;
    EXPECT_FALSE(LabelTexts::signatureWarning(screen()).isEmpty());
    screen().svcClass = ServiceClass::fedexHomeDelivery;
    EXPECT_TRUE(LabelTexts::signatureWarning(screen()).isEmpty());
    screen().carrier = Carrier::usps;
    EXPECT_EQ(screen().svcClass.value(), ServiceClass::priority);
}

TEST_F(LabelDraftTest, TakesSizesFromBoxesAndForgetsThemWithTheBox)
{
    screen().mailpiece = PresetMailpiece{u"uline-s-5632"_s};
    EXPECT_EQ(screen().dimWidth.value(), u"7.25"_s);
    EXPECT_EQ(LabelTexts::sizeHint(screen()), u"in (from Bubble Mailer #1 - S-5632)"_s);
    BoxProfile box = app->boxes.add();
    box.name = u"ULINE S-4344"_s;
    box.length = u"12"_s;
    app->boxes.profiles = QList{box};
    screen().mailpiece = box.id;
    EXPECT_EQ(screen().dimLength.value(), u"12"_s);
    EXPECT_EQ(LabelTexts::mailpieceName(screen()), u"ULINE S-4344"_s);
    box.length = u"30"_s;
    app->boxes.profiles = QList{box};
    EXPECT_EQ(screen().dimLength.value(), u"30"_s); // edited in Settings while in use
    app->boxes.remove(box.id);
    EXPECT_EQ(LabelTexts::mailpieceName(screen()), u"Package"_s);
    EXPECT_EQ(screen().dimLength.value(), u""_s);
    EXPECT_EQ(LabelTexts::sizeHint(screen()), u"in (required)"_s);
    screen().mailpiece = BuiltinMailpiece::mediumFlatRateBox;
    EXPECT_TRUE(screen().flatRateLocked());
    EXPECT_EQ(LabelTexts::classHint(screen()), u"Flat Rate ships Priority Mail"_s);
    screen().carrier = Carrier::fedex; // FedEx has no flat-rate box
    EXPECT_EQ(LabelTexts::mailpieceName(screen()), u"Package"_s);
}

TEST_F(LabelDraftTest, TheNextStartContinuesWithCarrierClassMailpieceAndSigner)
{
    app->signedInUser = u"dana"_s;
    screen().mailpiece = PresetMailpiece{u"uline-s-5148"_s};
    app->draftTo = londonAddress();
    screen().customs = CustomsInfo{.value = u"80"_s, .signer = u"Dana Marsh"_s};
    screen().weightLb = u"1"_s;
    run(screen().fetchRates(true));
    buy();
    app->draftTo = ShippoAddress{};
    screen().svcClass = ServiceClass::express;
    app->draftTo = londonAddress(); // does not change the class of the other parcels
    EXPECT_NE(screen().svcClass.value(), ServiceClass::express);
    const QStringList words = read(preferences, settings::labelChoice);
    EXPECT_EQ(words.value(1), serviceClassInfo(ServiceClass::express).rawValue);

    LabelScreen next(*app);
    EXPECT_EQ(next.mailpiece.value(), MailpieceSelection(PresetMailpiece{u"uline-s-5148"_s}));
    app->draftTo = ShippoAddress{};
    EXPECT_FALSE(next.usualMailpiece());
    next.weightOz = u"15.5"_s; // about a pound
    EXPECT_EQ(next.usualMailpiece(), next.mailpiece.value());
    app->draftTo = londonAddress();
    EXPECT_EQ(next.customs.value().signer, u"Dana Marsh"_s);
    settle();
}

TEST_F(LabelDraftTest, SaysWhatOfAnAddressOrARateIsNotSeen)
{
    const QString fifty = QString(50, u'N'), street = u"1 "_s + QString(100, u'S');
    const std::tuple<QString, QString, QStringList> rows[] = {
        {fifty, u"1 Elm St"_s, {}},
        {fifty + u'X', u"1 Elm St"_s, {u"The label cuts off the end of this name."_s}},
        {u"Ida"_s, street, {u"The label cuts off the end of this street."_s}},
    };
    for (const auto &[name, line, warning] : rows) {
        ShippoAddress to = homeAddress();
        to.name = name;
        to.street1 = line;
        app->draftTo = to;
        EXPECT_EQ(LabelTexts::cutWarning(screen()), warning.join(u'\n'));
        EXPECT_LE(LabelTexts::printedRecipient(screen()).first().size(), 50);
    }
    const auto rate = [](const QString &id, const QString &account) {
        ShippoRate rate{.objectId = id, .amount = u"66.40"_s, .currency = u"USD"_s, .provider = u"FedEx"_s};
        rate.carrierAccount = account;
        return rate;
    };
    const QList<ShippoRate> twins = {rate(u"1"_s, u"abcd1111"_s), rate(u"2"_s, u"abcd2222"_s)};
    EXPECT_EQ(LabelTexts::rateDetails(twins[1], twins), u"FedEx · Unknown · account …2222"_s);
    EXPECT_EQ(LabelTexts::rateDetails(twins[1], {twins[1]}), u"FedEx · Unknown"_s);
}

TEST_F(LabelDraftTest, DeclaresTheInvoicesValuesUntilAnotherRecipientComes)
{
    const auto fill = [this](const QString &id, const QString &item, const QString &total) {
        DesklineInvoice invoice{.invoiceID = id, .address = londonAddress()};
        invoice.items.append({.title = item, .qty = u"1"_s, .total = total});
        app->scannedInvoice = invoice;
        app->fillFromInvoice(invoice);
    };
    fill(u"48377"_s, u"Silver crown"_s, u"$1,310.00"_s);
    CustomsInfo declared{CustomsItemType::silver, u"1"_s, u"1310.00"_s, {}};
    EXPECT_EQ(screen().customs.value(), declared);
    screen().reference = u" 48377 "_s;
    EXPECT_EQ(screen().defaultCustomsValue(), u"1310.00"_s);
    declared.signer = u"Dana Marsh"_s;
    screen().customs = declared;
    fill(u"48378"_s, u"Bank note"_s, u"on request"_s);
    EXPECT_EQ(screen().customs.value(), (CustomsInfo{CustomsItemType::currency, u"1"_s, {}, u"Dana Marsh"_s}));

    for (const ShippoAddress &next : {homeAddress(), londonAddress()}) { // also the same recipient without the invoice
        fill(u"48377"_s, u"Silver crown"_s, u"$1,310.00"_s);
        app->fillRecipient(PostalContact::of(next));
        EXPECT_EQ(screen().customs.value().value, QString()) << next.name.toStdString();
        EXPECT_FALSE(screen().draftInvoice());
    }
    EXPECT_EQ(screen().customs.value().signer, u"Dana Marsh"_s);
    declared.value = u"75"_s; // typed
    screen().customs = declared;
    app->fillRecipient(PostalContact::of(londonAddress()));
    EXPECT_EQ(screen().customs.value(), declared) << "what the clerk typed stays for this recipient";
}

TEST_F(LabelDraftTest, ShowsScannerNoiseCutToFortyCharacters)
{
    app->reportScanNoise(QString(39, u'a') + u"e\u0301bc"_s);
    EXPECT_EQ(app->scanStatus.value(), u"Scanner heard “"_s + QString(39, u'a') + u"e\u0301” — not an invoice QR."_s);
}

TEST_F(LabelDraftTest, EveryEditThatAPriceDependsOnClearsTheRates)
{
    const std::pair<const char *, std::function<void()>> edits[] = {
        {"recipient", [&] { app->draftTo = homeOf(u"Ann"_s); }},
        {"sender", [&] { screen().senderID = QUuid::createUuid(); }},
        {"sender's profile", [&] { app->senders.add(); }},
        {"weight", [&] { screen().weightOz = u"2"_s; }},
        {"size", [&] { screen().dimHeight = u"3"_s; }},
        {"mailpiece", [&] { screen().mailpiece = BuiltinMailpiece::largeEnvelope; }},
        {"option", [&] { screen().service = ServiceOption::adult; }},
        {"insurance", [&] { screen().insuranceValue = u"10"_s; }},
        {"ship date", [&] { screen().shipDate = screen().shipDate.value().addDays(1); }},
        {"residential", [&] { screen().fedexResidential = true; }},
        {"carrier", [&] { screen().carrier = Carrier::fedex; }},
        {"API key", [&] { app->keyChanges = app->keyChanges + 1; }},
    };
    for (const auto &[name, edit] : edits) {
        composeAndRate(homeAddress());
        ASSERT_TRUE(isRated()) << name << ": " << banner().toStdString();
        edit();
        EXPECT_TRUE(screen().rates.value().isEmpty()) << name;
        EXPECT_FALSE(screen().selectedRate()) << name;
        screen().carrier = Carrier::usps;
        screen().mailpiece = BuiltinMailpiece::package;
        screen().senderID = std::nullopt;
        screen().service = ServiceOption::tracking;
        screen().clearDraft();
    }
}

TEST_F(LabelDraftTest, ChangedCustomsDetailsAskForNewInternationalRates)
{
    screen().customs = CustomsInfo{.quantity = u"1"_s, .value = u"310"_s};
    composeAndRate(londonAddress());
    ASSERT_FALSE(screen().rates.value().isEmpty()) << banner().toStdString();
    screen().customs = CustomsInfo{.quantity = u"2"_s, .value = u"310"_s};
    EXPECT_TRUE(screen().rates.value().isEmpty());
    EXPECT_EQ(banner(), u"Customs details changed — get rates again so the label matches."_s);
}

TEST_F(LabelDraftTest, HintsSayWhatIsMissing)
{
    composeParcel(homeAddress());
    screen().validationOK = true;
    EXPECT_EQ(LabelTexts::nextStepHint(screen()), u"Get rates."_s);
    screen().dimWidth = QString();
    EXPECT_EQ(LabelTexts::nextStepHint(screen()), u"Add the package size."_s);
    screen().weightLb = QString();
    EXPECT_EQ(LabelTexts::nextStepHint(screen()), u"Add the weight."_s);
    SenderProfile empty = app->senders.profiles.value().first();
    empty.address = {};
    app->senders.profiles = QList{empty};
    screen().weightLb = u"1"_s;
    EXPECT_EQ(LabelTexts::nextStepHint(screen()), u"Fill in the sender's address in Settings."_s);
    screen().busy = true; // a document prints: no rates are on their way
    EXPECT_EQ(LabelTexts::nextStepHint(screen()), u"Printing…"_s);
    screen().busy = false;

    const BoxProfile box{.length = u"12"_s, .width = u"10"_s, .height = u"8"_s};
    app->boxes.profiles = QList{box};
    screen().mailpiece = box.id;
    EXPECT_EQ(LabelTexts::mailpieceName(screen()), u"Box 12×10×8\""_s);
}

} // namespace parcelory::test

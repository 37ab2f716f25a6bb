// What belongs to one parcel, and what goes on to the next.

#include "support/AppTest.h"

namespace parcelory::test {
namespace {

class NextParcelTest : public LabelTest {
protected:
    /// The recipient, and what was typed for the parcel.
    QStringList draft()
    {
        LabelScreen &s = screen();
        return {app->draftTo.value().name, s.weightLb,  s.weightOz,       s.dimLength,
                s.insuranceValue,          s.reference, s.descriptionText};
    }
};

} // namespace

TEST_F(NextParcelTest, NothingOfTheSoldParcelIsSoldAgainAndWhatIsTypedDuringThePurchaseStays)
{
    const std::pair<std::function<void()>, QStringList> rows[] = {
        {[] {}, {{}, {}, {}, {}, {}, {}, {}}},
        {[this] { app->fillRecipient(PostalContact::of(londonAddress())); },
         {londonAddress().name, {}, {}, {}, {}, {}, {}}},
        {[this] { app->draftTo = londonAddress(); }, {londonAddress().name, {}, {}, {}, {}, {}, {}}},
        {[this] {
             screen().reference = u"48300"_s;
             screen().descriptionText = u"Next"_s;
         },
         {{}, {}, {}, {}, {}, u"48300"_s, u"Next"_s}},
        {[this] { screen().weightOz = u"7"_s; },
         {u"Parcel 5"_s, u"1"_s, u"7"_s, {}, {}, {}, {}}}, // a weight is one value
    };
    int parcel = 0;
    for (const auto &[meanwhile, left] : rows) {
        screen().clearDraft();
        screen().carrier = Carrier::fedex;
        screen().fedexResidential = true;
        screen().shipDate = clock.now().date().addDays(2);
        screen().insuranceValue = u"412"_s;
        composeAndRate(homeOf(u"Parcel %1"_s.arg(++parcel)));
        ASSERT_TRUE(isRated()) << banner().toStdString();
        screen().reference = u"4821%1"_s.arg(parcel);
        screen().descriptionText = u"Coins"_s;
        buyAndMeanwhile(meanwhile);
        EXPECT_EQ(draft(), left);
        EXPECT_TRUE(newest().recipient.startsWith(u"Parcel %1"_s.arg(parcel)) && !newest().isIntl);
        EXPECT_FALSE(screen().fedexResidential.value());
        EXPECT_EQ(screen().shipDate.value(), clock.now().date());
    }
}

TEST_F(NextParcelTest, TheOutcomeOfAPurchaseIsNotHiddenByTheNextParcelsSteps)
{
    composeAndRate(homeOf(u"Parcel 1"_s));
    buyAndMeanwhile([this] { app->fillRecipient(PostalContact::of(homeAddress())); });
    const std::optional<Banner> outcome = screen().banner;
    composeParcel(homeAddress());
    run(screen().validate()); // as the fill does by itself
    ASSERT_TRUE(isRated());
    EXPECT_EQ(screen().banner.value(), outcome);
    screen().dimLength = QString();
    run(screen().fetchRates());
    EXPECT_TRUE(bannerIsWarning());
    screen().dimLength = u"9"_s;
    EXPECT_EQ(screen().banner.value(), outcome);
    app->fillRecipient(PostalContact::of(londonAddress()));
    EXPECT_FALSE(screen().banner.value());
}

TEST_F(NextParcelTest, ALabelThatDidNotComeOutStaysBesideTheNextParcelUntilItIsReprintedOrDismissed)
{
    enum class End { reprinted, printedInTheBar, dismissed };
    const QString ignored = u"Invoice 48214 ignored."_s;
    for (const End end : {End::reprinted, End::printedInTheBar, End::dismissed}) {
        screen().clearDraft();
        processes.behave = failingPrinter("no paper");
        composeAndRate(homeOf(u"Parcel %1"_s.arg(int(end))));
        buyAndMeanwhile([this] { composeParcel(londonAddress()); });
        app->scanBusy = true;
        app->fillDraft(homeAddress(), u"48213"_s); // a scan
        EXPECT_FALSE(screen().banner.value());
        ASSERT_TRUE(screen().last.awaitsReprint());
        EXPECT_FALSE(screen().last.comesFirst()) << "the clerk works on the next parcel";
        const ResolvedPurchase found{.id = 7, .record = screen().last.label.value()->record, .isBought = true};
        purchases().resolved = QList{found};
        run(screen().last.reprint());
        EXPECT_TRUE(bannerIsWarning() && banner().contains(u"no paper"_s)) << banner().toStdString();
        app->failScan(ignored); // of another invoice, while the form is filled
        processes.behave = nullptr;
        if (end == End::reprinted)
            run(screen().last.reprint());
        else if (end == End::printedInTheBar)
            run(purchases().print(found));
        else
            screen().last.dismiss();
        runUntil([this] { return !screen().last.label.value(); }, &clock); // the queue is empty
        EXPECT_EQ(purchases().resolved.value().isEmpty(), end != End::dismissed);
        EXPECT_TRUE(banner().endsWith(end == End::dismissed ? ignored : u"Label sent to ZD421."_s));
        EXPECT_EQ(app->draftTo.value(), homeAddress());
        app->scanBusy = false;
    }
}

TEST_F(NextParcelTest, ALabelThatTheLogLacksStaysUntilTheLogHasIt)
{
    LastLabelCard &card = screen().last;
    const auto label = [](const QString &id, bool isPrinted, bool isLogged) {
        LastLabel bought{.isPrinted = isPrinted, .isLogged = isLogged};
        bought.record.transactionID = id;
        return bought;
    };
    app->draftTo = homeAddress();
    card.show(label(u"first"_s, false, false));
    card.dismiss();
    card.show(label(u"second"_s, true, true));
    card.show(label(u"third"_s, false, true)); // the mailing log prints it, too
    ASSERT_TRUE(card.label.value());
    EXPECT_EQ(card.label.value()->record.transactionID, u"first"_s);
    emit purchases().purchaseResolved({.record = card.label.value() -> record, .isBought = true});
    card.dismiss();
    EXPECT_FALSE(card.label.value());
}

TEST_F(NextParcelTest, AScanReplacesWhatWasTypedForTheFormerRecipient)
{
    const PostalContact ana = PostalContact::of(homeAddress()), bo = PostalContact::of(londonAddress());
    screen().weightLb = u"2"_s; // weighed before the first recipient is known
    app->fillRecipient(ana);
    EXPECT_EQ(screen().weightLb.value(), u"2"_s);
    screen().insuranceValue = u"850"_s;
    screen().descriptionText = u"Coins"_s;
    screen().reference = u"48213"_s;
    screen().customs = CustomsInfo{CustomsItemType::gold, u"3"_s, u"75"_s, u"Dana Marsh"_s};
    app->fillRecipient(ana);
    EXPECT_EQ(screen().insuranceValue.value(), u"850"_s) << "the recipient is the same";
    app->fillRecipient(bo);
    EXPECT_EQ(draft(), QStringList({londonAddress().name, {}, {}, {}, {}, {}, {}}));
    EXPECT_EQ(screen().customs.value(), (CustomsInfo{.signer = u"Dana Marsh"_s}));
}

TEST_F(NextParcelTest, ASecondParcelForTheSamePersonOutlivesTheFirstParcelsLabel)
{
    composeAndRate(homeAddress());
    pressUnheard();
    ASSERT_EQ(unresolved(), 1);
    screen().clearDraft();
    composeParcel(homeAddress());
    screen().weightLb = u"4"_s;
    screen().banner = Banner{u"Something about the second parcel"_s, false};
    checkAgain();
    EXPECT_EQ(unresolved(), 0);
    EXPECT_EQ(app->draftTo.value(), homeAddress());
    EXPECT_EQ(screen().weightLb.value(), u"4"_s);
    EXPECT_EQ(banner(), u"Something about the second parcel"_s);
    EXPECT_TRUE(app->lastShipmentSummary.value().startsWith(u"USPS "_s)) << "a label found later is the last shipment";
}

TEST_F(NextParcelTest, TheAddressBookKeepsTheFullCompanyName)
{
    QList<ShippoAddress> kept;
    QObject::connect(app.get(), &AppState::recipientToKeep, [&kept](const ShippoAddress &to) { kept.append(to); });
    ShippoAddress to = homeAddress();
    to.company = u"Whitfield Rare Coins"_s;
    composeAndRate(to);
    buy();
    ASSERT_EQ(kept.size(), 1);
    EXPECT_EQ(kept.first().company, to.company);
    EXPECT_FALSE(newest().recipient.contains(u"Coins"_s)) << "others read the log and the label";
}

} // namespace parcelory::test

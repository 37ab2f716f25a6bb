// What belongs to one parcel, and what goes on to the next.

#include "compose/Customs.h"
#include "compose/Services.h"
#include "core/ShippoAddress.h"
#include "core/Task.h"
#include "practice/carrier/CarrierScenario.h"
#include "records/ShipmentRecord.h"
#include "support/CarrierDesk.h"
#include "support/LabelDesk.h"
#include "support/Printing.h"
#include "support/RunTask.h"

#include <gmock/gmock.h>

#include <QDir>

#include <utility>

namespace parcelory::test {
using namespace Qt::StringLiterals;

namespace {

class NextParcelTest : public testing::Test, public LabelDesk {
protected:
    void TearDown() override // a lookup in progress would otherwise leak
    {
        runUntil([this] { return !screen().purchases.checking; });
        workPool().waitForDone();
        settle();
    }
    /// Presses Buy and lets the clerk do something before the carrier answers.
    template <class Work>
    void buyAndMeanwhile(Work work)
    {
        clock.advance(LabelScreen::buyPause);
        carrier.setScenario({.holdsAnswers = true});
        Task<> buying = screen().buyAndPrint();
        runUntil([this] { return !sent("/transactions/").isEmpty(); });
        work();
        carrier.setScenario({});
        run(std::move(buying));
        ASSERT_TRUE(banner().startsWith(u"Success!"_s)) << banner().toStdString();
    }
    void rateFedexHome()
    {
        screen().carrier = Carrier::fedex;
        screen().fedexResidential = true;
        screen().shipDate = clock.now().date().addDays(2);
        composeAndRate(homeAddress());
        ASSERT_TRUE(screen().selectedRate()) << banner().toStdString();
    }
};

PostalContact contactOf(const ShippoAddress &address)
{
    return PostalContact::of(address);
}

} // namespace

TEST_F(NextParcelTest, NothingOfTheSoldParcelIsRatedAgain)
{
    rateFedexHome();
    buyAndMeanwhile([this] {
        app->fillRecipient(contactOf({.name = u"Ana Doe"_s,
                                      .street1 = u"1 Elm St"_s,
                                      .city = u"Salem"_s,
                                      .state = u"OR"_s,
                                      .zip = u"97301"_s,
                                      .country = u"US"_s}));
    });
    EXPECT_EQ(app->draftTo.value().name, u"Ana Doe"_s);
    EXPECT_EQ(screen().weightLb.value(), QString());
    EXPECT_EQ(screen().dimLength.value(), QString());
    EXPECT_FALSE(screen().fedexResidential.value());
    EXPECT_EQ(screen().shipDate.value(), clock.now().date());
}

TEST_F(NextParcelTest, WhatIsTypedDuringThePurchaseStays)
{
    composeAndRate(homeAddress());
    buyAndMeanwhile([this] {
        screen().reference = u"48300"_s;
        screen().descriptionText = u"Next"_s;
    });
    EXPECT_EQ(app->draftTo.value(), ShippoAddress{});
    EXPECT_EQ(screen().reference.value(), u"48300"_s);
    EXPECT_EQ(screen().descriptionText.value(), u"Next"_s);
    EXPECT_EQ(screen().weightLb.value(), QString());

    composeAndRate(londonAddress());
    screen().customs = CustomsInfo{CustomsItemType::gold, u"1"_s, u"50"_s, {}};
    run(screen().fetchRates(true));
    buyAndMeanwhile([this] { screen().weightOz = u"7"_s; }); // pounds and ounces are one value
    EXPECT_EQ(screen().weightLb.value(), u"1"_s);
    EXPECT_EQ(screen().weightOz.value(), u"7"_s);
}

TEST_F(NextParcelTest, AScanReplacesWhatWasTypedForTheFormerRecipient)
{
    const PostalContact ana = contactOf(homeAddress()), bo = contactOf(londonAddress());
    screen().weightLb = u"2"_s; // weighed before the first recipient is known
    app->fillRecipient(ana);
    EXPECT_EQ(screen().weightLb.value(), u"2"_s);
    screen().insuranceValue = u"850"_s;
    screen().descriptionText = u"Coins"_s;
    screen().customs = CustomsInfo{CustomsItemType::gold, u"3"_s, u"75"_s, u"Dana Marsh"_s};
    app->fillRecipient(ana);
    EXPECT_EQ(screen().insuranceValue.value(), u"850"_s) << "the recipient is the same";
    app->fillRecipient(bo);
    EXPECT_EQ(screen().weightLb.value(), QString());
    EXPECT_EQ(screen().insuranceValue.value(), QString());
    EXPECT_EQ(screen().descriptionText.value(), QString());
    EXPECT_EQ(screen().customs.value(), (CustomsInfo{.signer = u"Dana Marsh"_s}));
}

TEST_F(NextParcelTest, ASecondParcelForTheSamePersonOutlivesTheFirstParcelsLabel)
{
    composeAndRate(homeAddress());
    clock.advance(LabelScreen::buyPause);
    carrier.setScenario({.dropConnection = true}); // it still sells the label
    run(screen().buyAndPrint());
    ASSERT_EQ(screen().purchases.unresolved.value().size(), 1);
    screen().clearDraft();
    composeParcel(homeAddress());
    screen().weightLb = u"4"_s;
    screen().banner = Banner{u"Something about the second parcel"_s, false};
    carrier.setScenario({});
    run(screen().purchases.checkAgain());
    runUntil([this] { return screen().purchases.unresolved.value().isEmpty(); });
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
    EXPECT_FALSE(app->log.records().first().recipient.contains(u"Coins"_s)) << "others read the log and the label";
}

} // namespace parcelory::test

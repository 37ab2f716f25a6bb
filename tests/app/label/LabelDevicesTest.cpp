#include "app/logs/MailingLogScreen.h"
#include "compose/Customs.h"
#include "compose/Mailpieces.h"
#include "compose/Services.h"
#include "core/ShippoAddress.h"
#include "core/Task.h"
#include "support/CarrierDesk.h"
#include "support/LabelDesk.h"
#include "support/Printing.h"
#include "support/RunTask.h"

#include <gmock/gmock.h>

#include <optional>
#include <utility>

namespace parcelory::test {
using namespace Qt::StringLiterals;
using testing::HasSubstr;

namespace {

class LabelDevicesTest : public testing::Test, public LabelDesk {
protected:
    void plug() { hid.listener.attached(1, u"M25"_s); }
    /// A report in tenths of an ounce.
    void report(char status, int tenths)
    {
        const char bytes[] = {3, status, 0x0B, char(0xFF), char(tenths & 0xFF), char(tenths >> 8)};
        hid.listener.report(1, QByteArray(bytes, sizeof bytes));
        settle();
    }
    void put(int tenths)
    {
        report(2, 0);
        report(4, tenths);
    }
    QString weight() { return screen().weightLb.value() + u'/' + screen().weightOz.value(); }
    QString weigh()
    {
        screen().banner = std::nullopt;
        screen().weigh();
        return banner();
    }
    void buyAbroad()
    {
        composeParcel(londonAddress());
        screen().customs = CustomsInfo{CustomsItemType::investmentGold, u"2"_s, u"1860"_s, u"Dana Marsh"_s};
        screen().reference = u"48377"_s;
        run(screen().fetchRates(true));
        buy();
    }
};

} // namespace

TEST_F(LabelDevicesTest, WeighsOnlyAParcelThatIsSteadyAndNotSoldYet)
{
    EXPECT_EQ(weigh(), u"No scale detected"_s);
    plug();
    EXPECT_TRUE(weigh().startsWith(u"Nothing to weigh yet"_s));
    report(3, 100);
    EXPECT_TRUE(weigh().startsWith(u"Nothing to weigh yet"_s));
    report(6, 0);
    EXPECT_EQ(weigh(), app->scale.fault.value());
    EXPECT_FALSE(weigh().isEmpty());
    put(173);
    EXPECT_EQ(weigh(), QString());
    EXPECT_EQ(weight(), u"1/1.3"_s);

    app->draftTo = homeAddress();
    screen().mailpiece = PresetMailpiece{u"uline-s-5148"_s};
    run(screen().fetchRates());
    put(173);       // taken off for taping and put back
    report(3, 180); // a hand leans on the parcel during Buy
    buy();
    report(4, 173);
    ASSERT_EQ(app->log.records().size(), 1) << banner().toStdString();
    EXPECT_EQ(weight(), u"/"_s);
    EXPECT_TRUE(weigh().startsWith(u"This is still the last package's weight"_s));
    EXPECT_EQ(weight(), u"/"_s);
    put(124);
    EXPECT_EQ(weigh(), QString());
    EXPECT_EQ(weight(), u"0/12.4"_s);
}

TEST_F(LabelDevicesTest, ASoldParcelLeavesNothingInADraftStartedDuringThePurchase)
{
    composeAndRate(homeAddress());
    screen().insuranceValue = u"412"_s;
    run(screen().fetchRates());
    screen().reference = u"48213"_s;
    screen().descriptionText = u"Coins"_s;
    Task<> buying = screen().buyAndPrint();
    ShippoAddress next = homeAddress();
    next.name = u"Ruth Abernathy"_s;
    app->draftTo = next;
    screen().descriptionText = u"Banknotes"_s;
    run(std::move(buying));
    ASSERT_EQ(app->log.records().size(), 1) << banner().toStdString();
    EXPECT_EQ(weight(), u"/"_s);
    EXPECT_EQ(screen().insuranceValue.value() + screen().reference.value(), QString());
    EXPECT_EQ(screen().descriptionText.value(), u"Banknotes"_s);
    EXPECT_EQ(app->draftTo.value().name, u"Ruth Abernathy"_s);
}

TEST_F(LabelDevicesTest, ValidationWeighsAParcelThatHasNoWeightYet)
{
    plug();
    put(173);
    composeParcel(homeAddress());
    screen().weightLb = QString();
    run(screen().validate());
    EXPECT_EQ(weight(), u"1/1.3"_s);
    EXPECT_FALSE(screen().rates.value().isEmpty());
}

TEST_F(LabelDevicesTest, AnInternationalUspsParcelPrintsAndStoresItsInvoice)
{
    preferences.setValue(u"printer.documentQueue"_s, u"Laser"_s);
    buyAbroad();
    EXPECT_THAT(banner().toStdString(), HasSubstr("Commercial invoice sent to Laser."));
    EXPECT_TRUE(processes.lastPrinted().startsWith("%PDF"));
    const QByteArray kept = app->log.customsPDF(app->log.records().first().id)->value_or(QByteArray());
    EXPECT_EQ(kept, processes.lastPrinted());

    MailingLogScreen log(*app);
    run(log.reprintCustoms(app->log.records().first()));
    EXPECT_EQ(log.message.value(), u"Customs docs sent to the printer."_s);
    EXPECT_EQ(processes.lastPrinted(), kept);

    preferences.setValue(u"printer.documentQueue"_s, QString());
    buyAbroad();
    EXPECT_THAT(banner().toStdString(),
                HasSubstr("(commercial invoice opened in Preview — set a document printer in Settings)"));
    EXPECT_FALSE(screen().purchaseComplete());
    EXPECT_EQ(desktop.opened.size(), 1);

    composeParcel(londonAddress());
    EXPECT_EQ(screen().invoiceData({}).weight, u"1 lb 0.0 oz"_s);
    screen().customs = CustomsInfo{.value = u"310"_s, .signer = u"Zo\u0378"_s};
    run(screen().printIntlInvoice());
    EXPECT_THAT(banner().toStdString(), HasSubstr("(no font on this computer has “\u0378”, so the commercial invoice "
                                                  "shows boxes — write it by hand)"));
    EXPECT_TRUE(bannerIsWarning());
    desktop.opened.removeLast();

    screen().printInvoiceWithRates = false; // stored for a reprint, not printed
    buyAbroad();
    EXPECT_EQ(desktop.opened.size(), 1);
    EXPECT_TRUE(app->log.records().first().hasCustomsPDF);
    screen().printInvoiceWithRates = true;

    desktop.fails = true;
    buyAbroad();
    EXPECT_THAT(banner().toStdString(), HasSubstr("(Invoice print failed: no viewer)"));
    EXPECT_TRUE(app->log.records().first().hasCustomsPDF);
    EXPECT_EQ(app->log.records().size(), 4);
    workPool().waitForDone();
    settle();
}

TEST_F(LabelDevicesTest, CustomsDocumentsMissingInTheLogAreFetchedOnceAndStored)
{
    composeParcel(londonAddress());
    screen().carrier = Carrier::fedex;
    screen().customs = CustomsInfo{.value = u"310"_s};
    run(screen().fetchRates(true));
    buy();
    ASSERT_EQ(app->log.records().size(), 1) << banner().toStdString();
    ShipmentRecord record = app->log.records().first();
    record.id = 0;
    record.zpl = "^XA^XZ";
    record.createdAt = record.createdAt.addSecs(60);
    record.customsPDF = std::nullopt;
    ASSERT_TRUE(app->log.insert(record)); // like a row logged by an earlier version
    settle();
    const ShipmentRecord bare = app->log.records().first();
    MailingLogScreen log(*app);
    carrier.setScenario({.dropConnection = true});
    run(log.reprintCustoms(bare));
    EXPECT_TRUE(log.message.value().startsWith(u"Customs docs download failed: "_s))
        << log.message.value().toStdString();
    carrier.setScenario({});
    run(log.reprintCustoms(bare));
    EXPECT_TRUE(log.message.value().startsWith(u"Customs docs opened in Preview"_s))
        << log.message.value().toStdString();
    const int requests = int(carrier.requests().size());
    run(log.reprintCustoms(bare));
    EXPECT_EQ(carrier.requests().size(), requests);
    workPool().waitForDone();
    settle();
}

} // namespace parcelory::test

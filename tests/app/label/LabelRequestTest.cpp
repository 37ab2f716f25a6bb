// What the draft tells the carrier and the customs, and what an edit takes back.

#include "backoffice/DesklineInvoice.h"
#include "carrier/RequestBodies.h"
#include "core/Task.h"
#include "practice/carrier/CarrierScenario.h"
#include "support/LabelDesk.h"
#include "support/Printing.h"

#include <gmock/gmock.h>

namespace parcelory::test {
using namespace Qt::StringLiterals;

namespace {

class LabelRequestTest : public testing::Test, public LabelDesk {};

} // namespace

TEST_F(LabelRequestTest, TheCarrierAndTheCustomsReadADiscreetCompany)
{
    ShippoAddress to = homeAddress();
    to.company = u"Rare Coins & Gold"_s;
    composeParcel(to);
    EXPECT_EQ(screen().ratingRequest().to.company, u"R C & G"_s);
    EXPECT_EQ(screen().invoiceData(u"USPS"_s).recipient.company, u"R C & G"_s);
    EXPECT_EQ(app->draftTo.value().company, to.company) << "the address book keeps the whole name";
    app->fillRecipient(PostalContact::of(to));
    EXPECT_EQ(app->draftTo.value().company, u"R C & G"_s);
}

TEST_F(LabelRequestTest, ADayThatIsOverIsTodayAndFedexInsuresItself)
{
    composeParcel(homeAddress());
    const QDateTime now = clock.now();
    screen().shipDate = now.date().addDays(-1); // the window was open overnight
    EXPECT_EQ(screen().ratingRequest().shipDate, now);
    screen().shipDate = now.date().addDays(2);
    EXPECT_EQ(screen().ratingRequest().shipDate, QDateTime(now.date().addDays(2), QTime(12, 0)));
    screen().insuranceValue = u" 100 "_s;
    EXPECT_EQ(screen().ratingRequest().insuranceAmount + screen().ratingRequest().insuranceProvider, u"100"_s);
    screen().carrier = Carrier::fedex;
    EXPECT_EQ(screen().ratingRequest().insuranceAmount + screen().ratingRequest().insuranceProvider, u"100FEDEX"_s);
}

TEST_F(LabelRequestTest, TheInvoiceFillsTheCustomsUntilAnotherRecipientComes)
{
    DesklineInvoice invoice{.invoiceID = u"48213"_s};
    invoice.address = londonAddress();
    invoice.items = {{.title = u"Silver Dollar"_s, .total = u"$1,860.00"_s}};
    app->scannedInvoice = invoice;
    app->fillFromInvoice(invoice);
    EXPECT_EQ(screen().customs.value().value, u"1860.00"_s);
    EXPECT_EQ(screen().customs.value().itemType, CustomsItemType::silver);
    screen().reference = u" 48213 "_s;
    EXPECT_EQ(screen().defaultCustomsValue(), u"1860.00"_s);
    ShippoAddress moved = londonAddress(); // the same recipient, without the invoice
    moved.phone = u"1"_s;
    app->fillRecipient(PostalContact::of(moved));
    EXPECT_EQ(screen().customs.value().value, QString());

    app->fillFromInvoice(invoice);
    CustomsInfo typed = screen().customs;
    typed.value = u"900"_s;
    screen().customs = typed;
    app->fillRecipient(PostalContact::of(moved));
    EXPECT_EQ(screen().customs.value().value, u"900"_s) << "what the clerk typed stays for this recipient";
}

TEST_F(LabelRequestTest, ClearingTheFormOrAnEditTakesBackWhatWasAgreed)
{
    composeAndRate(homeAddress());
    screen().secondLabel = u"Bought already."_s;
    screen().secondLabelAgreed = true;
    screen().weightLb = u"2"_s;
    EXPECT_TRUE(screen().rates.value().isEmpty());
    EXPECT_EQ(screen().secondLabel, QString());
    EXPECT_FALSE(screen().secondLabelAgreed);
    screen().insuranceValue = u"100"_s;
    screen().clearDraft();
    EXPECT_TRUE(app->draftTo.value().isEmpty());
    EXPECT_EQ(screen().weightLb.value() + screen().dimLength.value() + screen().insuranceValue.value(), QString());
}

TEST_F(LabelRequestTest, AStandardizedAddressReplacesBothLinesOfTheStreet)
{
    ShippoAddress typed = homeAddress();
    typed.street2 = u"Rear"_s;
    app->draftTo = typed;
    carrier.setScenario({.failNext = CarrierFailure{
                             "addresses", 200, "application/json",
                             R"({"street1": "418 MONTFORD AVE REAR", "validation_results": {"is_valid": true}})"}});
    run(screen().validate());
    EXPECT_EQ(app->draftTo.value().street1, u"418 MONTFORD AVE REAR"_s);
    EXPECT_EQ(app->draftTo.value().street2, QString());
    EXPECT_EQ(app->draftTo.value().city, typed.city);
}

TEST_F(LabelRequestTest, AWeightIsSoldOnceAndLoggedInOunces)
{
    const auto weigh = [this](char ounces) {
        hid.listener.report(1, QByteArray("\x03\x04\x0B\x00", 4) + ounces + '\0');
    };
    hid.listener.attached(1, u"DYMO M25"_s);
    weigh(17);
    composeParcel(homeAddress());
    screen().weigh();
    run(screen().fetchRates());
    pressBuy();
    ASSERT_EQ(app->log.records().size(), 1) << banner().toStdString();
    EXPECT_EQ(app->log.records().first().weightOz, 17);
    app->draftTo = londonAddress();
    run(screen().validate()); // takes a new parcel's weight by itself
    EXPECT_EQ(screen().totalPounds(), 0);
    weigh(40);
    run(screen().validate());
    EXPECT_EQ(screen().totalPounds(), 2.5);
}

} // namespace parcelory::test

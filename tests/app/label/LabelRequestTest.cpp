// What the draft tells the carrier and the customs, and what an edit takes back.

#include "carrier/RequestBodies.h"
#include "support/AppTest.h"

namespace parcelory::test {

using LabelRequestTest = LabelTest;

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

TEST_F(LabelRequestTest, ClearingTheFormOrAnEditTakesBackWhatWasAgreed)
{
    composeAndRate(homeAddress());
    screen().secondLabel = u"Bought already."_s;
    screen().secondLabelAgreed = true;
    screen().weightLb = u"2"_s;
    EXPECT_FALSE(isRated());
    EXPECT_EQ(screen().secondLabel, QString());
    EXPECT_FALSE(screen().secondLabelAgreed);
    screen().insuranceValue = u"100"_s;
    screen().clearDraft();
    EXPECT_TRUE(app->draftTo.value().isEmpty());
    EXPECT_EQ(screen().weightLb.value() + screen().dimLength.value() + screen().insuranceValue.value(), QString());
}

} // namespace parcelory::test

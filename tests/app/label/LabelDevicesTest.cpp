#include "support/AppTest.h"

namespace parcelory::test {
namespace {

class LabelDevicesTest : public LabelTest {
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
        composeAbroad({CustomsItemType::investmentGold, u"2"_s, u"1860"_s, u"Dana Marsh"_s});
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
    EXPECT_NEAR(newest().weightOz, 17.3, 0.01);
    composeParcel(homeAddress());
    screen().weightLb = QString();
    run(screen().validate()); // takes a new parcel's weight by itself
    EXPECT_EQ(weight(), u"/"_s);
    put(124);
    run(screen().validate());
    EXPECT_EQ(weight(), u"0/12.4"_s);
    EXPECT_TRUE(isRated());
    put(125);
    EXPECT_EQ(weigh(), QString());
    EXPECT_EQ(weight(), u"0/12.5"_s);
}

TEST_F(LabelDevicesTest, AnInternationalUspsParcelPrintsAndStoresItsInvoice)
{
    preferences.setValue(u"printer.documentQueue"_s, u"Laser"_s);
    buyAbroad();
    EXPECT_THAT(banner().toStdString(), HasSubstr("Commercial invoice sent to Laser."));
    EXPECT_TRUE(processes.lastPrinted().startsWith("%PDF"));
    const QByteArray kept = app->log.customsPDF(newest().id)->value_or(QByteArray());
    EXPECT_EQ(kept, processes.lastPrinted());

    MailingLogScreen log(*app);
    run(log.reprintCustoms(newest()));
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
    EXPECT_TRUE(newest().hasCustomsPDF);
    screen().printInvoiceWithRates = true;

    desktop.fails = true;
    buyAbroad();
    EXPECT_THAT(banner().toStdString(), HasSubstr("(Invoice print failed: no viewer)"));
    EXPECT_TRUE(newest().hasCustomsPDF);
    EXPECT_EQ(app->log.records().size(), 4);
}

TEST_F(LabelDevicesTest, CustomsDocumentsMissingInTheLogAreFetchedOnceAndStored)
{
    composeAbroad({.value = u"310"_s});
    screen().carrier = Carrier::fedex;
    run(screen().fetchRates(true));
    buy();
    ASSERT_EQ(app->log.records().size(), 1) << banner().toStdString();
    ShipmentRecord record = newest();
    record.id = 0;
    record.zpl = "^XA^XZ";
    record.createdAt = record.createdAt.addSecs(60);
    record.customsPDF = std::nullopt;
    ASSERT_TRUE(app->log.insert(record)); // like a row logged by an earlier version
    settle();
    const ShipmentRecord bare = newest();
    MailingLogScreen log(*app);
    carrier.setScenario({.failNext = CarrierFailure{.pathPrefix = "documents", .status = 503}});
    run(log.reprintCustoms(bare));
    EXPECT_TRUE(log.message.value().startsWith(u"Customs docs download failed: "_s));
    carrier.setScenario({});
    run(log.reprintCustoms(bare));
    EXPECT_TRUE(log.message.value().startsWith(u"Customs docs opened in Preview"_s));
    const int downloads = requestsTo("/documents");
    EXPECT_GT(downloads, 0);
    run(log.reprintCustoms(bare));
    EXPECT_EQ(requestsTo("/documents"), downloads);
}

} // namespace parcelory::test

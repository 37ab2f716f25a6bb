#include "app/label/PreparedPurchase.h"
#include "app/purchase/CustomsPapers.h"
#include "app/purchase/PurchaseFlow.h"
#include "app/purchase/PurchaseTexts.h"
#include "support/AppTest.h"

#include <QDirIterator>

namespace parcelory::test {
namespace {

class LabelPurchaseTest : public LabelTest {
protected:
    void rateHome()
    {
        clock.advance(1min);
        screen().service = ServiceOption::signature;
        screen().insuranceValue = u"850.00"_s;
        composeParcel(homeAddress());
        screen().reference = u"48213"_s;
        screen().descriptionText = u"Coins\tand\nnotes"_s;
        run(screen().fetchRates());
        ASSERT_TRUE(isRated()) << banner().toStdString();
    }
    void expectEnd(const QString &text) { EXPECT_TRUE(banner().endsWith(text)) << banner().toStdString(); }
    /// The label did not print, and the clerk is told how to print it.
    void expectNotPrinted(const QString &reason)
    {
        expectEnd(u" (print failed: "_s + reason + u" — use Reprint from the log)"_s);
        EXPECT_TRUE(bannerIsWarning());
        EXPECT_FALSE(screen().busy);
    }
};

} // namespace

TEST_F(LabelPurchaseTest, BuysOncePrintsLogsAndMakesRoomForTheNextParcel)
{
    rateHome();
    const QString price = screen().selectedRate()->amount;
    Task<> first = screen().buyAndPrint();
    for (int press = 0; press < 20; ++press)
        pressBuy();
    run(std::move(first));
    EXPECT_EQ(banner(), u"Success! Priority Mail to Eleanor Whitfield, $%1. Label sent to ZD421."_s.arg(price));
    pressBuy();
    ASSERT_EQ(sent("/transactions/").size(), 1) << "a burst of presses buys one label";
    EXPECT_EQ(sent("/transactions/").first()["label_file_type"], "ZPLII");
    EXPECT_EQ(sent("/transactions/").first()["metadata"], "KX|US|Eleanor Whitfield|USPS Priority Mail|97301");

    ASSERT_EQ(app->log.records().size(), 1);
    const ShipmentRecord row = newest();
    EXPECT_EQ((QStringList{row.carrier, row.service, row.recipient, row.services, row.declaredValue, row.weight,
                           row.reference, row.descriptionText, row.status}),
              texts(table(u"mailing-log"_s, "a bought label")));
    EXPECT_EQ(row.postage, price.toDouble());
    EXPECT_TRUE(row.testMode);
    EXPECT_FALSE(row.tracking.isEmpty() || row.transactionID.isEmpty() || row.labelURL.isEmpty());
    const QByteArray label = **app->log.zpl(row.id);
    EXPECT_TRUE(label.startsWith("^XA"));
    EXPECT_EQ(processes.lastPrinted(), Zpl::rotated(label)) << "the log keeps the label as the carrier sent it";

    EXPECT_TRUE(
        app->lastShipmentSummary.value().startsWith(u"USPS Priority Mail · Eleanor Whitfield, Asheville NC · $"_s));
    EXPECT_EQ(app->draftTo.value(), ShippoAddress{});
    EXPECT_EQ(screen().insuranceValue.value(), QString());
    EXPECT_EQ(screen().service.value(), ServiceOption::signature);
    EXPECT_FALSE(isRated() || screen().busy);
}

// Otherwise the screen shows the price before the name, and the digits of the tracking number in another place.
TEST_F(LabelPurchaseTest, KeepsARightToLeftNameApartFromTheNumbersAfterIt)
{
    rateHome();
    ShippoAddress levi = homeAddress();
    levi.name = u"נועה לוי"_s;
    composeParcel(levi);
    run(screen().fetchRates());
    buy();
    EXPECT_TRUE(banner().startsWith(u"Success! Priority Mail to \u2068נועה לוי\u2069, $"_s)) << banner().toStdString();
    EXPECT_TRUE(
        app->lastShipmentSummary.value().startsWith(u"USPS Priority Mail · \u2068נועה לוי\u2069, Asheville NC · $"_s));
    EXPECT_EQ(newest().recipientName(), levi.name);
}

TEST_F(LabelPurchaseTest, ALabelThatCouldNotBePrintedIsStillLogged)
{
    rateHome();
    processes.behave = failingPrinter("no such printer\n");
    buy();
    expectNotPrinted(u"lpr failed: no such printer"_s);
    EXPECT_TRUE(*app->log.zpl(newest().id));

    rateHome();
    processes.behave = [](const QString &program, const QStringList &) -> ProcessOutcome {
        throw ProcessTimedOut(program);
    };
    buy();
    expectNotPrinted(u"the print system did not answer within 30 seconds; the label may still come out"_s);
    processes.behave = nullptr;
    run(screen().last.reprint());
    const QByteArray lastPrinted = processes.lastPrinted();
    EXPECT_EQ(lastPrinted, Zpl::rotated(**app->log.zpl(newest().id)));

    const std::pair<LabelAnswer, QString> links[] = {{LabelAnswer::expired, u"Shippo HTTP 403: label download"_s},
                                                     {LabelAnswer::xmlError, u"the carrier's file is not a label"_s},
                                                     {LabelAnswer::truncated, u"the label arrived incomplete"_s},
                                                     {LabelAnswer::html, u"the carrier's file is not a label"_s}};
    int rows = 2;
    for (const auto &[link, reason] : links) {
        rateHome();
        carrier.setScenario({.labelAnswer = link});
        buy();
        expectNotPrinted(reason);
        EXPECT_EQ(app->log.records().size(), ++rows);
        EXPECT_FALSE(*app->log.zpl(newest().id)) << "an error page must not be kept as a label";
        EXPECT_FALSE(newest().labelURL.isEmpty());
    }
    EXPECT_EQ(processes.lastPrinted(), lastPrinted) << "print tools get labels only";
    carrier.setScenario({});
    run(screen().last.reprint());
    EXPECT_NE(processes.lastPrinted(), lastPrinted);
    runUntil([this] { return screen().last.preview.sight.value().picture != nullptr; }, &clock);
    carrier.clearRequests();
    prompts.answer = 1;
    run(screen().last.reprint());
    EXPECT_EQ(requestsTo("/labels"), 0) << "the label was kept";
    EXPECT_FALSE(*app->log.zpl(newest().id)) << "beside its row, which nothing changes";
}

TEST_F(LabelPurchaseTest, ALabelIsNoLongerOfferedOnceItsLostRefundIsFound)
{
    rateHome();
    processes.behave = failingPrinter("no paper");
    buy();
    MailingLogScreen log(*app);
    prompts.answer = 1;
    carrier.setScenario({.droppedPath = "refunds"});
    run(log.refund(newest()));
    EXPECT_TRUE(screen().last.awaitsReprint());
    carrier.setScenario({});
    clock.advance(61s);
    run(app->syncRefundStatuses());
    EXPECT_FALSE(screen().last.label.value());
    rateHome();
    processes.behave = nullptr;
    buy();
    app->draftTo = londonAddress();
    screen().purchases.resolved = QList<ResolvedPurchase>{{.record = newest(), .isBought = true, .isSecond = true}};
    EXPECT_TRUE(banner().startsWith(u"Success! "_s));
    run(log.refund(newest()));
    EXPECT_TRUE(banner().isEmpty() && screen().purchases.resolved.value().isEmpty()) << "its card has left already";
}

TEST_F(LabelPurchaseTest, AnInvoiceThatCannotBeDrawnStopsNothing)
{
    rateHome();
    PreparedPurchase purchase = preparePurchase(screen(), *app, *screen().selectedRate(), {});
    purchase.entry.record.isIntl = true;
    purchase.entry.record.testMode = true;
    PurchaseFlow &flow = purchases().flow();
    purchase.entry.id = runTask(flow.begin(purchase.entry), &clock);
    const SaleResult sale = runTask(flow.request(purchase.entry, purchase.tag()), &clock);
    const PapersResult drawn{.outcome = PapersOutcome::notDrawn, .text = u"no fonts"_s};
    const PurchaseResult result =
        runTask(flow.complete(sale.entry, sale.transaction, {.prints = true, .drawn = drawn}), &clock);
    EXPECT_TRUE(result.label.isPrinted && result.isLogged);
    EXPECT_FALSE(result.isComplete());
    EXPECT_TRUE(PurchaseTexts::successLine(result).endsWith(u" (Invoice print failed: no fonts)"_s));
    EXPECT_FALSE(*app->log.customsPDF(newest().id));
}

TEST_F(LabelPurchaseTest, AFedexParcelAbroadBringsItsCustomsDocument)
{
    const QString failed = u" (FedEx commercial invoice download failed: "_s;
    const std::tuple<ShippoAddress, CarrierScenario, QString, bool> rows[] = {
        {londonAddress(), {}, u"Label sent to ZD421."_s, true},
        {londonAddress(), answering("documents", 404, "gone"), failed + u"Shippo HTTP 404: label download)"_s, false},
        {londonAddress(), answering("documents", 200, "%PDF-1.4 half"),
         failed + u"the carrier's file is not a complete PDF document)"_s, false},
        {homeAddress(), {}, u"Label sent to ZD421."_s, false}, // a domestic parcel needs no papers
    };
    preferences.setValue(u"printer.documentQueue"_s, u"Laser"_s);
    screen().carrier = Carrier::fedex;
    const auto buyParcel = [this](const ShippoAddress &to, const CarrierScenario &scenario) {
        clock.advance(1min);
        screen().customs = CustomsInfo{CustomsItemType::currency, u"12"_s, u"1860.00"_s, {}};
        carrier.setScenario({});
        composeAndRate(to);
        ASSERT_TRUE(isRated()) << banner().toStdString();
        carrier.setScenario(scenario);
        buy();
    };
    for (const auto &[to, link, end, hasPapers] : rows) {
        buyParcel(to, link);
        expectEnd(end);
        const QByteArray papers = app->log.customsPDF(newest().id)->value_or(QByteArray());
        EXPECT_EQ(papers.startsWith("%PDF"), hasPapers);
        if (hasPapers)
            EXPECT_EQ(processes.lastPrinted(), papers);
        else
            EXPECT_TRUE(processes.lastPrinted().startsWith("^XA")) << "the label printed, no papers did";
        EXPECT_EQ(newest().isIntl, to == londonAddress());
    }
    processes.behave = [](const QString &, const QStringList &arguments) {
        return arguments.contains(u"Laser"_s) ? ProcessOutcome{1, {}, "no such printer\n"} : ProcessOutcome{};
    };
    buyParcel(londonAddress(), {});
    expectEnd(
        u" (FedEx commercial invoice print failed: lpr failed: no such printer — it's needed in the doc pouch)"_s);
    EXPECT_EQ(newest().services, u"No Signature Required, Declared $1860.00"_s);
    EXPECT_EQ(newest().recipient, u"Harriet Ashcombe, 14 Chandos Place, London WC2N 4HS, GB"_s);
}

TEST_F(LabelPurchaseTest, OnlyARejectedPurchaseKeepsTheRates)
{
    rateHome();
    carrier.setScenario({.purchaseFails = true, .purchaseMessages = {u"Insufficient funds."_s}});
    pressBuy();
    EXPECT_EQ(banner(), u"Insufficient funds."_s);
    EXPECT_TRUE(isRated());
    EXPECT_TRUE(app->journal.openPurchases().isEmpty()) << "a refused purchase is closed";

    CarrierScenario refusedPoll = answering("transactions/", 429, "slow down", "GET");
    refusedPoll.queuedReads = 5;
    carrier.setScenario(refusedPoll);
    pressBuy();
    EXPECT_TRUE(errors->entries().first().detail.contains(u", transaction "_s)) << banner().toStdString();
    EXPECT_FALSE(isRated()) << "the carrier had accepted the purchase before it refused the lookup";
    EXPECT_FALSE(screen().busy.value());

    composeAndRate(homeOf(u"Ann"_s));
    carrier.setScenario({.emptyLabelUrl = true});
    buy();
    EXPECT_EQ(banner(), u"Purchase succeeded but no label URL was returned."_s);
    EXPECT_TRUE(errors->entries().first().detail.contains(u"Transaction "_s));
    EXPECT_FALSE(isRated()) << "the next press must not buy it again";
}

namespace {

QByteArray logged; ///< the program's diagnostic output
} // namespace

TEST_F(LabelPurchaseTest, NoFailureLeaksASecret)
{
    const auto former = qInstallMessageHandler(
        [](QtMsgType, const QMessageLogContext &, const QString &text) { logged += text.toUtf8(); });
    run(app->signIn(u"dana"_s, u"canary-password"_s, true));
    const CarrierScenario days[] = {{},
                                    {.badToken = u"Token %1 is unknown."_s.arg(PracticeCarrier::testToken)},
                                    {.dropConnection = true},
                                    {.labelAnswer = LabelAnswer::html},
                                    {.emptyLabelUrl = true}};
    for (const CarrierScenario &day : days) {
        rateHome();
        carrier.setScenario(day);
        buy();
        carrier.setScenario({});
        checkAgain();
    }
    errors->flush();
    qInstallMessageHandler(former);

    QByteArray seen = logged;
    for (QDirIterator files(folder.path(), QDir::Files, QDirIterator::Subdirectories); files.hasNext();)
        seen += contentsOf(files.next());
    for (const FakeProcesses::Call &call : processes.calls())
        seen += call.program.toUtf8() + call.arguments.join(u' ').toUtf8() + call.file;
    for (const auto &[title, text] : prompts.alerts)
        seen += (title + text).toUtf8();
    for (const APIErrorEntry &entry : errors->entries())
        seen += (entry.context + entry.detail).toUtf8();
    EXPECT_TRUE(seen.contains("Eleanor Whitfield") && seen.contains("Buy Label"))
        << "the texts that are searched include alerts and error log";
    EXPECT_FALSE(seen.contains(PracticeCarrier::testToken.toUtf8()) || seen.contains("canary-password"));
}

} // namespace parcelory::test

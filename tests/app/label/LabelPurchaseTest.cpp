#include "app/label/PreparedPurchase.h"
#include "app/purchase/CustomsPapers.h"
#include "app/purchase/PurchaseFlow.h"
#include "app/purchase/PurchaseTexts.h"
#include "compose/Customs.h"
#include "compose/Services.h"
#include "core/ShippoAddress.h"
#include "core/Task.h"
#include "core/ports/ProcessRunner.h"
#include "devices/Zpl.h"
#include "practice/carrier/CarrierScenario.h"
#include "records/ShipmentRecord.h"
#include "support/CarrierDesk.h"
#include "support/LabelDesk.h"
#include "support/Printing.h"
#include "support/RunTask.h"

#include <gmock/gmock.h>

#include <QDir>
#include <QDirIterator>

#include <chrono>
#include <utility>

namespace parcelory::test {
using namespace Qt::StringLiterals;

namespace {

class LabelPurchaseTest : public testing::Test, public LabelDesk {
protected:
    void rateHome()
    {
        screen().service = ServiceOption::signature;
        screen().insuranceValue = u"850.00"_s;
        composeParcel(homeAddress());
        screen().reference = u"48213"_s;
        screen().descriptionText = u"Coins\tand\nnotes"_s;
        run(screen().fetchRates());
        ASSERT_TRUE(screen().selectedRate()) << banner().toStdString();
    }
    void rateAbroad()
    {
        screen().carrier = Carrier::fedex;
        screen().customs = CustomsInfo{CustomsItemType::currency, u"12"_s, u"1860.00"_s, {}};
        composeAndRate(londonAddress());
        ASSERT_TRUE(screen().selectedRate()) << banner().toStdString();
    }
    const ShipmentRecord &newest() { return app->log.records().first(); }
};

} // namespace

TEST_F(LabelPurchaseTest, BuysPrintsLogsAndMakesRoomForTheNextParcel)
{
    rateHome();
    const QString price = screen().selectedRate()->amount;
    buy();
    EXPECT_EQ(banner(), u"Success! Priority Mail to Eleanor Whitfield, $%1. Label sent to ZD421."_s.arg(price));
    EXPECT_EQ(sent("/transactions/").first()["label_file_type"], "ZPLII");
    EXPECT_EQ(sent("/transactions/").first()["metadata"], "KX|US|Eleanor Whitfield|USPS Priority Mail|97301");

    ASSERT_EQ(app->log.records().size(), 1);
    const ShipmentRecord &row = newest();
    EXPECT_EQ(row.carrier, u"USPS"_s);
    EXPECT_EQ(row.service, u"Priority Mail"_s);
    EXPECT_EQ(row.postage, price.toDouble());
    EXPECT_EQ(row.recipient, u"Eleanor Whitfield, 418 Montford Ave, Apt 3B, Asheville NC 28801"_s);
    EXPECT_EQ(row.services, u"Signature Confirmation, Insurance $850.00"_s);
    EXPECT_EQ(row.declaredValue, u"850.00"_s);
    EXPECT_EQ(row.weight, u"1 lb 0.0 oz"_s);
    EXPECT_EQ(row.reference, u"48213"_s);
    EXPECT_EQ(row.descriptionText, u"Coins and notes"_s);
    EXPECT_EQ(row.status, u"PRINTED"_s);
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
    EXPECT_FALSE(screen().selectedRate());
    EXPECT_FALSE(screen().busy.value());
}

TEST_F(LabelPurchaseTest, ABurstOfPressesBuysOneLabel)
{
    rateHome();
    Task<> first = screen().buyAndPrint();
    for (int press = 0; press < 20; ++press)
        pressBuy();
    run(std::move(first));
    pressBuy();
    EXPECT_EQ(sent("/transactions/").size(), 1);
    EXPECT_EQ(app->log.records().size(), 1);
}

TEST_F(LabelPurchaseTest, ALabelThatCouldNotBePrintedIsStillLogged)
{
    const auto failsWith = [&](const QString &reason) {
        EXPECT_TRUE(banner().endsWith(u" (print failed: "_s + reason + u" — use Reprint from the log)"_s))
            << banner().toStdString();
        EXPECT_TRUE(bannerIsWarning());
    };
    rateHome();
    processes.behave = [](const QString &program, const QStringList &) {
        return program.endsWith(u"lpr"_s) ? ProcessOutcome{1, {}, "no such printer"} : ProcessOutcome{};
    };
    buy();
    failsWith(u"lpr failed: no such printer"_s);
    EXPECT_TRUE(*app->log.zpl(newest().id));

    clock.advance(std::chrono::minutes(1));
    rateHome();
    processes.behave = [](const QString &program, const QStringList &) -> ProcessOutcome {
        throw ProcessTimedOut(program);
    };
    buy();
    failsWith(u"the print system did not answer within 30 seconds; the label may still come out"_s);
    EXPECT_EQ(app->log.records().size(), 2);
    EXPECT_FALSE(screen().busy);
    processes.behave = nullptr;
    run(screen().reprintLast());
    EXPECT_EQ(processes.lastPrinted(), Zpl::rotated(**app->log.zpl(newest().id)));

    const std::pair<LabelAnswer, QString> links[] = {{LabelAnswer::expired, u"Shippo HTTP 403: label download"_s},
                                                     {LabelAnswer::xmlError, u"the carrier's file is not a label"_s},
                                                     {LabelAnswer::truncated, u"the label arrived incomplete"_s},
                                                     {LabelAnswer::html, u"the carrier's file is not a label"_s}};
    int rows = 2;
    const QByteArray lastPrinted = processes.lastPrinted();
    for (const auto &[link, reason] : links) {
        clock.advance(std::chrono::minutes(1));
        rateHome();
        carrier.setScenario({.labelAnswer = link});
        buy();
        failsWith(reason);
        EXPECT_EQ(app->log.records().size(), ++rows);
        EXPECT_FALSE(*app->log.zpl(newest().id)) << "an error page must not be kept as a label";
        EXPECT_FALSE(newest().labelURL.isEmpty());
    }
    EXPECT_EQ(processes.lastPrinted(), lastPrinted) << "print tools get labels only";
}

TEST_F(LabelPurchaseTest, ALabelThatChangesThePrinterIsLoggedAndPrintedOnlyOnRequest)
{
    const QByteArray label = "^XA^FDx^FS^JUS^XZ";
    const CarrierScenario changing{.failNext = CarrierFailure{"labels/", 200, "application/zpl", label, 1, ""}};
    bool isLogged = false;
    prompts.whileAsked = [&] { isLogged = (*app->log.zpl(1)).has_value(); };
    rateHome();
    carrier.setScenario(changing);
    buy();
    ASSERT_EQ(prompts.questions.size(), 1);
    EXPECT_TRUE(prompts.questions[0].text.contains(u"it contains ^JUS, which"_s));
    EXPECT_EQ(prompts.questions[0].choices.value(prompts.questions[0].safeChoice), u"Don't Print"_s);
    EXPECT_TRUE(isLogged) << "the question may stay for an hour";
    EXPECT_TRUE(banner().endsWith(u" (print failed: held, because it contains ^JUS, which can change the printer for "
                                  "good — use Reprint from the log)"_s))
        << banner().toStdString();
    EXPECT_EQ(processes.lastPrinted(), "");
    EXPECT_EQ(**app->log.zpl(newest().id), label);

    run(screen().reprintLast());
    EXPECT_EQ(prompts.questions.size(), 2);
    EXPECT_EQ(processes.lastPrinted(), "");
    prompts.answer = 1;
    run(screen().reprintLast());
    EXPECT_EQ(processes.lastPrinted(), Zpl::rotated(label));
    clock.advance(std::chrono::minutes(1));
    rateHome();
    carrier.setScenario(changing);
    buy();
    EXPECT_TRUE(banner().endsWith(u"Label sent to ZD421."_s)) << banner().toStdString();
    EXPECT_EQ(prompts.questions.size(), 4);
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
    const PurchaseResult result = runTask(
        flow.complete(sale.entry, sale.transaction, {.printsLabel = true, .printsPapers = true, .drawn = drawn}),
        &clock);
    EXPECT_TRUE(result.label.isPrinted && result.isLogged);
    EXPECT_FALSE(result.isComplete());
    EXPECT_TRUE(PurchaseTexts::successLine(result).endsWith(u" (Invoice print failed: no fonts)"_s))
        << PurchaseTexts::successLine(result).toStdString();
    EXPECT_FALSE(*app->log.customsPDF(newest().id));
}

TEST_F(LabelPurchaseTest, AFedexParcelAbroadBringsItsCustomsDocument)
{
    preferences.setValue(u"printer.documentQueue"_s, u"Laser"_s);
    rateAbroad();
    buy();
    EXPECT_TRUE(banner().endsWith(u"Label sent to ZD421."_s)) << banner().toStdString();
    EXPECT_TRUE(app->log.customsPDF(newest().id)->value().startsWith("%PDF"));
    EXPECT_TRUE(newest().isIntl);
    EXPECT_EQ(newest().services, u"No Signature Required, Declared $1860.00"_s);
    EXPECT_EQ(newest().recipient, u"Harriet Ashcombe, 14 Chandos Place, London WC2N 4HS, GB"_s);
    EXPECT_EQ(processes.lastPrinted(), *app->log.customsPDF(newest().id));

    clock.advance(std::chrono::minutes(1));
    preferences.setValue(u"printer.documentQueue"_s, QString());
    rateAbroad();
    CarrierScenario deadLink;
    deadLink.failNext = CarrierFailure{"documents", 404, "text/html", "gone", 1, ""};
    carrier.setScenario(deadLink);
    buy();
    EXPECT_TRUE(banner().endsWith(u" (FedEx commercial invoice download failed: Shippo HTTP 404: label download)"_s))
        << banner().toStdString();
    EXPECT_EQ(app->log.records().size(), 2);
    EXPECT_FALSE(*app->log.customsPDF(newest().id));

    clock.advance(std::chrono::minutes(1));
    preferences.setValue(u"printer.documentQueue"_s, u"Laser"_s);
    processes.behave = [](const QString &, const QStringList &arguments) {
        return arguments.contains(u"Laser"_s) ? ProcessOutcome{1, {}, "no such printer\n"} : ProcessOutcome{};
    };
    rateAbroad();
    buy();
    EXPECT_TRUE(banner().endsWith(u" (FedEx commercial invoice print failed: lpr failed: no such printer — it's needed "
                                  "in the doc pouch)"_s))
        << banner().toStdString();
}

TEST_F(LabelPurchaseTest, APurchaseWithoutALabelIsInTheErrorLog)
{
    rateHome();
    carrier.setScenario({.emptyLabelUrl = true});
    buy();
    EXPECT_EQ(banner(), u"Purchase succeeded but no label URL was returned."_s);
    EXPECT_TRUE(app->log.records().isEmpty());
    EXPECT_TRUE(errors->entries().first().detail.contains(u"Transaction "_s));
    EXPECT_FALSE(screen().selectedRate()) << "the next press must not buy it again";
}

TEST_F(LabelPurchaseTest, ARejectedPurchaseKeepsTheRatesAndAnUnresolvedPurchaseDoesNot)
{
    rateHome();
    carrier.setScenario({.purchaseFails = true, .purchaseMessages = {u"Insufficient funds."_s}});
    pressBuy();
    EXPECT_EQ(banner(), u"Insufficient funds."_s);
    EXPECT_TRUE(screen().selectedRate());
    EXPECT_TRUE(app->journal.openPurchases().isEmpty()) << "a refused purchase is closed";

    CarrierScenario refusedPoll{.queuedReads = 5};
    refusedPoll.failNext = CarrierFailure{"transactions/", 429, "text/plain", "slow down", 1, "GET"};
    carrier.setScenario(refusedPoll);
    pressBuy();
    EXPECT_TRUE(errors->entries().first().detail.contains(u", transaction "_s)) << banner().toStdString();
    EXPECT_FALSE(screen().selectedRate()) << "the carrier had accepted the purchase before it refused the lookup";
    EXPECT_FALSE(screen().busy.value());
}

TEST_F(LabelPurchaseTest, ARowThatCannotBeWrittenIsReportedWithItsNumbers)
{
    rateHome();
    QDir(folder.path()).mkdir(u"mailing_log.sqlite-journal"_s); // SQLite cannot create its journal
    buy();
    EXPECT_TRUE(banner().contains(u"the mailing log could not be written — note the tracking number "_s))
        << banner().toStdString();
    ASSERT_FALSE(errors->entries().isEmpty());
    EXPECT_TRUE(errors->entries().first().detail.contains(u"tracking 9210890175547700"_s));
}

TEST_F(LabelPurchaseTest, WhatTheClerkTypesDuringAPurchaseIsKept)
{
    rateHome();
    Task<> buying = screen().buyAndPrint();
    app->draftTo = londonAddress();
    run(std::move(buying));
    EXPECT_EQ(app->draftTo.value(), londonAddress());
    EXPECT_TRUE(newest().recipient.startsWith(u"Eleanor Whitfield"_s));
    EXPECT_FALSE(newest().isIntl);
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
        run(screen().purchases.checkAgain());
        runUntil([this] { return !screen().purchases.checking; }); // a check may have started by itself
    }
    errors->flush();
    qInstallMessageHandler(former);

    QByteArray seen = logged;
    for (QDirIterator files(folder.path(), QDir::Files, QDirIterator::Subdirectories); files.hasNext();) {
        QFile file(files.next());
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        seen += file.readAll();
    }
    for (const FakeProcesses::Call &call : processes.calls())
        seen += call.program.toUtf8() + call.arguments.join(u' ').toUtf8() + call.file;
    for (const auto &[title, text] : prompts.alerts)
        seen += (title + text).toUtf8();
    for (const APIErrorEntry &entry : errors->entries())
        seen += (entry.context + entry.detail).toUtf8();
    EXPECT_TRUE(seen.contains("Eleanor Whitfield") && seen.contains("Buy Label"))
        << "the texts that are searched include alerts and error log";
    EXPECT_FALSE(seen.contains(PracticeCarrier::testToken.toUtf8()));
    EXPECT_FALSE(seen.contains("canary-password"));
}

} // namespace parcelory::test

#include "app/scanform/ScanFormScreen.h"
#include "carrier/ShippoRecords.h"
#include "core/IsoDate.h"
#include "core/Sqlite.h"
#include "practice/carrier/CarrierScenario.h"
#include "records/ScanForms.h"
#include "records/ShipmentRecord.h"
#include "support/CarrierDesk.h"
#include "support/LogFile.h"
#include "support/MailingLogDesk.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace parcelory::test {
using namespace Qt::StringLiterals;

namespace {

class ScanFormFlowTest : public MailingLogDesk {};

} // namespace

TEST_F(ScanFormFlowTest, AScanFormIsMadeOfTodaysLabelsOfTheActiveKeysMode)
{
    const auto make = [this] { run(app->createScanForm(deskAddress())); };
    ShipmentRecord live = shipmentTo(u"Ana"_s, 1);
    live.createdAt = clock.now();
    logged(live);
    ShipmentRecord yesterday = live;
    yesterday.testMode = true;
    yesterday.createdAt = clock.now().date().startOfDay().addMSecs(-1);
    logged(yesterday);
    carrier.clearRequests();
    make();
    EXPECT_EQ(carrier.requests().size(), 0);
    EXPECT_EQ(app->scanFormStatus.value(), u"No labels printed today — nothing to manifest."_s);
    EXPECT_TRUE(prompts.alerts.last().second.startsWith(u"No TEST labels have been printed today"_s));

    const ShipmentRecord first = bought();
    make();
    EXPECT_TRUE(prompts.questions.value(0).text.contains(u"Ana"_s)) << "Ana's label will not be on the form";
    EXPECT_EQ(app->scanFormStatus.value(), u"No labels printed today — nothing to manifest."_s) << "the clerk cancels";
    EXPECT_EQ(requestsTo("/manifests"), 0);
    prompts.answer = 1;
    make();
    EXPECT_EQ(app->scanFormStatus.value(), u"SCAN form ready: 1 label — hand one printed copy to the carrier."_s);
    EXPECT_TRUE(app->scanFormPDF.value()->startsWith("%PDF"));
    EXPECT_EQ(app->scanForms.finished(9)->value(0).labels, 1);
    EXPECT_EQ(app->scanFormOpenTick.value(), 1);
    bought();
    const std::pair<CarrierScenario, QString> rows[] = {
        {{.manifestDocuments = 0}, u"SCAN form created but no document came back."_s},
        {{.failNext = CarrierFailure{"carrier_accounts", 200, "application/json", R"({"results": []})", 1, ""}},
         u"No USPS carrier account found on this Shippo account."_s},
    };
    for (const auto &[scenario, text] : rows) {
        carrier.setScenario(scenario);
        make();
        EXPECT_EQ(app->scanFormStatus.value(), text);
        EXPECT_FALSE(app->scanFormBusy);
    }
    EXPECT_EQ(app->scanFormOpenTick.value(), 1);

    const ShipmentRecord row = **app->log.find(first);
    run(log.refund(row));
    EXPECT_TRUE(prompts.questions.last().text.contains(u"This label is on the SCAN form of "_s));
}

TEST_F(ScanFormFlowTest, AScanFormWhoseResponseIsLostIsFetchedWithTheNextPress)
{
    const auto make = [this] { run(app->createScanForm(deskAddress())); };
    const ShipmentRecord label = bought();
    carrier.setScenario({.droppedPath = "manifests", .manifestDocuments = 2});
    make();
    EXPECT_EQ(app->scanForms.underWay(true)->size(), 1);
    EXPECT_FALSE(app->scanFormPDF.value());
    carrier.setScenario({.labelAnswer = LabelAnswer::normal});
    carrier.clearRequests();
    make();
    EXPECT_EQ(app->scanFormStatus.value(), u"SCAN form ready: 1 label — hand one printed copy to the carrier."_s);
    EXPECT_EQ(app->scanFormOpenTick.value(), 1);
    EXPECT_EQ(sent("/manifests/").size(), 0) << "the form was not made twice";
    const ScanForm form = app->scanForms.finished(9)->value(0);
    EXPECT_EQ(form.transactions, QStringList(label.transactionID));
    EXPECT_EQ(app->scanForms.documents(form.id)->size(), 2);

    // The carrier never received this request, which counts as certain only after a minute.
    bought();
    prompts.answer = 1; // the other label is on the first form
    answer("manifests", {}, 500);
    make();
    make();
    EXPECT_TRUE(app->scanFormStatus.value().startsWith(u"We don't know yet if the SCAN form of "_s));
    clock.advance(std::chrono::seconds(61));
    make();
    EXPECT_EQ(app->scanForms.finished(9)->size(), 2);
    bought();
    answer("manifests", R"({"detail": "No transactions exist"})", 404);
    make();
    EXPECT_EQ(app->scanFormStatus.value(), u"detail: No transactions exist"_s);
    EXPECT_TRUE(app->scanForms.underWay(true)->isEmpty());
}

TEST_F(ScanFormFlowTest, OnlyItsOwnFormAnswersALostRequest)
{
    prompts.answer = 1;
    const QString own = bought().transactionID;
    run(app->createScanForm(deskAddress()));
    const QString known = app->scanForms.finished(9)->value(0).manifestId;
    const auto listed = [](const QString &id, const QString &status, const QDateTime &created, const QString &label) {
        return u"{\"object_id\": \"%1\", \"status\": \"%2\", \"object_created\": \"%3\", \"transactions\": [%4]}"_s.arg(
            id, status, isoUtc(created), label.isEmpty() ? QString() : u'"' + label + u'"');
    };
    const QDateTime now = clock.now();
    const std::pair<QString, bool> rows[] = {{listed(u"m9"_s, u"SUCCESS"_s, now, own), true},
                                             {listed(u"m9"_s, u"QUEUED"_s, now.addSecs(-299), {}), true},
                                             {listed(u"m9"_s, u"SUCCESS"_s, now, u"other"_s), false},
                                             {listed(u"m9"_s, u"SUCCESS"_s, now.addSecs(-301), own), false},
                                             {listed(known, u"SUCCESS"_s, now, own), false},
                                             {u"no manifest"_s, false}};
    for (const auto &[body, isAskedFor] : rows) {
        answer("manifests", {}, 500);
        run(app->createScanForm(deskAddress()));
        ASSERT_EQ(app->scanForms.underWay(true)->size(), 1);
        carrier.clearRequests();
        answer("manifests", QString(u"{\"results\": ["_s + body + u"]}"_s).toUtf8());
        run(app->createScanForm(deskAddress()));
        EXPECT_EQ(requestsTo("/manifests/m9") > 0, isAskedFor) << body.toStdString();
        EXPECT_EQ(requestsTo("/manifests/" + known.toUtf8()), 0);
        EXPECT_EQ(sent("/manifests/").size(), 0) << "no second form while the first may exist";
        for (const ScanForm &form : *app->scanForms.underWay(true))
            EXPECT_TRUE(app->scanForms.remove(form.id));
    }
}

TEST_F(ScanFormFlowTest, ALostFormIsFetchedWithTheRefundsAndYesterdaysDoesNotReplaceTodays)
{
    prompts.answer = 1;
    bought();
    carrier.setScenario({.droppedPath = "manifests"});
    run(app->createScanForm(deskAddress()));
    carrier.setScenario({});
    run(app->syncRefundStatuses());
    EXPECT_EQ(app->scanForms.finished(9)->size(), 1);
    EXPECT_EQ(app->scanFormOpenTick.value(), 0) << "the clerk did not ask for it now";

    for (const bool isFetched : {true, false}) { // of yesterday
        bought();
        carrier.setScenario({.droppedPath = "manifests"});
        run(app->createScanForm(deskAddress()));
        clock.start = clock.start.addDays(1);
        bought();
        carrier.setScenario({});
        if (!isFetched)
            answer("manifests", {}, 500);
        carrier.clearRequests();
        run(app->createScanForm(deskAddress()));
        EXPECT_EQ(sent("/manifests/").size(), 1) << app->scanFormStatus.value().toStdString();
        EXPECT_TRUE(app->scanFormStatus.value().startsWith(u"SCAN form ready: 1 label"_s))
            << app->scanFormStatus.value().toStdString();
    }
}

TEST_F(ScanFormFlowTest, EveryPageIsCheckedStoredAndPrinted)
{
    prompts.answer = 1;
    preferences.setValue(u"printer.documentQueue"_s, u"Laser"_s);
    const ShipmentRecord label = bought();
    carrier.setScenario({.manifestDocuments = 2});
    run(app->createScanForm(deskAddress()));
    ScanFormScreen form(*app);
    run(form.load());
    const qsizetype before = processes.calls().size();
    run(form.print());
    EXPECT_EQ(std::ranges::count_if(processes.calls().sliced(before),
                                    [](const auto &call) { return call.program.endsWith(u"/lpr"_s); }),
              2);

    const auto made = runTask(app->shippo.newestManifests(), &clock).value(0);
    const QString links = u"\"%1\", \"%2\""_s.arg(made.documents->first(), label.labelURL); // the second is no PDF
    answer("manifests/",
           (u"{\"object_id\": \"m2\", \"status\": \"SUCCESS\", \"documents\": ["_s + links + u"]}"_s).toUtf8(), 201);
    run(app->createScanForm(deskAddress()));
    EXPECT_TRUE(
        app->scanFormStatus.value().endsWith(u" Page set 2 of 2 could not be downloaded: press SCAN Form again."_s))
        << app->scanFormStatus.value().toStdString();
    EXPECT_EQ(app->scanForms.finished(9)->size(), 1);
    EXPECT_TRUE(app->scanForms.remove(app->scanForms.underWay(true)->value(0).id));

    EXPECT_TRUE(
        Database(path(u"mailing_log.sqlite"_s))
            .exec("CREATE TRIGGER refuse BEFORE INSERT ON scan_form_documents BEGIN SELECT RAISE(ABORT, 'full'); END"));
    bought();
    carrier.setScenario({});
    run(app->createScanForm(deskAddress()));
    EXPECT_TRUE(app->scanFormStatus.value().startsWith(u"SCAN form ready"_s)) << "it can be printed now";
    EXPECT_EQ(errors->entries().first().detail, u"The mailing log could not be written — full."_s);
}

TEST_F(ScanFormFlowTest, AScanFormIsForgottenOnlyIfTheCarrierCannotHaveMadeIt)
{
    prompts.answer = 1;
    const auto failure = [](const QByteArray &path, int status, const QByteArray &method) {
        return CarrierFailure{path, status, "application/json", "{}", 1, method};
    };
    const std::pair<CarrierScenario, qsizetype> rows[] = {
        {{.failNext = failure("manifests/", 422, "POST")}, 0},
        {{.manifestFails = true}, 0},
        {{.failNext = failure("manifests/", 409, "POST")}, 1},
        {{.failNext = failure("manifests/", 408, "POST")}, 1},
        // The form was accepted; only its state could not be read.
        {{.failNext = failure("manifests/", 404, "GET"), .manifestQueuedReads = 2}, 1},
        {{.manifestQueuedReads = 99}, 1},
    };
    for (const auto &[scenario, open] : rows) {
        carrier.setScenario({});
        bought();
        carrier.setScenario(scenario);
        run(app->createScanForm(deskAddress()));
        const QList<ScanForm> underWay = *app->scanForms.underWay(true);
        EXPECT_EQ(underWay.size(), open) << app->scanFormStatus.value().toStdString();
        for (const ScanForm &form : underWay)
            EXPECT_TRUE(app->scanForms.remove(form.id));
    }
}

TEST_F(ScanFormFlowTest, OnlyAFormThatHoldsTheDesksLabelsIsTheDesks)
{
    const auto make = [this] { run(app->createScanForm(deskAddress())); };
    bought();
    carrier.setScenario({.failNext = CarrierFailure{"manifests/", 500, "text/plain", "", 1, "POST"}});
    make(); // the carrier never makes this form
    ASSERT_EQ(app->scanForms.underWay(true)->size(), 1);
    clock.advance(std::chrono::seconds(61));
    const QByteArray now = clock.now().toUTC().toString(Qt::ISODate).toUtf8();
    carrier.setScenario(
        {.failNext = CarrierFailure{"manifests", 200, "application/json",
                                    R"({"results": [{"object_id": "other", "status": "SUCCESS", "object_created": ")" +
                                        now + R"(", "documents": ["http://127.0.0.1:1/x.pdf"], "transactions": []}]})",
                                    1, "GET"}});
    make();
    EXPECT_EQ(app->scanFormStatus.value(), u"SCAN form ready: 1 label — hand one printed copy to the carrier."_s);
    EXPECT_EQ(sent("/manifests/").size(), 2) << "another desk's form is not taken for ours";
}

TEST_F(ScanFormFlowTest, AnInactiveAccountIsUsedOnlyIfThereIsNoOther)
{
    const QByteArray inactive = R"({"object_id": "old", "carrier": "usps", "active": false})",
                     active = R"({"object_id": "new", "carrier": "usps", "active": true})";
    bought();
    for (const auto &[accounts, used] : {std::pair(inactive + ',' + active, "new"), std::pair(inactive, "old")}) {
        answer("carrier_accounts", R"({"results": [)" + accounts + "]}");
        run(app->createScanForm(deskAddress()));
        EXPECT_EQ(sent("/manifests/").last()["carrier_account"], used);
    }
}

TEST_F(ScanFormFlowTest, AListThatCannotBeReadBlocksNoFormForLongerThanAMinute)
{
    const auto make = [this] { run(app->createScanForm(deskAddress())); };
    bought();
    carrier.setScenario({.failNext = CarrierFailure{"manifests/", 500, "text/plain", "", 1, "POST"}});
    make();
    const auto refuseList = [this] {
        carrier.setScenario({.failNext = CarrierFailure{"manifests", 404, "text/plain", "", 1, "GET"}});
    };
    refuseList();
    make();
    EXPECT_EQ(app->scanFormPDF.value(), std::nullopt);
    clock.advance(std::chrono::seconds(61));
    refuseList();
    make();
    EXPECT_TRUE(app->scanFormPDF.value()) << app->scanFormStatus.value().toStdString();
}

TEST_F(ScanFormFlowTest, ASecondDocumentThatFailsHidesNotTheFirst)
{
    const auto make = [this] { run(app->createScanForm(deskAddress())); };
    bought();
    carrier.setScenario({.manifestDocuments = 2});
    const auto secondFails = [this] {
        CarrierScenario scenario{.manifestDocuments = 2};
        scenario.failNext = CarrierFailure{"documents/", 404, "text/html", "gone", 1, "", 1};
        carrier.setScenario(scenario);
    };
    secondFails();
    make();
    EXPECT_TRUE(app->scanFormPDF.value());
    EXPECT_EQ(app->scanFormOpenTick.value(), 1);
    EXPECT_TRUE(
        app->scanFormStatus.value().endsWith(u"Page set 2 of 2 could not be downloaded: press SCAN Form again."_s))
        << app->scanFormStatus.value().toStdString();
    EXPECT_FALSE(app->scanFormComplete);
    EXPECT_EQ(app->scanForms.underWay(true)->size(), 1) << "the next press fetches the rest";
    carrier.setScenario({.manifestDocuments = 2});
    make();
    EXPECT_TRUE(app->scanForms.underWay(true)->isEmpty());
    EXPECT_TRUE(app->scanFormComplete);
}

TEST_F(ScanFormFlowTest, AFormThatEndsAsAnErrorEndsTheAttempt)
{
    const auto make = [this] { run(app->createScanForm(deskAddress())); };
    bought();
    carrier.setScenario({.manifestQueuedReads = 99});
    make();
    ASSERT_EQ(app->scanForms.underWay(true)->size(), 1);
    const QString id = app->scanForms.underWay(true)->first().manifestId;
    ASSERT_FALSE(id.isEmpty());
    carrier.setScenario(
        {.failNext = CarrierFailure{"manifests/" + id.toUtf8(), 200, "application/json",
                                    R"({"object_id": ")" + id.toUtf8() + R"(", "status": "ERROR"})", 1, "GET"}});
    prompts.answer = 1;
    make();
    EXPECT_TRUE(app->scanForms.underWay(true)->isEmpty()) << app->scanFormStatus.value().toStdString();
    EXPECT_TRUE(app->scanForms.finished(9)->isEmpty());
}

} // namespace parcelory::test

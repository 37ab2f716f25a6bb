#include "core/IsoDate.h"
#include "support/AppTest.h"

namespace parcelory::test {
namespace {

class ScanFormFlowTest : public MailingLogDesk {
protected:
    void make() { run(app->createScanForm(deskAddress())); }
    /// The carrier meets this while the form is made.
    void make(const CarrierScenario &scenario)
    {
        carrier.setScenario(scenario);
        make();
    }
    QString status() { return app->scanFormStatus; }
    qsizetype finished() { return app->scanForms.finished(9)->size(); }
    QList<ScanForm> underWay() { return *app->scanForms.underWay(true); }
    void forgetUnderWay()
    {
        for (const ScanForm &form : underWay())
            EXPECT_TRUE(app->scanForms.remove(form.id));
    }
    const QString ready = u"SCAN form ready: 1 label — hand one printed copy to the carrier."_s;
};

} // namespace

TEST_F(ScanFormFlowTest, AScanFormIsMadeOfTodaysLabelsOfTheActiveKeysMode)
{
    logged({.createdAt = clock.now(), .recipient = u"Ana"_s});
    logged({.createdAt = clock.now().date().startOfDay().addMSecs(-1), .testMode = true}); // yesterday
    carrier.clearRequests();
    make();
    EXPECT_EQ(carrier.requests().size(), 0);
    EXPECT_EQ(status(), u"No labels printed today — nothing to manifest."_s);
    EXPECT_TRUE(prompts.alerts.last().second.startsWith(u"No TEST labels have been printed today"_s));

    const ShipmentRecord first = bought();
    make();
    EXPECT_TRUE(prompts.questions.value(0).text.contains(u"Ana"_s)) << "Ana's label will not be on the form";
    EXPECT_EQ(status(), u"No labels printed today — nothing to manifest."_s) << "the clerk cancels";
    EXPECT_EQ(requestsTo("/manifests"), 0);
    prompts.answer = 1;
    make();
    EXPECT_EQ(status(), ready);
    EXPECT_TRUE(app->scanFormPDF.value()->startsWith("%PDF"));
    EXPECT_EQ(app->scanForms.finished(9)->value(0).labels, 1);
    EXPECT_EQ(app->scanFormOpenTick.value(), 1);
    bought();
    const std::pair<CarrierScenario, QString> rows[] = {
        {{.manifestDocuments = 0}, u"SCAN form created but no document came back."_s},
        {answering("carrier_accounts", 200, R"({"results": []})"),
         u"No USPS carrier account found on this Shippo account."_s},
    };
    for (const auto &[scenario, text] : rows) {
        make(scenario);
        EXPECT_EQ(status(), text);
        EXPECT_FALSE(app->scanFormBusy);
    }
    EXPECT_EQ(app->scanFormOpenTick.value(), 1);

    run(log.refund(**app->log.find(first)));
    EXPECT_TRUE(prompts.questions.last().text.contains(u"This label is on the SCAN form of "_s));
}

TEST_F(ScanFormFlowTest, AClosedAlertLeavesTheNextFormBusy)
{
    std::optional<HeldPool> pool;
    bool isFirst = true;
    prompts.whileAlerted = [&] { // End of Day is open, too
        if (std::exchange(isFirst, false)) {
            pool.emplace();
            spawn([this] { return app->createScanForm(deskAddress()); });
        }
    };
    make();
    EXPECT_TRUE(app->scanFormBusy);
    pool.reset();
    runUntil([this] { return !app->scanFormBusy; });
}

TEST_F(ScanFormFlowTest, SaysWhichLabelsAreNotOnTheForm)
{
    logged({.createdAt = clock.now(), .carrier = u"FedEx"_s, .recipient = u"Ana"_s, .testMode = true});
    make();
    EXPECT_TRUE(prompts.questions.last().text.startsWith(u"Today's labels are not USPS labels."_s));
    EXPECT_EQ(requestsTo("/manifests"), 0);
    prompts.answer = 1;
    bought();
    make();
    EXPECT_EQ(status(), u"SCAN form ready: 2 labels — hand one printed copy to the carrier. The carrier did not put 1 "
                        "of them on the form."_s);
    ScanFormScreen form(*app);
    run(form.load());
    EXPECT_EQ(form.labelsText(),
              u"1 label on this form. The carrier did not put 1 of the day's 2 labels on the form."_s);
}

TEST_F(ScanFormFlowTest, CountsAnOlderLabelOnTheFormForNoneOfTheDays)
{
    bought();
    clock.advance(24h);
    bought();
    logged({.createdAt = clock.now(), .carrier = u"FedEx"_s, .status = u"REFUNDED"_s, .testMode = true});
    make();
    EXPECT_TRUE(prompts.questions.isEmpty()) << "a FedEx label is never on a SCAN form, refunded or not";
    ScanFormScreen form(*app);
    run(form.load());
    EXPECT_EQ(form.labelsText(),
              u"2 labels on this form. The carrier did not put 1 of the day's 2 labels on the form."_s);
}

TEST_F(ScanFormFlowTest, AScanFormWhoseResponseIsLostIsFetchedWithTheNextPress)
{
    const ShipmentRecord label = bought();
    make({.droppedPath = "manifests", .manifestDocuments = 2});
    EXPECT_EQ(underWay().size(), 1);
    EXPECT_FALSE(app->scanFormPDF.value());
    carrier.setScenario({.labelAnswer = LabelAnswer::normal});
    carrier.clearRequests();
    make();
    EXPECT_EQ(status(), ready);
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
    EXPECT_TRUE(status().startsWith(u"We don't know yet if the SCAN form of "_s));
    clock.advance(61s);
    make();
    EXPECT_EQ(finished(), 2);
    bought();
    answer("manifests", R"({"detail": "No transactions exist"})", 404);
    make();
    EXPECT_EQ(status(), u"detail: No transactions exist"_s);
    EXPECT_TRUE(underWay().isEmpty());
}

TEST_F(ScanFormFlowTest, OnlyItsOwnFormAnswersALostRequest)
{
    prompts.answer = 1;
    const QByteArray own = bought().transactionID.toLatin1();
    make();
    const QByteArray known = app->scanForms.finished(9)->value(0).manifestId.toLatin1();
    const QDateTime now = clock.now();
    for (const Json &row : table(u"after-sale"_s, "lost SCAN forms")) {
        answer("manifests", {}, 500);
        make();
        ASSERT_EQ(underWay().size(), 1);
        carrier.clearRequests();
        const QByteArray form = body(row[0])
                                    .replace("OWN", own)
                                    .replace("FORMER", known)
                                    .replace("CREATED", isoUtc(now.addSecs(row[1])).toLatin1());
        answer("manifests", "{\"results\": [" + form + "]}");
        make();
        EXPECT_EQ(requestsTo("/manifests/m9") > 0, row[2].get<bool>()) << row;
        EXPECT_EQ(requestsTo("/manifests/" + known), 0);
        EXPECT_EQ(sent("/manifests/").size(), 0) << "no second form while the first may exist";
        forgetUnderWay();
    }
}

TEST_F(ScanFormFlowTest, ALostFormIsFetchedWithTheRefundsAndYesterdaysDoesNotReplaceTodays)
{
    prompts.answer = 1;
    bought();
    make({.droppedPath = "manifests"});
    carrier.setScenario({});
    run(app->syncRefundStatuses());
    EXPECT_EQ(finished(), 1);
    EXPECT_EQ(app->scanFormOpenTick.value(), 0) << "the clerk did not ask for it now";

    for (const bool isFetched : {true, false}) { // of yesterday
        bought();
        make({.droppedPath = "manifests"});
        QString shown = app->scanFormNews();
        EXPECT_EQ(shown, status());
        const auto view = QObject::connect(app.get(), &AppState::changed, [&] { shown = app->scanFormNews(); });
        clock.advance(std::chrono::hours(24));
        EXPECT_EQ(shown, QString()) << "yesterday's news goes by itself";
        QObject::disconnect(view);
        bought();
        carrier.setScenario({});
        if (!isFetched)
            answer("manifests", {}, 500);
        carrier.clearRequests();
        make();
        EXPECT_EQ(sent("/manifests/").size(), 1) << status().toStdString();
        EXPECT_TRUE(status().startsWith(u"SCAN form ready: 1 label"_s)) << status().toStdString();
    }
}

TEST_F(ScanFormFlowTest, EveryPageIsCheckedStoredAndPrinted)
{
    prompts.answer = 1;
    preferences.setValue(u"printer.documentQueue"_s, u"Laser"_s);
    for (const auto &[http, document] : {std::pair(404, "gone"), std::pair(200, "no PDF")}) {
        bought();
        const int shown = app->scanFormOpenTick;
        const qsizetype before = finished();
        CarrierScenario scenario = answering("documents/", http, document);
        scenario.failNext->after = 1;
        scenario.manifestDocuments = 2;
        make(scenario);
        EXPECT_TRUE(app->scanFormPDF.value()) << "the first page is not hidden";
        EXPECT_EQ(app->scanFormOpenTick.value(), shown + 1);
        EXPECT_TRUE(status().endsWith(u" Part 2 of 2 of the form didn't download. Press SCAN Form again."_s))
            << status().toStdString();
        EXPECT_FALSE(app->scanFormComplete);
        EXPECT_EQ(underWay().size(), 1) << "the next press fetches the rest";
        EXPECT_EQ(finished(), before);
        make({.manifestDocuments = 2});
        EXPECT_TRUE(underWay().isEmpty() && app->scanFormComplete);
    }
    ScanFormScreen form(*app);
    run(form.load());
    const qsizetype before = printJobs(processes);
    run(form.print());
    EXPECT_EQ(printJobs(processes), before + 2);

    EXPECT_TRUE(
        Database(path(u"mailing_log.sqlite"_s))
            .exec("CREATE TRIGGER refuse BEFORE INSERT ON scan_form_documents BEGIN SELECT RAISE(ABORT, 'full'); END"));
    bought();
    make({});
    EXPECT_TRUE(status().startsWith(u"SCAN form ready"_s)) << "it can be printed now";
    EXPECT_EQ(errors->entries().first().detail, u"The mailing log could not be written — full."_s);
}

TEST_F(ScanFormFlowTest, AScanFormIsForgottenOnlyIfTheCarrierCannotHaveMadeIt)
{
    prompts.answer = 1;
    CarrierScenario acceptedButUnread = answering("manifests/", 404, "{}", "GET");
    acceptedButUnread.manifestQueuedReads = 2;
    const std::pair<CarrierScenario, qsizetype> rows[] = {
        {answering("manifests/", 422, "{}", "POST"), 0},
        {{.manifestFails = true}, 0},
        {answering("manifests/", 409, "{}", "POST"), 1},
        {answering("manifests/", 408, "{}", "POST"), 1},
        {acceptedButUnread, 1},
        {{.manifestQueuedReads = 99}, 1},
    };
    for (const auto &[scenario, open] : rows) {
        carrier.setScenario({});
        bought();
        forgetUnderWay();
        make(scenario);
        EXPECT_EQ(underWay().size(), open) << status().toStdString();
    }
    const QByteArray id = underWay().value(0).manifestId.toUtf8();
    ASSERT_FALSE(id.isEmpty());
    const qsizetype before = finished();
    make(answering("manifests/" + id, 200, R"({"object_id": ")" + id + R"(", "status": "ERROR"})", "GET"));
    EXPECT_TRUE(underWay().isEmpty()) << "a form that ends as an error ends the attempt";
    EXPECT_EQ(finished(), before);
    EXPECT_FALSE(*app->scanForms.formWith(log.records().first().transactionID)) << "its labels are on no form";
}

TEST_F(ScanFormFlowTest, AnInactiveAccountIsUsedOnlyIfThereIsNoOther)
{
    const QByteArray inactive = R"({"object_id": "old", "carrier": "usps", "active": false})",
                     active = R"({"object_id": "new", "carrier": "usps", "active": true})";
    bought();
    for (const auto &[accounts, used] : {std::pair(inactive + ',' + active, "new"), std::pair(inactive, "old")}) {
        answer("carrier_accounts", R"({"results": [)" + accounts + "]}");
        make();
        EXPECT_EQ(sent("/manifests/").last()["carrier_account"], used);
    }
}

TEST_F(ScanFormFlowTest, AListThatCannotBeReadBlocksNoFormForLongerThanAMinute)
{
    bought();
    make(answering("manifests/", 500, {}, "POST"));
    for (const bool isLate : {false, true}) {
        clock.advance(isLate ? 61s : 0s);
        make(answering("manifests", 404, {}, "GET"));
        EXPECT_EQ(app->scanFormPDF.value().has_value(), isLate) << status().toStdString();
    }
}

} // namespace parcelory::test

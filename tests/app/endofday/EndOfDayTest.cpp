#include "app/endofday/DayExport.h"
#include "app/endofday/DayTexts.h"
#include "app/endofday/EndOfDayScreen.h"
#include "support/AppTest.h"

namespace parcelory::test {
namespace {

TEST(AccountDifferences, EveryLabelThatDiffersIsNamedOnce)
{
    const QDateTime noon(QDate(2026, 11, 20), QTime(12, 0));
    const QStringList kinds = {u"boughtElsewhere"_s, u"notInAccount"_s, u"otherAmount"_s, u"refundedThere"_s,
                               u"refundedHere"_s};
    for (const Json &row : table(u"end-of-day"_s, "differences")) {
        SCOPED_TRACE(row);
        const QString here = text(row[0]), there = text(row[2]), special = row.size() > 6 ? text(row[6]) : QString();
        const QDateTime bought = noon.addSecs(60 * row[4].get<int>());
        DeskListing desk;
        AccountListing account{.entries = {}, .askedAt = noon, .isCut = special == u"the account's list is cut"};
        if (!here.isEmpty())
            desk.rows +=
                {.id = 5, .createdAt = bought, .postage = row[1], .transactionID = transactionId(), .status = here};
        if (special == u"a row of another day")
            desk.known += transactionId();
        if (special != u"refund not asked here")
            desk.refundsAsked.insert(transactionId(), special == u"refund asked later" ? noon : bought);
        if (!there.isEmpty())
            account.entries += {.id = transactionId(), .date = bought, .amount = row[3], .status = there};
        const auto found = differencesOf(noon.date(), desk, account);
        ASSERT_EQ(found.size(), row[5].is_null() ? 0 : 1);
        if (found.isEmpty())
            continue;
        EXPECT_EQ(found.first().kind, DifferenceKind(kinds.indexOf(text(row[5]))));
        EXPECT_EQ(found.first().row, here.isEmpty() ? 0 : 5);
        EXPECT_EQ(found.first().account.has_value(), !there.isEmpty());
    }
}

class EndOfDayTest : public MailingLogDesk {
protected:
    KeysScreen keys{*app};
    EndOfDayScreen day{*app, keys, log, purchases()};

    EndOfDayTest() { run(keys.refresh()); }
    void TearDown() override
    {
        day.close();
        runUntil([this] { return !day.isAsking(); });
        endLookups();
        MailingLogDesk::TearDown();
    }
    void open()
    {
        clock.advance(1s); // labels bought in this moment are not compared
        day.open();
        answered();
    }
    void answered()
    {
        runUntil([this] { return day.account.value() != AccountState::asking; });
        read([this] { return day.report.value().day == day.day.value(); });
    }
    template <class Done>
    void read(Done done)
    {
        runUntil(done);
        settlePool(3);
    }
    const DayOfLabels &labels() { return day.report.value().labels; }
    QList<DifferenceKind> differences() { return each(day.report.value().differences, &AccountDifference::kind); }
    void buyElsewhere()
    {
        carrier.seedSale({"Grant Holloway", "77 Peach St", "Macon", "GA", "31201", "US", "USPS", "Ground Advantage",
                          "7.12", clock.now()});
    }
};

} // namespace

TEST_F(EndOfDayTest, TheDayIsComparedWithTheAccountOnceAndAgainOnRequest)
{
    bought();
    logged({.createdAt = clock.now(), .postage = 3, .transactionID = transactionId(), .testMode = true});
    buyElsewhere();
    carrier.clearRequests();
    open();
    EXPECT_EQ(day.account.value(), AccountState::compared) << day.accountFailure.value().toStdString();
    QList<DifferenceKind> found = differences();
    std::ranges::sort(found);
    EXPECT_EQ(found, QList({DifferenceKind::boughtElsewhere, DifferenceKind::notInAccount}));
    EXPECT_EQ(labels().all.size(), 2);
    const int asked = requestsTo("/transactions");
    day.showDay(day.day.value().addDays(-1));
    answered();
    EXPECT_FALSE(day.isToday());
    EXPECT_TRUE(labels().all.isEmpty() && differences().isEmpty());
    EXPECT_FALSE(day.formObstacle().isEmpty());
    day.showDay(clock.now().date().addDays(3));
    EXPECT_EQ(day.day.value(), clock.now().date()) << "no day of the future";
    answered();
    EXPECT_EQ(requestsTo("/transactions"), 2 * asked) << "the account was asked about this day already";
    EXPECT_EQ(differences().size(), 2);

    answer("transactions", {}, 500);
    day.refresh();
    answered();
    EXPECT_EQ(day.accountText(), u"Not compared — the account did not answer."_s);
    EXPECT_EQ(differences().size(), 2) << "the list keeps its rows";
    buyElsewhere();
    day.refresh();
    answered();
    EXPECT_EQ(differences().size(), 3);

    prompts.file = path(u"day.csv"_s);
    run(day.exportCSV());
    const QByteArrayList lines = contentsOf(prompts.file).split('\n');
    ASSERT_EQ(lines.size(), 1 + 2 + 2 + 1) << "a row each, and not a sum";
    EXPECT_TRUE(lines[3].contains("\"Grant Holloway\""));
    EXPECT_TRUE(lines[3].endsWith("\"Bought elsewhere\""));
    preferences.setValue(u"printer.documentQueue"_s, u"Laser"_s);
    run(day.printPage());
    EXPECT_EQ(day.message.value(), u"The day's page was sent to the printer."_s);
    EXPECT_TRUE(processes.lastPrinted().startsWith("%PDF"));
    prompts.answer = 1;
    run(keys.remove(app->keys.activeName()));
    read([this] { return keys.mode.value() == PostageMode::none; });
    EXPECT_EQ(day.accountText(), u"Not compared — no Shippo key is active."_s);
}

TEST_F(EndOfDayTest, TheFormIsMadeOfTheLabelsThatLackItWithoutAQuestion)
{
    preferences.setValue(u"printer.documentQueue"_s, u"Laser"_s);
    open();
    EXPECT_EQ(day.formObstacle(), u"No USPS label was bought on this day."_s);
    bought();
    run(app->createScanForm(deskAddress()));
    const ShipmentRecord given = bought();
    prompts.answer = 1;
    run(log.refund(given));
    const ShipmentRecord missing = bought();
    prompts.questions.clear();
    read([this] { return labels().notOnForm.size() == 1 && labels().exempt.size() == 1; });
    EXPECT_EQ(day.report.value().refunds.value(0).record.transactionID, given.transactionID);
    EXPECT_EQ(day.formStep(), FormStep::make);
    EXPECT_TRUE(day.isFormStepNext());
    run(app->createScanForm(deskAddress(), ScanFormScope::missing));
    EXPECT_TRUE(prompts.questions.isEmpty()) << "the card shows the others";
    EXPECT_TRUE(app->scanFormStatus.value().startsWith(u"SCAN form ready: 1 label"_s));
    read([this] { return labels().onForm.size() == 2 && day.report.value().forms.size() == 2; });
    EXPECT_EQ(day.formStep(), FormStep::print);
    EXPECT_TRUE(day.isFormStepNext());
    ScanFormScreen window(*app);
    run(window.load());
    const qsizetype printed = printJobs(processes);
    run(window.print());
    read([this] { return day.report.value().forms.value(0).isPrinted; });
    run(day.printForms(EndOfDayScreen::Forms::unprinted));
    EXPECT_EQ(printJobs(processes), printed + 2) << "the window's form is printed already";
    read([this] { return !day.isFormStepNext(); });
    clock.start = clock.start.addDays(1);
    EXPECT_FALSE(day.isFormStepNext());
}

TEST_F(EndOfDayTest, ALabelIsPrintedOnlyOnceItsQueueIsEmpty)
{
    const QByteArray idle = "printer ZD421 is idle.  enabled since Sat Nov 21 17:13:41 2026\n"
                            "ZD421 accepting requests since Sat Nov 21 17:13:41 2026\n",
                     busy = QByteArray(idle).replace("is idle.", "now printing ZD421-7.") +
                            "ZD421-7   desk   1024   Sat Nov 21 17:13:41 2026\n";
    open();
    const QString never = u"Never printed"_s, sent = u"Print not confirmed"_s;
    const struct {
        bool isRefused;
        QByteArray queue;
        QStringList states; ///< of the labels that did not come out
    } rows[] = {{true, idle, {never}}, {false, busy, {never, sent}}, {false, idle, {never}}};
    const auto states = [this] { return each(labels().unprinted, DayTexts::printState); };
    qsizetype all = 0;
    for (const auto &[isRefused, queue, expected] : rows) {
        settlePool(2); // a check of the queue calls `behave`
        processes.behave = [isRefused, queue](const QString &program, const QStringList &) {
            const bool prints = program.endsWith(u"/lpr"_s);
            return prints ? ProcessOutcome{isRefused ? 1 : 0, {}, "full"} : ProcessOutcome{0, queue, {}};
        };
        composeAndRate(homeAddress());
        for (int press = 0; press < 3 && screen().selectedRate(); ++press) {
            clock.advance(LabelScreen::buyPause);
            runTask(screen().buyAndPrint()); // without the clock: the watch of a busy queue would let hours pass
        }
        ++all;
        runUntil([&] { return labels().all.size() == all && states() == expected; },
                 &queue == &rows[1].queue ? nullptr : &clock);
    }
    prompts.answer = 1;
    run(day.reprint(labels().unprinted.first().record));
    runUntil([&] { return states().isEmpty(); }, &clock);
}

} // namespace parcelory::test

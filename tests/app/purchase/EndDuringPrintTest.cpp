// The program ends while a print tool is running: the tool's paper comes out, so it must be noted, although nothing
// that waits for the tool goes on.

#include "records/LabelEvents.h"
#include "support/AppTest.h"

namespace parcelory::test {
namespace {

class EndDuringPrintTest : public MailingLogDesk {
protected:
    EndDuringPrintTest()
    {
        preferences.setValue(u"printer.documentQueue"_s, u"Laser"_s);
        processes.behave = failingPrinter("no paper");
    }
    /// Starts `print`; when the tool runs, the program waits for it and then looks at its books. After that, `print`
    /// goes on to its end.
    void endDuring(const std::function<Task<>()> &print, const std::function<void()> &look)
    {
        settlePool(2); // a check of the queue calls `behave`
        QSemaphore isRunning, mayEnd;
        processes.behave = [&](const QString &program, const QStringList &) {
            if (program.endsWith(u"/lpr"_s)) {
                isRunning.release();
                mayEnd.acquire();
            }
            return ProcessOutcome{};
        };
        bool isDone = false;
        const auto drive = [&]() -> Task<> {
            co_await print();
            isDone = true;
        };
        const Task<> driver = drive();
        runUntil([&] { return isDone || isRunning.available() > 0; });
        EXPECT_FALSE(isDone) << "nothing was printed: " << banner().toStdString();
        mayEnd.release(100);
        workPool().waitForDone();
        look();
        processes.behave = {};
        runUntil([&] { return isDone; });
        settlePool(2);
    }
    PrintState printState(const ShipmentRecord &label)
    {
        return *LabelEvents::printState(app->log, label.transactionID);
    }
    std::optional<QDateTime> timeOf(LabelEvent event, const QString &id)
    {
        return *LabelEvents::find(app->log, id, event);
    }
};

} // namespace

TEST_F(EndDuringPrintTest, AReprintIsNotedAndCounted)
{
    const ShipmentRecord label = bought();
    ASSERT_EQ(printState(label), PrintState::never);
    endDuring([this] { return screen().last.reprint(); },
              [&] {
                  EXPECT_EQ(printState(label), PrintState::sent);
                  EXPECT_EQ(app->labelHistory.of(label.id)->reprints, 1);
              });
    EXPECT_EQ(app->labelHistory.of(label.id)->reprints, 1) << "once";
}

TEST_F(EndDuringPrintTest, ANewLabelIsNotedInTheJournalAndADoubtfulOneInTheLog)
{
    composeAndRate(homeAddress());
    clock.advance(LabelScreen::buyPause);
    endDuring([this] { return screen().buyAndPrint(); },
              [this] { EXPECT_TRUE(app->journal.openPurchases().value(0).printed); });
    EXPECT_EQ(printState(log.records().value(0)), PrintState::sent);

    clock.advance(1min);
    composeAndRate(homeOf(u"Ana"_s));
    prompts.answer = 1; // print a label that can change the printer
    carrier.setScenario(answering("labels/", 200, "^XA^FDx^FS^JUS^XZ"));
    clock.advance(LabelScreen::buyPause);
    endDuring([this] { return screen().buyAndPrint(); },
              [this] { EXPECT_EQ(printState(log.records().value(0)), PrintState::sent); });
    EXPECT_EQ(log.records().size(), 2);
}

TEST_F(EndDuringPrintTest, PapersAndFormsAreNoted)
{
    composeParcel(londonAddress());
    screen().customs = CustomsInfo{CustomsItemType::investmentGold, u"2"_s, u"1860"_s, u"Dana Marsh"_s};
    run(screen().fetchRates(true));
    buy();
    const ShipmentRecord label = log.records().value(0);
    ASSERT_TRUE(timeOf(LabelEvent::papersFailed, label.transactionID)) << banner().toStdString();
    for (const std::function<Task<>()> &print : {std::function([this] { return screen().last.reprintCustoms(); }),
                                                 std::function([&] { return log.reprintCustoms(label); })}) {
        clock.advance(1min);
        endDuring(print, [&] { EXPECT_EQ(timeOf(LabelEvent::papersPrinted, label.transactionID), clock.now()); });
    }

    bought();
    carrier.setScenario({.manifestDocuments = 2});
    prompts.answer = 1;
    run(app->createScanForm(deskAddress()));
    ScanFormScreen form(*app);
    run(form.load());
    ASSERT_EQ(form.documents.value().size(), 2) << app->scanFormStatus.value().toStdString();
    const QString id = form.shown.value()->manifestId;
    endDuring([&] { return form.print(); },
              [&] { EXPECT_FALSE(timeOf(LabelEvent::formPrinted, id)) << "its second page is missing"; });
    EXPECT_TRUE(timeOf(LabelEvent::formPrinted, id));
    form.documents = form.documents.value().first(1);
    clock.advance(1min);
    endDuring([&] { return form.print(); }, [&] { EXPECT_EQ(timeOf(LabelEvent::formPrinted, id), clock.now()); });
}

} // namespace parcelory::test

// What happens to a label after the print tools have accepted it.

#include "app/purchase/LabelPrinting.h"
#include "devices/PrinterState.h"
#include "practice/PracticePrinter.h"
#include "support/AppTest.h"

namespace parcelory::test {
namespace {

/// lpstat's whole output, as recorded from print servers, with the jobs `first` to `last`.
QByteArray answer(const QByteArray &state, const QByteArray &alerts = "none", int first = 1, int last = 0)
{
    QByteArray text = "printer ZD421 " + state +
                      "\n\tForm mounted:\n\tDescription: not connected\n\tAlerts: " + alerts +
                      "\n\tUsers allowed:\n\t\t(all)\nZD421 accepting requests since Sat Nov 21 17:13:41 2026\n";
    for (int job = first; job <= last; ++job)
        text += "ZD421-" + QByteArray::number(job) +
                "             DESK\\Dana Marsh     1024   Sat Nov 21 17:13:41 2026\n" +
                "\tStatus: offline\n\tAlerts: job-printing\n\tqueued for ZD421\n";
    return text;
}

const QByteArray idle = "is idle.  enabled since Sat Nov 21 17:13:41 2026";
const QByteArray busy = "now printing ZD421-1.  enabled since Sat Nov 21 17:13:41 2026";
const QByteArray disabled = "disabled since Sat Nov 21 17:13:41 2026 -\n\t";

QString sentence(const QByteArray &out, Paper paper = Paper::label)
{
    return printerSentence(u"ZD421"_s, readPrinterReport(out, {}), paper);
}

/// A label desk with a label printer that can have faults.
class PrintCertaintyTest : public testing::Test, public LabelDesk {
protected:
    PrintCertaintyTest()
    {
        preferences.setValue(u"printer.zebraQueue"_s, PracticePrinter::labelQueue);
        processes.behave = [this](const QString &program, const QStringList &arguments) {
            return printer.run(program, arguments);
        };
    }
    QString noticeAfter(std::chrono::seconds time)
    {
        settlePool(); // a look may have started before
        clock.advance(time);
        settlePool();
        return app->printWatch.notice;
    }
    QString afterLookAt(const QByteArray &out)
    {
        processes.behave = [out](const QString &, const QStringList &) { return ProcessOutcome{0, out, {}}; };
        return noticeAfter(std::chrono::seconds(2));
    }
    qsizetype printed() const { return QDir(path(u"paper"_s)).entryList({u"*.zpl"_s}, QDir::Files).size(); }

    PracticePrinter printer{QDir(path(u"paper"_s))};
    PrintWatch &watch = app->printWatch;
};

} // namespace

TEST(PrinterState, DescribesWhyAQueueDoesNotPrint)
{
    for (const Json &row : table(u"printer-states"_s, "states")) {
        const QByteArray state = text(row[0]).toUtf8(), alerts = text(row[1]).toUtf8();
        const int waiting = row[2];
        const QString cause = text(row[3]);
        const QString head = waiting > 0 ? u"2 labels are still waiting on ZD421"_s : QString();
        const QString joint = cause.isEmpty() ? QString() : waiting > 0 ? u" — "_s : u"ZD421: "_s;
        const QString end = head.isEmpty() && cause.isEmpty() ? QString() : u"."_s;
        EXPECT_EQ(sentence(answer(state, alerts, 7, 6 + waiting)), head + joint + cause + end);
    }
    EXPECT_EQ(sentence(answer(busy, "media-empty", 7, 7), Paper::document),
              u"1 document is still waiting on ZD421 — the printer is out of paper."_s);
    EXPECT_EQ(readPrinterReport(answer(busy, "none", 7, 9), {}).oldestJob, u"ZD421-7"_s);
    EXPECT_EQ(sentence(answer(idle).replace("accepting requests since Sat Nov 21 17:13:41 2026",
                                            "not accepting requests since Sat Nov 21 17:13:41 2026 -\n\tMoved")),
              u"ZD421: the queue takes no new jobs (“Moved”)."_s);
    for (const QByteArray &unreadable : {"", "Drucker ZD421 ist im Leerlauf.\n\tAlarme: paused\n", "printer \n\xFF"})
        EXPECT_FALSE(readPrinterReport(unreadable, {}).readable);
}

TEST_F(PrintCertaintyTest, TheWatchReportsOnlyLabelsThatDoNotComeOut)
{
    const QByteArray looking = answer(busy, "connecting-to-device", 1, 2);
    watch.follow({}, Paper::document);
    watch.follow(u"ZD421"_s, Paper::label);
    EXPECT_EQ(afterLookAt(looking), QString()) << "every job starts in this state";
    EXPECT_EQ(afterLookAt(looking), sentence(looking));
    for (int job = 2; job < 40; ++job)
        EXPECT_EQ(afterLookAt(answer(busy, "none", job, job)), QString())
            << "a queue that makes progress is no problem";
    for (int look = 0; look < 20 && watch.notice.value().isEmpty(); ++look)
        afterLookAt(answer(busy, "none", 40, 40));
    EXPECT_EQ(watch.notice.value(), u"1 label is still waiting on ZD421."_s);
    EXPECT_EQ(afterLookAt(answer(idle + "\n\tBroken pipe")),
              u"ZD421 reports “Broken pipe” — check whether the last label came out."_s);
    EXPECT_FALSE(clock.fireNext()) << "an empty queue ends polling";
    watch.follow(u"ZD421"_s, Paper::label);
    EXPECT_EQ(afterLookAt("what is this?"), QString());
    EXPECT_FALSE(clock.fireNext()) << "an unreadable report ends polling";
    for (const bool hangs : {false, true}) { // the queue would look empty, and the labels printed
        watch.follow(u"ZD421"_s, Paper::label);
        processes.behave = [hangs](const QString &program, const QStringList &) {
            if (hangs)
                throw ProcessTimedOut(program);
            return ProcessOutcome{128 + 11, answer(idle), {}};
        };
        EXPECT_EQ(
            noticeAfter(std::chrono::seconds(2)),
            u"ZD421 reports “%1” — check whether the last label came out."_s.arg(
                hangs ? u"the print system did not answer within 30 seconds"_s : u"lpstat crashed (signal 11)"_s));
    }

    const qsizetype looks = processes.calls().size();
    watch.follow(u"Old"_s, Paper::label);
    for (int turn = 0; turn < 60; ++turn) // two minutes
        EXPECT_FALSE(afterLookAt(answer(disabled + "Paused")).isEmpty());
    EXPECT_EQ(processes.calls().size() - looks, 30 + 6) << "polling slows down after a minute";
    watch.follow(u"New"_s, Paper::label);
    EXPECT_EQ(watch.notice.value(), QString()) << "the notice is about the queue in use only";
}

TEST_F(PrintCertaintyTest, EveryPrinterFaultIsReportedAndLosesNoLabel)
{
    const QString two = u"2 labels are still waiting on Practice_Zebra — "_s, queue = u"Practice_Zebra: "_s;
    // waiting: how many of label and reprint
    const std::tuple<PrinterFault, QString, int, const char *> faults[] = {
        {PrinterFault::off, two + u"the printer is off or not connected."_s, 2, "Label sent to Practice_Zebra."},
        {PrinterFault::outOfLabels, two + u"the printer is out of labels."_s, 2, "Label sent to Practice_Zebra."},
        {PrinterFault::paused, queue + u"the queue is paused; resume it in the system's printer settings."_s, 0,
         "print failed: The Zebra queue “Practice_Zebra” is PAUSED"},
        {PrinterFault::unknown,
         queue + u"no printer of that name is set up on this computer; choose one in Settings."_s, 0,
         "print failed: lpr failed: /usr/bin/lpr: Error - The printer or class does not exist."},
    };
    constexpr std::chrono::seconds nextLook(10); // the watch's longest interval
    qsizetype rows = 0, papers = 0;
    for (const auto &[fault, notice, waiting, shown] : faults) {
        printer.setFault(fault);
        buyLabel();
        EXPECT_THAT(banner().toStdString(), HasSubstr(shown));
        EXPECT_EQ(app->log.records().size(), ++rows) << "a print problem leaves the purchase complete";
        prompts.answer = 1;
        run(screen().last.reprint());
        if (waiting > 0)
            EXPECT_TRUE(prompts.questions.last().text.contains(u"1 label is still waiting on "_s));
        noticeAfter(nextLook);
        EXPECT_EQ(noticeAfter(nextLook), notice);
        EXPECT_FALSE(screen().news()->ok) << "a label that waits is no success";
        EXPECT_EQ(runTask(stillWaiting(*app)), waiting > 0 ? notice : QString());
        printer.setFault(PrinterFault::none);
        EXPECT_EQ(noticeAfter(nextLook), QString());
        EXPECT_EQ(screen().news(), screen().banner.value());
        EXPECT_EQ(printed(), papers += waiting);
    }
}

TEST_F(PrintCertaintyTest, ALabelReprintedBesideTheNextParcelStaysUntilItIsOut)
{
    constexpr std::chrono::seconds nextLook(10);
    printer.setFault(PrinterFault::paused);
    buyLabel();
    app->draftTo = londonAddress();
    printer.setFault(PrinterFault::outOfLabels);
    run(screen().last.reprint());
    EXPECT_TRUE(screen().last.label.value());
    noticeAfter(nextLook);
    noticeAfter(nextLook);
    EXPECT_FALSE(screen().news()->ok);
    printer.setFault(PrinterFault::none);
    noticeAfter(nextLook);
    EXPECT_FALSE(screen().last.label.value());
}

TEST_F(PrintCertaintyTest, ALabelFor300DpiIsCutWithOneWarning)
{
    const QByteArray label = "^XA^PW1200^LL1800^FDCoin^FS^XZ";
    EXPECT_THAT(runTask(printLabel(*app, label)).text.toStdString(),
                StartsWith("Label sent to Practice_Zebra. It is made for a 300 dpi printer"));
    EXPECT_EQ(runTask(printLabel(*app, label)).text, u"Label sent to Practice_Zebra."_s) << "the warning appears once";
}

} // namespace parcelory::test

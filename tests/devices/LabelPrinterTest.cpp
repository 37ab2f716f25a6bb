#include "devices/LabelPrinter.h"
#include "devices/HandoverFile.h"
#include "support/FakePlatform.h"

#include <QFileInfo>

namespace parcelory::test {
namespace {

constexpr auto filePrivacy = QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser;

/// A printer with simulated tools and a private folder for temporary files.
class LabelPrinterTest : public testing::Test {
protected:
    LabelPrinterTest()
    {
        qputenv("TMPDIR", temporary.path().toUtf8());
        world.processes.behave = [this](const QString &program, const QStringList &arguments) {
            const QString tool = QFileInfo(program).fileName();
            if (unstartable.contains(tool))
                throw AppError(tool + u" could not be started"_s);
            if (hangs)
                throw ProcessTimedOut(tool);
            if (tool == u"lpr")
                handedOver = QFileInfo(arguments.last()).permissions();
            return tool == u"lpr"                           ? lpr
                   : tool == u"lpstat" && !lpstat.isEmpty() ? lpstat.takeFirst()
                                                            : ProcessOutcome{};
        };
    }
    ~LabelPrinterTest() override { qunsetenv("TMPDIR"); }

    /// The calls so far, one per line, without the temporary file's random name and folder.
    QStringList calls() const
    {
        static const QRegularExpression name(u"[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}"_s);
        QStringList lines;
        for (const auto &call : world.processes.calls())
            lines +=
                (QStringList{call.program} + call.arguments).join(u' ').remove(temporary.path()).replace(name, u"*"_s);
        return lines;
    }
    QStringList leftovers() const { return QDir(temporary.path()).entryList(QDir::Files); }

    QTemporaryDir temporary;
    FakePlatform world;
    LabelPrinter printer{world.platform};
    ProcessOutcome lpr;
    QList<ProcessOutcome> lpstat; ///< its outputs in order, then empty output
    QStringList unstartable;
    bool hangs = false; ///< no tool ends
    QFile::Permissions handedOver;
};

const ProcessOutcome paused{0, "printer Zebra DISABLED since Sat Nov 21 05:26:14 2026 -\n\tPaused\n", {}};
const ProcessOutcome enabled{0, "printer Zebra is idle.  enabled since Sat Nov 21 05:24:59 2026\n", {}};

} // namespace

TEST_F(LabelPrinterTest, SendsZplRawThroughAPrivateFileThatIsDeletedAfterwards)
{
    EXPECT_EQ(printer.print(parseLabel("^XA^LL1400^XZ"), u"Zebra"_s, u"Laser"_s), u"Label sent to Zebra."_s);

    EXPECT_EQ(calls(),
              (QStringList{u"/usr/bin/lpstat -p Zebra"_s, u"/usr/bin/lpr -P Zebra -o raw /parcelory-*.zpl"_s}));
    EXPECT_EQ(world.processes.lastPrinted(), "^XA^POI^LL1218^XZ");
    EXPECT_EQ(handedOver, filePrivacy);
    EXPECT_TRUE(leftovers().isEmpty() && world.desktop.opened.isEmpty());
}

TEST_F(LabelPrinterTest, RotatesLabelsUnlessTheClerkTurnsItOff)
{
    const std::pair<QVariant, bool> rows[] = {{{}, true},      {true, true},   {u"true"_s, true},  {0, true},
                                              {u"no"_s, true}, {false, false}, {u"false"_s, false}};
    for (const auto &[stored, turned] : rows) {
        world.preferences.values[u"printer.rotate180"_s] = stored;
        world.preferences.values.remove(u"printer.turnedQueues"_s);
        printer.printZPL("^XA^XZ", u"Zebra"_s);
        EXPECT_EQ(world.processes.lastPrinted(), turned ? "^XA^POI^XZ" : "^XA^XZ") << stored.toString().toStdString();
    }
}

TEST_F(LabelPrinterTest, UndoesTheRotationThatAnEarlierLabelLeftInThePrinter)
{
    world.preferences.values[u"printer.rotate180"_s] = false;
    for (const Json &row : table(u"printers"_s, "rotation after a turned label")) {
        LabelPrinter(world.platform).printZPL(bytes(row[0]), u"Zebra"_s); // like after a restart
        EXPECT_EQ(world.processes.lastPrinted(), bytes(row[1]));
    }
    printer.printZPL("^XA^FD4^XZ", u"Other"_s);
    EXPECT_EQ(world.processes.lastPrinted(), "^XA^FD4^XZ");
}

TEST_F(LabelPrinterTest, SendsPdfsToTheDocumentPrinterOrTheViewerAndPicturesToTheViewer)
{
    const QByteArray pdf = "%PDF-1.4 label", png = "\x89PNG label";

    EXPECT_EQ(printer.print(parseLabel(pdf), u"Zebra"_s, u"Laser"_s),
              u"Shippo returned a PDF label (not ZPL) — sent to Laser."_s);
    EXPECT_EQ(calls(), QStringList{u"/usr/bin/lpr -P Laser /parcelory-*.pdf"_s});
    EXPECT_EQ(world.processes.lastPrinted(), pdf);
    EXPECT_EQ(handedOver, filePrivacy);
    EXPECT_TRUE(leftovers().isEmpty());

    EXPECT_EQ(printer.print(parseLabel(pdf), u"Zebra"_s, {}),
              u"Shippo returned a PDF label (not ZPL) — opened in Preview."_s);
    EXPECT_EQ(printer.print(parseLabel(png), u"Zebra"_s, u"Laser"_s),
              u"Shippo returned a PNG label (not ZPL) — opened in Preview."_s);
    EXPECT_EQ(calls().size(), 1);
    const QStringList names = {u"/parcelory-[^/]{36}\\.pdf"_s, u"/parcelory-label-[^/]{36}\\.png"_s};
    for (int i = 0; i < 2; ++i) {
        QFile file(world.desktop.opened.value(i));
        EXPECT_TRUE(file.fileName().contains(QRegularExpression(temporary.path() + names[i] + u'$'))) << i;
        ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << "the viewer needs the file";
        EXPECT_EQ(file.readAll(), i == 0 ? pdf : png);
        EXPECT_EQ(file.permissions() & ~QFile::WriteUser, QFile::ReadOwner | QFile::ReadUser); // root can write
    }
}

TEST_F(LabelPrinterTest, DeletesWhatAKilledProgramLeftAndNothingElse)
{
    const QString id = u"0f8fad5b-d9cb-469f-a165-70867728950e"_s;
    const Json rows =
        table(u"printers"_s, "files that a killed program left"); // name, for a viewer, age in hours, stays
    for (const Json &row : rows) {
        QFile file(temporary.filePath(text(row[0]).arg(id)));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_TRUE(file.setFileTime(QDateTime::currentDateTime().addSecs(-3600 * row[2].get<int>()),
                                     QFile::FileModificationTime));
        file.setPermissions(row[1].get<bool>() ? QFile::ReadOwner : QFile::ReadOwner | QFile::WriteOwner);
    }
    ASSERT_TRUE(QFile::link(u"/etc/passwd"_s, temporary.filePath(u"parcelory-label-%1.zpl"_s.arg(id))));
    ASSERT_EQ(::mkfifo(QFile::encodeName(temporary.filePath(u"parcelory-label-%1.png"_s.arg(id.toUpper()))).constData(),
                       0600),
              0);
    const HandoverFile printing("^XA^XZ", u"parcelory-"_s, u".zpl"_s);
    HandoverFile::sweep();
    for (const Json &row : rows)
        EXPECT_EQ(QFile::exists(temporary.filePath(text(row[0]).arg(id))), row[3].get<bool>()) << row;
    EXPECT_TRUE(QFile::exists(printing.path())) << "another program is printing";
    EXPECT_TRUE(QFile::exists(u"/etc/passwd"_s));
}

TEST_F(LabelPrinterTest, SendsNothingToAQueueThatStaysPaused)
{
    const Failure expected{LabelPrinter::pausedQueue,
                           u"The Zebra queue “Zebra” is PAUSED in macOS and is holding jobs. Open System Settings → "
                           "Printers & Scanners → Zebra and press Resume."_s};
    for (const QStringList &broken : {QStringList{}, QStringList{u"cupsenable"_s}}) {
        unstartable = broken;
        // CUPS reports a queue's state on stdout or on stderr.
        lpstat = {paused, {1, {}, "printer Zebra disabled\n"}, enabled};
        EXPECT_EQ(codedFailureOf([this] { printer.printZPL("^XA^XZ", u"Zebra"_s); }), expected);
    }
    EXPECT_EQ(calls().filter(u"lpr"_s), QStringList());
    EXPECT_EQ(calls().filter(u"cupsenable"_s).size(), 2);
}

TEST_F(LabelPrinterTest, RejectsUnprintableBytesBeforeStartingATool)
{
    EXPECT_EQ(codedFailureOf([this] { printer.print(parseLabel("^XA^XZ"), {}, u"Laser"_s); }),
              Failure(LabelPrinter::noQueue, u"No Zebra printer queue selected in Settings."_s));
    for (const QByteArray &bytes : {QByteArray(), QByteArray("<?xml version=\"1.0\"?><Error>^XA</Error>")}) {
        EXPECT_EQ(codedFailureOf([&] { printer.print(parseLabel(bytes), u"Zebra"_s, u"Laser"_s); }).first,
                  LabelPrinter::notALabel);
        EXPECT_EQ(codedFailureOf([&] { printer.printZPL(bytes, u"Zebra"_s); }).first, LabelPrinter::notALabel);
        for (const QString &queue : {u"Laser"_s, QString()})
            EXPECT_EQ(codedFailureOf([&] { printer.printPDF(bytes, queue); }).first, LabelPrinter::notALabel);
    }
    EXPECT_TRUE(calls().isEmpty());

    qputenv("TMPDIR", "/proc"); // not even root can create a file there
    for (const QByteArray &bytes : {QByteArray("^XA^XZ"), QByteArray("%PDF"), QByteArray("\x89PNG")})
        EXPECT_EQ(codedFailureOf([&] { printer.print(parseLabel(bytes), u"Zebra"_s, {}); }).first, 0);
    EXPECT_TRUE(calls().filter(u"lpr"_s).isEmpty() && world.desktop.opened.isEmpty());
}

TEST_F(LabelPrinterTest, ReportsWhyAJobWasRejectedAndStillDeletesTheFile)
{
    lpr = {1, "out", "lpr: Error – no such printer.\n"};
    const Failure refused{1, u"lpr failed: lpr: Error – no such printer.\n"_s};
    EXPECT_EQ(codedFailureOf([this] { printer.printZPL("^XA^XZ", u"Zebra"_s); }), refused);
    EXPECT_EQ(codedFailureOf([this] { printer.printPDF("%PDF", u"Laser"_s); }), refused);
    unstartable = {u"lpr"_s};
    EXPECT_EQ(codedFailureOf([this] { printer.printZPL("^XA^XZ", u"Zebra"_s); }),
              Failure(0, u"lpr could not be started"_s));
    EXPECT_TRUE(leftovers().isEmpty());
}

TEST_F(LabelPrinterTest, WaitsThirtySecondsForAPrintSystemThatDoesNotAnswer)
{
    hangs = true;
    EXPECT_EQ(codedFailureOf([this] { printer.printZPL("^XA^XZ", u"Zebra"_s); }),
              Failure(LabelPrinter::noAnswer,
                      u"the print system did not answer within 30 seconds; the label may still come out"_s));
    EXPECT_EQ(codedFailureOf([this] { printer.printPDF("%PDF", u"Laser"_s); }),
              Failure(LabelPrinter::noAnswer,
                      u"the print system did not answer within 30 seconds; the document may still come out"_s));
    EXPECT_TRUE(leftovers().isEmpty() && printer.queues().isEmpty());
    EXPECT_FALSE(printer.queueReport(u"Zebra"_s).readable);
    printer.tryResume(u"Zebra"_s);
    for (const auto &call : world.processes.calls())
        EXPECT_EQ(call.limit, std::chrono::seconds(30)) << call.program.toStdString();
}

TEST_F(LabelPrinterTest, SaysWhyThePrintersCannotBeListed)
{
    for (const Json &row : table(u"printers"_s, "failed listings")) {
        lpstat = {{row[0], bytes(row[1]), bytes(row[2])}};
        EXPECT_EQ(codedFailureOf([this] { printer.listQueues(); }), Failure(row[0], text(row[3])));
    }
    lpstat = {{1, {}, "lpstat: No destinations added.\n"}};
    EXPECT_TRUE(printer.listQueues().all.isEmpty());
}

TEST_F(LabelPrinterTest, WorksWithoutTheToolThatDescribesQueues)
{
    unstartable = {u"lpstat"_s};
    EXPECT_TRUE(printer.queues().isEmpty() && printer.zebraQueues().isEmpty());
    EXPECT_FALSE(printer.queueIsPaused(u"Zebra"_s));
    printer.printZPL("^XA^XZ", u"Zebra"_s);
    EXPECT_EQ(world.processes.lastPrinted(), "^XA^POI^XZ");
}

TEST_F(LabelPrinterTest, RecognizesAZebraByItsQueueNameOrItsDevice)
{
    QByteArray listing;
    QStringList expected;
    for (const Json &row : table(u"printers"_s, "Zebras")) {
        listing += bytes(row[0]) + '\n';
        if (!row[1].is_null())
            expected += text(row[1]);
    }
    lpstat = {{0, listing, {}}};
    EXPECT_EQ(printer.zebraQueues(), expected);
    EXPECT_EQ(calls(), QStringList{u"/usr/bin/lpstat -v"_s});
}

} // namespace parcelory::test

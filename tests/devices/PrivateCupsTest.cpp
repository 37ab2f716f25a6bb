// Labels through a real print server, on a desk whose language is German.

#include "devices/LabelPrinter.h"
#include "devices/PrinterState.h"
#include "devices/Zpl.h"
#include "platform/SystemProcesses.h"
#include "support/FakePlatform.h"

#include <QDeadlineTimer>
#include <QFileInfo>
#include <QProcess>

namespace parcelory::test {
namespace {

class PrivateCups : public testing::Test {
protected:
#ifdef Q_OS_MACOS
    static constexpr auto unavailable = "the print server of macOS runs only as a part of the system";
    static bool isAvailable() { return false; }
#else
    static constexpr auto unavailable = "there is no print server (/usr/sbin/cupsd) on this machine";
    static bool isAvailable() { return QFile::exists(u"/usr/sbin/cupsd"_s); }
#endif

    static void SetUpTestSuite()
    {
        if (!isAvailable())
            return;
        // The server's user must be able to read the cases' files.
        ::umask(022);
        folder = std::make_unique<QTemporaryDir>(u"/tmp/cups-XXXXXX"_s);
        QFile::setPermissions(folder->path(), QFile::Permissions(0x7755));
        qputenv("CUPS_SERVER", folder->filePath(u"run/cups.sock"_s).toUtf8());
        qputenv("HOME", folder->filePath(u"home"_s).toUtf8());
        for (const char *name : {"LC_ALL", "LANG", "LANGUAGE", "SOFTWARE"})
            qputenv(name, "de_DE.UTF-8");
        server = std::make_unique<QProcess>();
        server->setProcessChannelMode(QProcess::ForwardedErrorChannel);
        server->start(u"" PARCELORY_SOURCE_DIR "/tests/support/private-cups.sh"_s, {folder->path()});
        started = server->waitForReadyRead(-1);
    }
    static void TearDownTestSuite()
    {
        if (server) {
            server->closeWriteChannel(); // ends the server
            server->waitForFinished(-1);
        }
        server.reset();
        folder.reset();
    }
    void SetUp() override
    {
        world.processes.real = &processes;
        if (!folder)
            GTEST_SKIP() << unavailable;
        ASSERT_TRUE(started) << "the private print server did not start";
        for (const QString &queue : printer.queues())
            QFile::remove(outputPath(queue));
    }

    static QString outputPath(const QString &queue) { return folder->filePath(u"out/"_s + queue); }

    /// True if the queue is empty.
    bool isIdle(const QString &queue) { return processes.run(u"/usr/bin/lpstat"_s, {u"-o"_s, queue}).out.isEmpty(); }
    /// The printer's output, once the queue is empty.
    QByteArray printed(const QString &queue)
    {
        const QDeadlineTimer deadline(std::chrono::seconds(60));
        while (!isIdle(queue) && !deadline.hasExpired()) {
        }
        return contentsOf(outputPath(queue));
    }
    /// The sentence about a queue, once it is `expected` or the time limit is over.
    QString sentenceOf(const QString &queue, const QString &expected)
    {
        const QDeadlineTimer deadline(std::chrono::seconds(60));
        QString sentence;
        do {
            sentence = printerSentence(queue, printer.queueReport(queue), Paper::label);
        } while (sentence != expected && !deadline.hasExpired());
        return sentence;
    }
    void pause(const QString &queue) { ASSERT_EQ(processes.run(u"/usr/sbin/cupsdisable"_s, {queue}).status, 0); }

    SystemProcesses processes;
    FakePlatform world;
    LabelPrinter printer{world.platform};

    static std::unique_ptr<QTemporaryDir> folder;
    static std::unique_ptr<QProcess> server;
    static bool started;
};

std::unique_ptr<QTemporaryDir> PrivateCups::folder;
std::unique_ptr<QProcess> PrivateCups::server;
bool PrivateCups::started = false;

} // namespace

TEST_F(PrivateCups, ListsTheQueuesAndRecognizesTheZebrasInAnyLanguage)
{
    EXPECT_EQ(printer.queues(), (QStringList{u"Frozen"_s, u"Laser"_s, u"ZD421"_s}));
    EXPECT_THAT(printer.zebraQueues(), testing::UnorderedElementsAre(u"Frozen"_s, u"ZD421"_s));
    EXPECT_TRUE(printer.queueIsPaused(u"Frozen"_s));
    EXPECT_FALSE(printer.queueIsPaused(u"ZD421"_s) || printer.queueIsPaused(u"Unknown"_s));
}

TEST_F(PrivateCups, DeliversALabelToThePrinterByteForByte)
{
    QByteArray picture = "^XA^LL1400^GFA,";
    for (int i = 0; i < 300'000; ++i)
        picture += char(i * 7);
    picture += "\r\n^XZ";
    EXPECT_EQ(printer.print(parseLabel(picture), u"ZD421"_s, {}), u"Label sent to ZD421."_s);
    EXPECT_TRUE(printed(u"ZD421"_s) == picture) << "binary bytes must arrive unchanged";

    printer.printZPL(QByteArray("^XA^LL1400^FDMünze\0^XZ\r\n", 25), u"ZD421"_s);
    EXPECT_EQ(printed(u"ZD421"_s), QByteArray("^XA^POI^LL1218^FDMünze\0^XZ\r\n", 29));
}

TEST_F(PrivateCups, ResumesAPausedQueueAndPrints)
{
    pause(u"ZD421"_s);
    printer.printZPL(Zpl::testLabel, u"ZD421"_s);
    EXPECT_EQ(printed(u"ZD421"_s), Zpl::rotated(Zpl::testLabel));
    EXPECT_FALSE(printer.queueIsPaused(u"ZD421"_s));
}

TEST_F(PrivateCups, LeavesNoJobInAQueueThatStaysPaused)
{
    EXPECT_EQ(codedFailureOf([this] { printer.printZPL(Zpl::testLabel, u"Frozen"_s); }).first,
              LabelPrinter::pausedQueue)
        << "a held job does not count as printed";
    EXPECT_TRUE(isIdle(u"Frozen"_s));
    EXPECT_FALSE(QFile::exists(outputPath(u"Frozen"_s)));
}

TEST_F(PrivateCups, ReportsInEveryLanguageWhatBlocksTheLabels)
{
    const QString script = folder->filePath(u"fault"_s);
    for (const char *language : {"de_DE.UTF-8", "fr_FR.UTF-8", "ja_JP.UTF-8"}) {
        for (const char *name : {"LC_ALL", "LANG", "LANGUAGE", "SOFTWARE"})
            qputenv(name, language);
        for (const Json &row : table(u"printers"_s, "faults of a driver")) {
            const QByteArray fault = text(row[0]).toUtf8();
            put(script, fault + "\nwhile [ -e \"$fault\" ]; do sleep 0.05; done\n");
            for (int label = 0; label < 2; ++label)
                processes.run(u"/usr/bin/lpr"_s, {u"-P"_s, u"ZD421"_s, u"-o"_s, u"raw"_s, script});
            const QString sentence = u"2 labels are still waiting on ZD421 — "_s + text(row[1]) + u'.';
            EXPECT_EQ(sentenceOf(u"ZD421"_s, sentence), sentence) << language << ' ' << fault.toStdString();
            QFile::remove(script);
            processes.run(u"/usr/bin/cancel"_s, {u"-a"_s, u"ZD421"_s});
            printer.tryResume(u"ZD421"_s);
        }
    }
}

TEST_F(PrivateCups, PrintsPdfsThroughTheDriverOfTheDocumentPrinter)
{
    EXPECT_TRUE(printer.printPDF(dataFile(u"one-page.pdf"_s), u"Laser"_s));
    const QByteArray page = printed(u"Laser"_s);
    EXPECT_TRUE(page.startsWith("%!PS")) << page.left(80).toStdString();
    EXPECT_THAT(page.toStdString(), HasSubstr("%%Pages: 1"));
}

TEST_F(PrivateCups, ReportsAMissingQueueAMissingServerAndARejectingQueue)
{
    const QByteArray server = qgetenv("CUPS_SERVER");
    for (const QByteArray &address : {server, server + "-gone"}) {
        qputenv("CUPS_SERVER", address);
        const QString queue = address == server ? u"Unknown"_s : u"ZD421"_s;
        EXPECT_EQ(codedFailureOf([&] { printer.printZPL(Zpl::testLabel, queue); }),
                  Failure(1, u"lpr failed: /usr/bin/lpr: Error - The printer or class does not exist.\n"_s));
    }
    EXPECT_TRUE(printer.queues().isEmpty() && printer.zebraQueues().isEmpty());
    EXPECT_THROW(printer.listQueues(), SystemError);
    EXPECT_EQ(printer.queueReport(u"ZD421"_s).trouble, PrinterTrouble::noPrintSystem);
    qputenv("CUPS_SERVER", server);
    EXPECT_EQ(printer.queueReport(u"Unknown"_s).trouble, PrinterTrouble::unknownQueue);
    processes.run(u"/usr/sbin/cupsreject"_s, {u"-r"_s, u"Gone fishing"_s, u"ZD421"_s});
    const QString refusing = u"ZD421: the queue takes no new jobs (“Gone fishing”)."_s;
    EXPECT_EQ(sentenceOf(u"ZD421"_s, refusing), refusing);
    processes.run(u"/usr/sbin/cupsaccept"_s, {u"ZD421"_s});
}

} // namespace parcelory::test

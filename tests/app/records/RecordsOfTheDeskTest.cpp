// What all screens do at the start, and when another program replaces the records.

#include "support/AppTest.h"

#include <fcntl.h>
#include <unistd.h>

namespace parcelory::test {
namespace {

/// A folder of copies on a disk that does not answer: the manifest of a copy can be read only once it is released.
class SilentFolder {
public:
    explicit SilentFolder(const QDir &copies) : m_manifest(QFile::encodeName(copies.filePath(u"silent/copy.json"_s)))
    {
        EXPECT_TRUE(copies.mkdir(u"silent"_s) && ::mkfifo(m_manifest.constData(), 0600) == 0);
    }
    /// Waits for the reader, and ends the file.
    void release()
    {
        int writer = -1;
        runUntil([&] {
            if (writer < 0)
                writer = ::open(m_manifest.constData(), O_WRONLY | O_NONBLOCK); // refused without a reader
            return writer >= 0;
        });
        ::unlink(m_manifest.constData());
        ::close(writer);
    }

private:
    const QByteArray m_manifest;
};

class RecordsOfTheDesk : public testing::Test, public CarrierDesk {
protected:
    RecordsOfTheDesk() { start(); }
    ~RecordsOfTheDesk() override { settleBook(screens->addressBook); }
    /// Starts the program, or starts it again.
    void start(const std::function<void()> &meanwhile = {})
    {
        if (screens)
            settleBook(screens->addressBook);
        screens.reset();
        app.reset();
        if (meanwhile)
            meanwhile();
        app = std::make_unique<AppState>(platform);
        screens = std::make_unique<Screens>(*app);
    }
    QString file(const QString &name) const { return platform.dataFolder.filePath(name); }
    RecordsScreen &records() { return screens->records; }

    ErrorLog errors{platform};
    std::unique_ptr<AppState> app;
    std::unique_ptr<Screens> screens;
};

} // namespace

TEST_F(RecordsOfTheDesk, TellWhatIsWrongBeforeTheFolderOfTheCopiesAnswers)
{
    EXPECT_TRUE(app->log.insert(shipmentTo(u"Jo"_s), false));
    const RecordCopy good = app->copies.make(CopyReason::byHand, clock.now());
    ASSERT_EQ(good.failure, QString());
    for (const bool isDamaged : {true, false}) {
        SCOPED_TRACE(isDamaged);
        start([&] {
            const QString log = file(u"mailing_log.sqlite"_s);
            ASSERT_TRUE(isDamaged ? QFile::resize(log, QFileInfo(log).size() / 2)
                                  : QFile::remove(log) && QDir().mkdir(log)); // it cannot be opened
        });
        bool isShown = false, isStarted = false;
        QObject::connect(&records(), &RecordsScreen::attentionWanted, [&] { isShown = true; });
        SilentFolder silent(app->copies.folder());
        spawn([&]() -> Task<> {
            co_await screens->startRecords();
            isStarted = true;
        });
        runUntil([&] { return isDamaged ? isShown : !prompts.alerts.isEmpty(); });
        EXPECT_FALSE(isStarted);
        EXPECT_EQ(isShown, isDamaged);
        EXPECT_EQ(records().damageText(), isDamaged ? u"The mailing log is damaged — restore a copy."_s : QString());
        EXPECT_EQ(records().selected.value(), QString());
        silent.release();
        runUntil([&] { return isStarted; });
        EXPECT_EQ(records().selected.value(), isDamaged ? good.folder : QString());
        EXPECT_EQ(prompts.alerts.size(), isDamaged ? 0 : 1);
        ASSERT_TRUE(QDir(app->copies.folder().filePath(u"silent"_s)).removeRecursively());
    }
}

TEST_F(RecordsOfTheDesk, AreShownAsAnotherProgramHasRestoredThem)
{
    EXPECT_TRUE(app->log.insert(shipmentTo(u"Former"_s)) && app->addressBook.upsert({.name = u"Former"_s}));
    for (const bool isConfirmed : {false, true}) { // a restore that this window has asked about before
        SCOPED_TRACE(isConfirmed);
        runTask(screens->addressBook.reload());
        settlePool(3);
        records().report = LogChain::Report{};
        records().restore.logDamaged = true;
        records().restore.review = RestoreReview{.copy = {.folder = u"copy"_s}};
        screens->mailingLog.selected = 1;
        EXPECT_TRUE(screens->mailingLog.selectedRecord());
        const QTemporaryDir other;
        const QString restored = isConfirmed ? u"Again"_s : u"Restored"_s;
        {
            ShipmentLog log{QDir(other.path())};
            LocalAddressStore book{QDir(other.path())};
            EXPECT_TRUE(log.insert(shipmentTo(restored), false) && book.upsert({.name = restored}));
        }
        for (const QString &name : {u"mailing_log.sqlite"_s, u"addresses.sqlite"_s})
            ASSERT_EQ(std::rename(qUtf8Printable(other.filePath(name)), qUtf8Printable(file(name))), 0);
        if (isConfirmed)
            runTask(records().restore.restore());
        EXPECT_EQ(rowOf(app->log, 1).recipient, restored);
        runUntil([&] {
            return shown(app->log) == QStringList{restored} &&
                   each(screens->addressBook.contacts(), &PostalContact::name) == QStringList{restored};
        });
        EXPECT_FALSE(records().report.value() || records().restore.isDamaged());
        EXPECT_FALSE(screens->mailingLog.selected.value()) << "its id may be another label's";
        EXPECT_TRUE(records().restore.review.value().copy.folder.isEmpty()) << "it is about the former log";
        EXPECT_EQ(records().message.value(), u"Another Parcelory has just restored a copy — press Restore again to see "
                                             "what the chosen copy would change now."_s);
        records().message = QString();
    }
}

} // namespace parcelory::test

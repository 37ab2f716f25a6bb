#include "app/records/RecordsScreen.h"
#include "app/logs/VerifyTexts.h"
#include "support/LogFile.h"
#include "support/MailingLogDesk.h"

namespace parcelory::test {

namespace {

class RecordsScreenTest : public MailingLogDesk {
protected:
    RecordsScreen records{*app};

    void folderFile(const QString &name) const
    {
        QFile file(platform.dataFolder.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    }
    QStringList made() const
    {
        QStringList reasons;
        for (const RecordCopy &copy : records.copies.value())
            reasons += copy.isGood() ? copy.reason : u"failed "_s + copy.reason;
        return reasons;
    }
    static void finish(Task<> task)
    {
        runTask(std::move(task));
        settle();
    }
    void shipAfter(FakeClock::Duration pause)
    {
        clock.advance(pause);
        EXPECT_TRUE(app->log.insert(shipmentTo(u"Jo"_s)));
        endCopy();
    }
    void endCopy()
    {
        settle();
        runUntil([&] { return !records.copying; });
        settlePool();
    }
};

} // namespace

TEST_F(RecordsScreenTest, CopiesOnceADayAndSaysHowOldTheLastGoodCopyIs)
{
    clock.start = QDateTime(QDate(2026, 11, 20), QTime(14, 41));
    EXPECT_EQ(records.ageText(), u"No copy yet."_s);
    finish(records.start());
    EXPECT_EQ(made(), QStringList{u"daily"_s});
    EXPECT_EQ(records.ageText(), u"Last good copy just now"_s);
    shipAfter(9h);
    EXPECT_EQ(made(), QStringList{u"daily"_s});
    EXPECT_EQ(records.ageText(), u"Last good copy 9 hours ago"_s);
    shipAfter(1h);
    EXPECT_EQ(made(), QStringList({u"daily"_s, u"daily"_s}));

    finish(records.start()); // as at the next start
    EXPECT_EQ(made().size(), 2);
    clock.start = clock.start.addMonths(-1); // someone corrects the clock
    shipAfter(2h);
    EXPECT_EQ(made().size(), 3);
    clock.start = clock.start.addMonths(1);

    clock.advance(24h); // nothing changes
    endCopy();
    EXPECT_EQ(made().size(), 4);

    folderFile(u"blocked"_s);
    app->copies.setFolder(QDir(platform.dataFolder.filePath(u"blocked"_s)));
    clock.advance(24h);
    endCopy();
    EXPECT_FALSE(records.message.value().isEmpty());
    records.message = QString();
    clock.advance(59min);
    endCopy();
    EXPECT_TRUE(records.message.value().isEmpty());
    clock.advance(1min);
    endCopy();
    EXPECT_FALSE(records.message.value().isEmpty()) << "tried again";
    finish(records.copyNow());
    EXPECT_EQ(records.message.value(), u"Parcelory can't copy the records — The copies folder can't be written."_s);
    app->copies.setFolder(QDir(platform.dataFolder.filePath(u"Copies"_s)));
    clock.start = clock.start.addDays(4);
    finish(records.copyNow(CopyReason::byHand));
    settle();
    EXPECT_FALSE(records.isLate());
    clock.start = clock.start.addDays(3);
    EXPECT_FALSE(records.isLate());
    clock.advance(1min);
    EXPECT_TRUE(records.isLate());
    records.copies = QList<RecordCopy>(); // their disk is not there
    EXPECT_TRUE(records.isLate()) << "the labels are older";
}

TEST_F(RecordsScreenTest, CopiesBeforeAnImportAndAsksIfThatFails)
{
    const QString list = platform.dataFolder.filePath(u"mail.txt"_s);
    QFile file(list);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(mailLine("Jo, 1 Elm St, Bend OR 97701"));
    file.close();
    prompts.file = list;
    finish(log.importCSV());
    settle();
    EXPECT_EQ(log.records().size(), 1);
    runUntil([this] { return !records.copies.value().isEmpty(); });
    EXPECT_EQ(made(), QStringList{u"beforeImport"_s});

    folderFile(u"blocked"_s);
    app->copies.setFolder(QDir(platform.dataFolder.filePath(u"blocked"_s)));
    int onFailedCopy = 0; // Go On
    prompts.whileAsked = [&] {
        constexpr int importAll = 2;
        prompts.answer = prompts.questions.last().title == u"Records Not Copied"_s ? onFailedCopy : importAll;
    };
    finish(log.importCSV());
    EXPECT_EQ(log.records().size(), 2);
    EXPECT_EQ(prompts.questions.last().title, u"Records Not Copied"_s);
    onFailedCopy = 1;
    finish(log.importCSV());
    EXPECT_EQ(log.records().size(), 2) << "Cancel imports nothing";
}

TEST(VerifyTexts, SumUpOnlyWhatWasFound)
{
    for (const Json &row : table(u"mailing-log"_s, "summaries of a verification")) {
        LogChain::Report report{.labels = 1200, .findings = QList<LogChain::Finding>(row[0].get<qsizetype>())};
        report.findings += QList<LogChain::Finding>(row[1].get<qsizetype>(), {.problem = LogChain::Problem::otherLog});
        EXPECT_EQ(VerifyTexts::summaryOf(report), text(row[2]));
    }
}

TEST_F(RecordsScreenTest, VerifiesTheLogAgainstTheChainAndTheCopies)
{
    bought();
    finish(records.start());
    finish(records.verify());
    EXPECT_EQ(records.report.value()->labels, 1);
    EXPECT_TRUE(records.report.value()->findings.isEmpty());
    const RecordCopy aside = app->copies.setAside(clock.now()).copy; // by a restore that is killed then
    ASSERT_TRUE(app->copies.markReplaced(aside, clock.now().addDays(-1)));
    finish(records.start());
    const auto isMarked = [](const RecordCopy &copy) { return copy.restored.has_value(); };
    EXPECT_TRUE(std::ranges::none_of(app->copies.list(), isMarked)) << "nothing was replaced";
    Database(platform.dataFolder.filePath(u"mailing_log.sqlite"_s))
        .exec("UPDATE shipments SET tracking = '1'; DROP TABLE log_chain; DELETE FROM sqlite_sequence"
              " WHERE name = 'log_chain'");
    finish(records.start());
    finish(records.verify());
    ASSERT_FALSE(records.report.value()->findings.isEmpty()) << "the copy knows the former chain";
    EXPECT_EQ(records.report.value()->findings.first().problem, LogChain::Problem::unsealed);
}

} // namespace parcelory::test

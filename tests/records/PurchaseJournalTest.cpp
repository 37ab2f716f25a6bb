#include "records/PurchaseJournal.h"

#include "core/AppError.h"
#include "core/Sqlite.h"
#include "support/Printing.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QTemporaryDir>

#include <chrono>
#include <memory>
#include <thread>

namespace parcelory::test {
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

class PurchaseJournalTest : public testing::Test {
protected:
    /// Why nothing can be recorded; empty if an entry was recorded.
    static QString refusal(PurchaseJournal &journal)
    {
        try {
            journal.begin({.rateId = u"rate"_s});
            return {};
        } catch (const AppError &error) {
            return error.description();
        }
    }

    QTemporaryDir folder;
    const QDir place{folder.path()};
};

/// A backup or another tool that reads the journal: holds SQLite's shared lock while it exists.
struct Reader {
    Database db;
    explicit Reader(const QDir &place) : db(place.filePath(u"purchase_journal.sqlite"_s))
    {
        EXPECT_TRUE(db.exec("BEGIN; SELECT count(*) FROM purchases;"));
    }
};

} // namespace

TEST_F(PurchaseJournalTest, OpensAsSoonAsAnotherProgramClosesTheFile)
{
    PurchaseJournal(place).open();
    auto reader = std::make_unique<Reader>(place);
    PurchaseJournal journal(place, 0ms);
    EXPECT_EQ(journal.trouble(), QString()) << "nothing is opened before the first call";
    EXPECT_TRUE(journal.openPurchases().isEmpty());
    EXPECT_TRUE(refusal(journal).contains(u" — another program has the file open."_s));
    EXPECT_TRUE(journal.trouble().contains(u" — another program has the file open."_s));
    EXPECT_FALSE(QFile::exists(place.filePath(u"purchase_journal.lock"_s))) << "it may be another copy's turn";
    reader.reset();
    EXPECT_EQ(refusal(journal), QString());
    EXPECT_EQ(journal.openPurchases().size(), 1);
    EXPECT_EQ(journal.trouble(), QString());
}

TEST_F(PurchaseJournalTest, WaitsForAReaderToFinish)
{
    PurchaseJournal(place).open();
    auto reader = std::make_unique<Reader>(place);
    PurchaseJournal journal(place, 1min);
    std::thread closing([&reader] { reader.reset(); });
    EXPECT_EQ(refusal(journal), QString());
    closing.join();
}

TEST_F(PurchaseJournalTest, OnlyASecondParceloryIsCalledOne)
{
    auto first = std::make_unique<PurchaseJournal>(place);
    first->open();
    PurchaseJournal second(place, 1h); // does not wait for a program that keeps its lock
    EXPECT_TRUE(refusal(second).contains(u" — another Parcelory is running."_s));
    EXPECT_EQ(refusal(*first), QString());
    first.reset();
    EXPECT_EQ(refusal(second), QString());
    EXPECT_EQ(second.openPurchases().size(), 2);
}

} // namespace parcelory::test

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

TEST_F(PurchaseJournalTest, KeepsAPurchaseUntilItIsClosed)
{
    const QDateTime asked = QDateTime(QDate(2026, 11, 20), QTime(14, 41));
    OpenPurchase purchase{.askedAt = asked,
                          .rateId = u"r"_s,
                          .keyName = u"Live"_s,
                          .recipient = {.name = u"Ana"_s, .zip = u"89501"_s},
                          .keepRecipient = true,
                          .record = {.createdAt = asked, .service = u"Ground"_s, .customsPDF = "%PDF"}};
    {
        PurchaseJournal journal(place);
        purchase.id = journal.begin(purchase);
        EXPECT_EQ(refusal(journal), QString());
        purchase.record.transactionID = u"t"_s;
        purchase.record.zpl = "^XA^XZ";
        EXPECT_TRUE(journal.update(purchase.id, purchase.record) && journal.markPrinted(purchase.id));
        journal.beginRefund({u"t"_s, 1, asked});
        journal.beginRefund({u"t"_s, 2, asked});
        journal.beginRefund({u"u"_s, 3, asked.addSecs(-9)});
    }
    const auto spoil = "INSERT INTO purchases (id, asked_at, rate_id, key_name, recipient, keep_recipient, shipment)"
                       " VALUES (0, 1, 'r', 'k', '{', 0, '{')";
    ASSERT_TRUE(Database(place.filePath(u"purchase_journal.sqlite"_s)).exec(spoil));
    PurchaseJournal journal(place);
    const QList<OpenPurchase> open = journal.openPurchases();
    ASSERT_EQ(open.size(), 2) << "an unreadable entry hides no other";
    const OpenPurchase &kept = open.first();
    EXPECT_EQ(kept.askedAt, asked);
    EXPECT_EQ((QStringList{kept.rateId, kept.keyName, kept.record.service, kept.record.transactionID}),
              (QStringList{u"r"_s, u"Live"_s, u"Ground"_s, u"t"_s}));
    EXPECT_EQ(kept.recipient, purchase.recipient);
    EXPECT_EQ(kept.record.zpl, "^XA^XZ");
    EXPECT_EQ(kept.record.customsPDF, "%PDF");
    EXPECT_TRUE(kept.keepRecipient && kept.printed && !open[1].printed);
    EXPECT_TRUE(journal.close(kept.id));
    EXPECT_EQ(journal.openPurchases().size(), 1);
    const QList<OpenRefund> refunds = journal.openRefunds();
    ASSERT_EQ(refunds.size(), 2);
    EXPECT_EQ(refunds[0].transactionId + refunds[1].transactionId, u"ut"_s);
    EXPECT_EQ(refunds[1].shipmentId, 2);
    EXPECT_TRUE(journal.closeRefund(u"t"_s));
    EXPECT_EQ(journal.openRefunds().size(), 1);
}

TEST_F(PurchaseJournalTest, SetsADamagedFileAsideAndSaysSo)
{
    const QString path = place.filePath(u"purchase_journal.sqlite"_s);
    {
        PurchaseJournal journal(place);
        for (int entry = 0; entry < 200; ++entry)
            journal.begin({.rateId = QString(100, u'r')});
    }
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite) && file.seek(file.size() / 2) && file.write(QByteArray(4096, 'j')));
    file.close();
    PurchaseJournal journal(place);
    EXPECT_TRUE(journal.openPurchases().isEmpty());
    EXPECT_TRUE(journal.trouble().contains(u"The journal of purchases was damaged. It is kept as "_s + path));
    EXPECT_EQ(place.entryList({u"*.damaged-*"_s}).size(), 1);
    EXPECT_EQ(refusal(journal), QString());
}

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
    EXPECT_TRUE(
        refusal(second).contains(u" — Parcelory is already open. Use that window; labels can't be bought here."_s));
    EXPECT_EQ(refusal(*first), QString());
    first.reset();
    EXPECT_EQ(refusal(second), QString());
    EXPECT_EQ(second.openPurchases().size(), 2);
}

} // namespace parcelory::test

#include "records/PurchaseJournal.h"
#include "support/Test.h"

#include "core/Sqlite.h"
#include "support/FaultyDisk.h"

namespace parcelory::test {
namespace {

class PurchaseJournalTest : public testing::Test {
protected:
    /// Why nothing can be recorded.
    static QString refusal(PurchaseJournal &journal)
    {
        return failureOf([&] { journal.begin({.rateId = u"rate"_s}); });
    }

    QTemporaryDir folder;
    const QDir place{folder.path()};
};

/// A backup or another tool that reads the journal: holds SQLite's shared lock while it exists.
std::unique_ptr<Database> readerOf(const QDir &place)
{
    auto reader = std::make_unique<Database>(place.filePath(u"purchase_journal.sqlite"_s));
    EXPECT_TRUE(reader->exec("BEGIN; SELECT count(*) FROM purchases;"));
    return reader;
}

} // namespace

TEST_F(PurchaseJournalTest, KeepsAPurchaseUntilItIsClosed)
{
    const QDateTime asked = QDateTime(QDate(2026, 11, 20), QTime(14, 41));
    OpenPurchase purchase{.askedAt = asked,
                          .ratedAt = asked.addSecs(-40),
                          .rateId = u"r"_s,
                          .keyName = u"Live"_s,
                          .recipient = {.name = u"Ana"_s, .zip = u"89501"_s},
                          .keepRecipient = true,
                          .record = {.createdAt = asked, .service = u"Ground"_s, .customsPDF = "%PDF"}};
    {
        PurchaseJournal journal(place);
        purchase.id = journal.begin(purchase);
        EXPECT_EQ(refusal(journal), u"no failure"_s);
        purchase.record.transactionID = u"t"_s;
        purchase.record.zpl = "^XA^XZ";
        EXPECT_TRUE(journal.update(purchase.id, purchase.record) && journal.markPrinted(purchase.id));
        journal.beginRefund({u"t"_s, 1, asked});
        journal.beginRefund({u"t"_s, 2, asked});
        journal.beginRefund({u"u"_s, 3, asked.addSecs(-9)});
    }
    PurchaseJournal journal(place);
    const QList<OpenPurchase> open = journal.openPurchases();
    ASSERT_EQ(open.size(), 2);
    const OpenPurchase &kept = open.first();
    EXPECT_EQ(std::tuple(kept.askedAt, kept.ratedAt, kept.rateId, kept.keyName, kept.recipient, kept.record),
              std::tuple(asked, purchase.ratedAt, u"r"_s, u"Live"_s, purchase.recipient, purchase.record));
    EXPECT_TRUE(kept.keepRecipient && kept.printed && !open[1].printed && !open[1].ratedAt.isValid());
    EXPECT_EQ(journal.trouble(), QString());
    EXPECT_TRUE(journal.close(kept.id));
    EXPECT_EQ(journal.openPurchases().size(), 1);
    const QList<OpenRefund> refunds = journal.openRefunds();
    ASSERT_EQ(refunds.size(), 2);
    EXPECT_EQ(refunds[0].transactionId + refunds[1].transactionId, u"ut"_s);
    EXPECT_EQ(refunds[1].shipmentId, 2);
    EXPECT_TRUE(journal.closeRefund(u"t"_s));
    EXPECT_EQ(journal.openRefunds().size(), 1);
}

TEST_F(PurchaseJournalTest, AnEntryOfAnotherVersionIsNeverForgotten)
{
    const QByteArray deep = QByteArray(60000, '[') + QByteArray(60000, ']');
    const std::tuple<QByteArray, QByteArray, bool, QString> rows[] = {
        // recipient, shipment, readable, name
        {"{", "{", false, {}},
        {"", "", false, {}},
        {deep, deep, false, {}},
        {R"({"name":"Ana"})", R"({"service":7})", false, u"Ana"_s},
        {R"({"name":"Ana"})", R"({"service":"Ground"})", true, u"Ana"_s}, // of a version with fewer fields
        {R"({"name":"Ana","fax":""})", R"({"service":"Ground","carrier":"FedEx","hold":[1]})", true,
         u"Ana"_s}, // of one with more
    };
    {
        Database former(place.filePath(u"purchase_journal.sqlite"_s));
        ASSERT_TRUE(former.exec(dataFile(u"first-purchase-journal.sql"_s).constData()));
        for (const auto &[recipient, shipment, isReadable, name] : rows)
            EXPECT_TRUE(execute(former,
                                "INSERT INTO purchases (asked_at, rate_id, key_name, recipient, keep_recipient, "
                                "shipment) VALUES (1000, 'r', 'k', ?, 1, ?)",
                                QString::fromUtf8(recipient), QString::fromUtf8(shipment)));
    }
    PurchaseJournal journal(place);
    const QList<OpenPurchase> open = journal.openPurchases();
    ASSERT_EQ(open.size(), std::size(rows));
    for (int i = 0; i < open.size(); ++i) {
        const auto &[recipient, shipment, isReadable, name] = rows[i];
        EXPECT_EQ(open[i].isUnreadable, !isReadable) << i;
        EXPECT_EQ(open[i].rateId + open[i].keyName + open[i].recipient.name, u"rk"_s + name) << i;
        EXPECT_EQ(open[i].askedAt.toSecsSinceEpoch() + open[i].record.createdAt.toSecsSinceEpoch(), 2000) << i;
        EXPECT_EQ(open[i].record.service, isReadable ? u"Ground"_s : QString()) << i;
        EXPECT_EQ(open[i].printsPapers, open[i].record.carrier == u"FedEx"_s) << i;
    }
    EXPECT_TRUE(journal.trouble().startsWith(u"Open purchases in the journal that cannot be read completely: 4."_s))
        << journal.trouble().toStdString();
}

TEST_F(PurchaseJournalTest, ModeAndTransactionAreKnownWithoutTheRecord)
{
    {
        PurchaseJournal journal(place);
        OpenPurchase purchase{.rateId = u"r"_s, .record = {.testMode = true}};
        purchase.id = journal.begin(purchase);
        purchase.record.transactionID = u"t"_s;
        EXPECT_TRUE(journal.update(purchase.id, purchase.record));
    }
    ASSERT_TRUE(Database(place.filePath(u"purchase_journal.sqlite"_s)).exec("UPDATE purchases SET shipment = '{'"));
    const OpenPurchase open = PurchaseJournal(place).openPurchases().value(0);
    EXPECT_TRUE(open.isUnreadable && open.record.testMode);
    EXPECT_EQ(open.record.transactionID, u"t"_s);
}

TEST_F(PurchaseJournalTest, AFailedReadForgetsNothing)
{
    {
        PurchaseJournal journal(place);
        for (int entry = 0; entry < 60; ++entry)
            journal.begin({.rateId = QString(200, u'r'), .record = {.customsPDF = QByteArray(60'000, 'p')}});
    }
    int failures = 0;
    // The file is larger than the database's cache, so both its check and the query read the disk.
    for (int read = 0;; read += read < 10 ? 1 : 97) {
        const FaultyDisk disk(u"purchase_journal.sqlite"_s, read);
        PurchaseJournal journal(place, 0ms);
        qsizetype found = 0;
        try {
            journal.open();
            found = journal.openPurchases().size();
        } catch (const AppError &error) {
            ++failures;
            EXPECT_TRUE(error.description().contains(u"No request was sent"_s)) << error.description().toStdString();
            EXPECT_TRUE(journal.trouble().contains(u"no label can be bought here"_s)) << read;
            found = journal.openPurchases().size(); // opens the file again
        }
        EXPECT_EQ(found, 60) << read;
        EXPECT_TRUE(place.entryList({u"*.damaged-*"_s}).isEmpty()) << read;
        if (!disk.hasFailed())
            break;
    }
    EXPECT_GT(failures, 20);
}

TEST_F(PurchaseJournalTest, SetsADamagedFileAsideAndSaysSo)
{
    const QString path = place.filePath(u"purchase_journal.sqlite"_s);
    {
        PurchaseJournal journal(place);
        for (int entry = 0; entry < 60; ++entry)
            journal.begin({.rateId = QString(900, u'r'), .recipient = {.name = QString::number(entry)}});
        journal.beginRefund({u"t"_s, 7, QDateTime::fromSecsSinceEpoch(1000)});
    }
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadWrite) && file.seek(file.size() / 2) && file.write(QByteArray(4096, 'j')));
    file.close();
    PurchaseJournal journal(place);
    const QList<OpenPurchase> kept = journal.openPurchases();
    EXPECT_TRUE(kept.size() > 45 && kept.size() < 60) << kept.size();
    EXPECT_EQ(kept.value(0).recipient.name + kept.last().recipient.name, u"059"_s);
    EXPECT_EQ(journal.openRefunds().value(0).shipmentId, 7);
    EXPECT_TRUE(journal.trouble().contains(u"The journal of purchases was damaged. It is kept as "_s + path));
    EXPECT_TRUE(journal.trouble().contains(u"with the %1 entries"_s.arg(kept.size() + 1)));
    EXPECT_EQ(place.entryList({u"*.damaged-*"_s}).size(), 1);
    EXPECT_EQ(refusal(journal), u"no failure"_s);
}

TEST_F(PurchaseJournalTest, OpensAsSoonAsAnotherProgramClosesTheFile)
{
    PurchaseJournal(place).open();
    std::unique_ptr<Database> reader = readerOf(place);
    PurchaseJournal journal(place, 0ms);
    EXPECT_EQ(journal.trouble(), QString()) << "nothing is opened before the first call";
    EXPECT_TRUE(journal.openPurchases().isEmpty());
    EXPECT_TRUE(refusal(journal).contains(u" — another program has the file open."_s));
    EXPECT_TRUE(journal.trouble().contains(u" — another program has the file open."_s));
    EXPECT_FALSE(QFile::exists(place.filePath(u"purchase_journal.lock"_s))) << "it may be another copy's turn";
    reader.reset();
    EXPECT_EQ(refusal(journal), u"no failure"_s);
    EXPECT_EQ(journal.openPurchases().size(), 1);
    EXPECT_EQ(journal.trouble(), QString());
}

TEST_F(PurchaseJournalTest, WaitsForAReaderToFinish)
{
    PurchaseJournal(place).open();
    std::unique_ptr<Database> reader = readerOf(place);
    PurchaseJournal journal(place, 1min);
    std::thread closing([&reader] { reader.reset(); });
    EXPECT_EQ(refusal(journal), u"no failure"_s);
    closing.join();
}

TEST_F(PurchaseJournalTest, OnlyASecondParceloryIsCalledOne)
{
    auto first = std::make_unique<PurchaseJournal>(place);
    first->open();
    PurchaseJournal second(place, 1h); // does not wait for a program that keeps its lock
    EXPECT_TRUE(
        refusal(second).contains(u" — Parcelory is already open. Use that window; labels can't be bought here."_s));
    EXPECT_EQ(refusal(*first), u"no failure"_s);
    first.reset();
    EXPECT_EQ(refusal(second), u"no failure"_s);
    EXPECT_EQ(second.openPurchases().size(), 2);
}

} // namespace parcelory::test

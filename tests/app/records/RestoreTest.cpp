#include "app/records/RestoreRecords.h"
#include "app/records/RestoreTexts.h"
#include "records/Journeys.h"
#include "records/OpenItems.h"
#include "support/AppTest.h"
#include "support/FaultyDisk.h"

namespace parcelory::test {

namespace {

class RestoreTest : public LabelTest {
protected:
    std::unique_ptr<RecordsScreen> records = std::make_unique<RecordsScreen>(*app);
    QStringList sold;

    QString file(const QString &name) const { return platform.dataFolder.filePath(name); }
    QString logFile() const { return file(u"mailing_log.sqlite"_s); }
    void buyLabel()
    {
        LabelDesk::buyLabel();
        clock.advance(1min);
        app->log.reload();
        settle();
        sold += newest().transactionID;
    }
    void copy()
    {
        run(records->copyNow());
        runUntil([this] { return records->lastGood().has_value(); });
        records->selected = records->lastGood()->folder;
        clock.advance(1h);
    }
    bool isOffered()
    {
        runTask(records->lookForDamage());
        return runTask(records->offerCopy());
    }
    void openRestore()
    {
        runTask(records->openRestore()); // without the clock, which would run ahead of the account's answer
        EXPECT_TRUE(records->restore.canRestore());
    }
    void restore()
    {
        run(records->restore.restore());
        settlePool();
    }
    QStringList logged()
    {
        app->log.reload();
        settle();
        QStringList transactions = each(app->log.records(), &ShipmentRecord::transactionID);
        transactions.sort(); // the carrier's clock is not the desk's
        sold.sort();
        return transactions;
    }
    void expectAllBack()
    {
        EXPECT_EQ(logged(), sold);
        EXPECT_TRUE(app->log.verify()->findings.isEmpty());
        for (const ShipmentRecord &row : app->log.records())
            EXPECT_TRUE(*app->log.zpl(row.id)) << "its label can be printed";
    }
    /// Damages a file while no program has it open, and starts again.
    void restartWith(const std::function<void(QFile &file)> &damage, const QString &damaged = {})
    {
        endLookups();
        records.reset();
        screenOwner.reset();
        app.reset();
        QFile file(damaged.isEmpty() ? logFile() : damaged);
        ASSERT_TRUE(file.open(QIODevice::ReadWrite));
        damage(file);
        file.close();
        app = std::make_unique<AppState>(platform);
        screenOwner = std::make_unique<LabelScreen>(*app);
        records = std::make_unique<RecordsScreen>(*app);
    }
};

} // namespace

TEST_F(RestoreTest, BringsBackTheLabelsBoughtSinceAndSetsThePresentRecordsAside)
{
    buyLabel();
    PostalContact ann{.name = u"Ann"_s};
    EXPECT_TRUE(app->addressBook.upsert(ann));
    app->boxes.profiles = QList{BoxProfile{.name = u"Carton"_s}};
    app->boxes.flush();
    copy();
    buyLabel();
    buyLabel();
    EXPECT_TRUE(app->log.setStatus(rowOf(app->log, 1), u"REFUND_PENDING"_s));
    const Journey journey{
        .status = TrackingStatus::delivered, .isScanned = true, .movedAt = clock.now(), .askedAt = clock.now()};
    EXPECT_TRUE(Journeys::learn(app->log, rowOf(app->log, 1), u"DELIVERED"_s, [&](const auto &) { return journey; }));
    EXPECT_TRUE(OpenItems::setDone(app->log, rowOf(app->log, 1), OpenReason::returned, true));
    EXPECT_TRUE(app->log.insert(shipmentTo(u"Imported"_s)));
    EXPECT_TRUE(app->addressBook.upsert({.name = u"Bea"_s}));
    ann.city = u"Bend"_s;
    EXPECT_TRUE(app->addressBook.upsert(ann));
    app->boxes.profiles = QList{BoxProfile{.name = u"Tube"_s}, BoxProfile{.name = u"Crate"_s}};
    std::ignore = app->senders.add();
    const qint64 open = app->journal.begin({.askedAt = clock.now(), .rateId = u"open"_s});

    carrier.setScenario({.endlessNext = true});
    openRestore();
    carrier.setScenario({});
    const RestoreReview review = records->restore.review;
    EXPECT_EQ(review.added.labels.size(), 2);
    EXPECT_EQ(review.added.imported, 1);
    EXPECT_EQ(review.boxes, 1);
    const QList<RestoreTexts::Group> groups = RestoreTexts::groupsOf(review);
    EXPECT_EQ(groups.value(1).lines, QStringList({u"1 imported shipment added since"_s, u"1 address added since"_s,
                                                  u"1 address changed since"_s, u"2 boxes added or changed since"_s,
                                                  u"1 sender profile added or changed since"_s}));
    EXPECT_EQ(groups.value(3).head, u"Older labels that the account didn't list, and the 1 imported shipment, and the "
                                    "1 address, and the changes to 1 address, 2 boxes, 1 sender profile"_s);
    EXPECT_EQ(review.account, RestoreReview::Account::answered);
    EXPECT_TRUE(review.fromAccount.isEmpty()) << "both logs know the account's labels";
    restore();
    EXPECT_EQ(records->message.value(), QString());
    EXPECT_TRUE(records->restored.value().endsWith(u"— 2 labels brought back."_s))
        << records->restored.value().toStdString();
    expectAllBack();
    EXPECT_EQ(rowOf(app->log, 1).refund, u"REFUND_PENDING"_s) << "the money is asked back all the same";
    EXPECT_EQ(rowOf(app->log, 1).status, u"DELIVERED"_s) << "the carrier is not asked again";
    EXPECT_EQ(app->labelHistory.of(1)->tracked, TrackingStatus::delivered);
    {
        const Database log(logFile());
        EXPECT_EQ(Journeys::among(log, {1})->value(1), journey);
        Statement done(log, "SELECT reason FROM open_items_done WHERE shipment_id = 1");
        EXPECT_TRUE(done.step() && done.text(0) == wordOf(OpenReason::returned));
    } // it would keep a label from being stored
    EXPECT_EQ(app->addressBook.rows().size(), 1);
    EXPECT_EQ(app->boxes.profiles.value().size(), 1);
    EXPECT_EQ(app->journal.openPurchases().value(0).id, open);
    runUntil([this] { return records->copies.value().value(0).reason == u"beforeRestore"_s; });
    const RecordCopy aside = records->copies.value().first();
    EXPECT_TRUE(aside.folder.startsWith(u"Before Restore "_s) && aside.isGood());
    EXPECT_EQ(aside.labels, 4);
    EXPECT_EQ(aside.addresses, 2);

    buyLabel(); // the log goes on, and its chain does, too
    run(records->verify());
    EXPECT_TRUE(records->report.value()->findings.isEmpty()) << "copies of the former log do not count";
    records->selected = aside.folder;
    openRestore();
    restore();
    EXPECT_EQ(logged().size(), 5) << "the restore can be taken back, and keeps the new label";
    EXPECT_EQ(QDir(app->copies.folder()).entryList({u"Before Restore*"_s}).size(), 2);
}

TEST_F(RestoreTest, ADamagedLogOffersTheNewestGoodCopyAndTheAccountKnowsTheRest)
{
    const std::pair<const char *, std::function<void(QFile &)>> cases[] = {
        {"torn page",
         [](QFile &log) {
             constexpr qint64 page = 4096;
             log.seek(page + page / 2); // the root of the shipments
             log.write(QByteArray(page / 2, '\x7f'));
         }},
        {"truncated", [](QFile &log) { log.resize(log.size() / 2); }},
        {"zeroed",
         [](QFile &log) {
             const auto size = log.size();
             log.write(QByteArray(size, '\0'));
         }},
        {"emptied", [](QFile &log) { log.resize(0); }},
    };
    buyLabel();
    for (const auto &[name, damage] : cases) {
        SCOPED_TRACE(name);
        copy();
        buyLabel();
        restartWith(damage);
        bool isShown = false;
        QObject::connect(records.get(), &RecordsScreen::attentionWanted, [&] { isShown = true; });
        EXPECT_TRUE(isOffered());
        EXPECT_TRUE(isShown);
        EXPECT_EQ(records->damageText(), u"The mailing log is damaged — restore a copy."_s);
        EXPECT_EQ(records->selected.value(), records->lastGood()->folder);
        openRestore();
        EXPECT_EQ(records->restore.review.value().lost(), 1);
        restore();
        EXPECT_EQ(records->message.value(), QString());
        EXPECT_EQ(records->damageText(), QString());
        expectAllBack();
        EXPECT_FALSE(isOffered());
    }
}

TEST_F(RestoreTest, ADamagedAddressBookOffersTheNewestGoodCopyAndTheLabelsStay)
{
    buyLabel();
    ASSERT_TRUE(app->addressBook.upsert({.name = u"Ann"_s}));
    copy();
    buyLabel();
    restartWith([](QFile &book) { book.resize(book.size() / 2); }, file(u"addresses.sqlite"_s));
    EXPECT_TRUE(isOffered());
    EXPECT_EQ(records->damageText(), u"The address book is damaged — restore a copy."_s);
    EXPECT_TRUE(records->restore.bookDamaged && !records->restore.logDamaged);
    EXPECT_EQ(records->selected.value(), records->lastGood()->folder);
    openRestore();
    restore();
    EXPECT_EQ(records->message.value(), QString());
    EXPECT_EQ(records->damageText(), QString());
    EXPECT_EQ(app->addressBook.rows().value(0).name, u"Ann"_s);
    expectAllBack();
    EXPECT_FALSE(isOffered());
}

TEST_F(RestoreTest, ChangesNothingIfItCannotBeCompleted)
{
    buyLabel();
    copy();
    buyLabel();
    const auto expectUnchanged = [this](const QString &why) {
        EXPECT_EQ(records->message.value(), u"The copy was not restored — "_s + why + u". Nothing was changed."_s);
        expectAllBack();
        EXPECT_FALSE(platform.dataFolder.exists(u"Restoring"_s));
    };
    openRestore();
    {
        const FullDisk disk(8192);
        restore();
    }
    expectUnchanged(u"the disk is full or can't be written (addresses.sqlite)"_s);

    openRestore();
    QDir copies = app->copies.folder();
    QFile inTheWay(copies.filePath(app->copies.setAsideName(clock.now()) + u".partial"_s));
    ASSERT_TRUE(inTheWay.open(QIODevice::WriteOnly));
    restore();
    expectUnchanged(u"Parcelory can't set today's records aside: the copies folder can't be written"_s);
    ASSERT_TRUE(inTheWay.remove());

    openRestore();
    const Progress locksNote({}, [this](qint64, qint64) { platform.dataFolder.mkpath(u"Restoring/restore.json/x"_s); });
    EXPECT_EQ(
        restoreRecords(*app, records->restore.review.value(), clock.now(), locksNote).failure,
        u"The copy was not restored — the folder of the records can't be written. Nothing was changed, but the next "
        "start of Parcelory may restore the copy; today's records are kept among the copies."_s);
    EXPECT_EQ(app->copies.list().value(0).reason, u"beforeRestore"_s);
    EXPECT_TRUE(QDir(file(u"Restoring"_s)).removeRecursively());
    records->restore.close();

    openRestore();
    QFile copied(copies.filePath(records->selected.value() + u"/mailing_log.sqlite"_s));
    ASSERT_TRUE(copied.open(QIODevice::ReadWrite) && copied.seek(copied.size() - 1) && copied.putChar('x'));
    copied.close();
    restore();
    expectUnchanged(u"mailing_log.sqlite: not as it was copied"_s);

    records->restore.obstacle = [] { return u"A purchase is in progress — restore the copy when it is done."_s; };
    run(records->openRestore());
    EXPECT_EQ(records->message.value(), records->restore.obstacle());
    EXPECT_FALSE(records->restore.canRestore());
}

TEST_F(RestoreTest, AFailedReadOfTheJournalEndsTheRestore)
{
    buyLabel();
    for (int entry = 0; entry < 60; ++entry) // more than the database's cache holds
        app->journal.begin({.rateId = QString::number(entry), .record = {.customsPDF = QByteArray(60'000, 'p')}});
    copy();
    QStringList told;
    for (int reads = 300;; reads += 300) {
        const FaultyDisk disk(u"purchase_journal.sqlite"_s, reads);
        restartWith([](QFile &) {});
        EXPECT_FALSE(isOffered());
        records->selected = records->lastGood()->folder;
        openRestore();
        restore();
        EXPECT_FALSE(records->restore.running);
        told += records->message.value();
        if (!disk.hasFailed())
            break;
    }
    EXPECT_TRUE(
        told.contains(u"The copy was not restored — the purchase journal can't be read. Nothing was changed."_s))
        << told.join(u'\n').toStdString();
    EXPECT_EQ(told.last(), QString());
}

TEST_F(RestoreTest, FilesThatCannotBeMovedAreLeftOrMovedAtTheNextStart)
{
    const std::tuple<QString, QString, bool> cases[] = {
        {u"mailing_log.sqlite-shm"_s,
         u"The copy was not restored — the files could not be moved. Nothing was changed."_s, false},
        {u"addresses.sqlite-shm"_s,
         u"Parcelory could not finish restoring the copy — the files could not be moved. Restart Parcelory to finish."_s,
         true},
    };
    buyLabel();
    copy();
    ASSERT_TRUE(app->addressBook.upsert({.name = u"Ann"_s}));
    for (const auto &[blocked, told, isBegun] : cases) {
        SCOPED_TRACE(blocked.toStdString());
        ASSERT_TRUE(platform.dataFolder.mkdir(blocked));
        openRestore();
        restore();
        EXPECT_EQ(records->message.value(), told);
        EXPECT_EQ(app->addressBook.rows().size(), 1) << "the log is moved first";
        EXPECT_EQ(QDir(app->copies.folder()).entryList({u"Before Restore*"_s}).size(), isBegun);
        ASSERT_TRUE(platform.dataFolder.rmdir(blocked));
        expectAllBack();
        restartWith([](QFile &) {});
        EXPECT_EQ(app->addressBook.rows().size(), isBegun ? 0 : 1);
        EXPECT_FALSE(isOffered());
        records->selected = records->lastGood()->folder;
    }
}

TEST_F(RestoreTest, AnAccountThatDoesNotAnswerHoldsUpNothing)
{
    buyLabel();
    copy();
    carrier.setScenario({.holdsAnswers = true});
    spawn([this] { return records->openRestore(); });
    runUntil([this] {
        return !records->restore.looking && records->restore.review.value().account == RestoreReview::Account::asking;
    });
    EXPECT_FALSE(records->restore.canRestore());
    clock.advance(21s);
    EXPECT_TRUE(records->restore.canRestore());
    EXPECT_EQ(records->restore.review.value().account, RestoreReview::Account::silent);
    records->restore.close();
    carrier.setScenario({});
    for (int page = 0; page < 20; ++page) // the late answers arrive in turn
        runTask(app->shippo.carrierAccounts());
    settle();
    EXPECT_FALSE(records->restore.canRestore()) << "the late answer belongs to no question";
}

} // namespace parcelory::test

#include "app/openitems/OpenItemsScreen.h"
#include "app/openitems/TrackingWatch.h"
#include "records/OpenItems.h"
#include "support/AppTest.h"

namespace parcelory::test {
namespace {

struct OpenItemsScreenTest : MailingLogDesk {
    KeysScreen keys{*app};
    RecordsScreen records{*app};
    TrackingWatch tracking{*app, keys};
    OpenItemsScreen items{*app, log, records, tracking};

    void SetUp() override
    {
        useToken(PracticeCarrier::liveToken);
        run(keys.refresh());
        add(u"Ana"_s, 2);
        add(u"Ben"_s, 21);
        add(u"Cleo"_s, 40);
        add(u"Dora"_s, 0.5);
        add(u"Test"_s, 3, true);
    }
    void TearDown() override
    {
        tracking.stop();
        items.stop();
        runUntil([this] { return !log.busy && !tracking.isAsking(); });
        MailingLogDesk::TearDown();
    }
    void add(const QString &name, double daysAgo, bool test = false)
    {
        const ShipmentRecord record{.createdAt = clock.now().addSecs(-qint64(daysAgo * 86400)),
                                    .recipient = name + u", 88 Quarry Ln, Bend OR 97702"_s,
                                    .tracking = u"9400"_s + name,
                                    .reference = u"47806"_s,
                                    .transactionID = transactionId(++number),
                                    .testMode = test};
        ASSERT_TRUE(app->log.insert(record));
    }
    /// The labels that the carrier was asked about since the last call.
    QString asked()
    {
        const auto name = [](const auto &to) { return QString::fromLatin1(to.target).section(u'/', -1).mid(4); };
        const QStringList names = each(carrier.requests(), name);
        carrier.clearRequests();
        return names.join(u' ');
    }
    QString listed()
    {
        const auto line = [](const OpenItem &item) { return item.label.recipientName() + u' ' + wordOf(item.reason); };
        return each(items.items(), line).join(u", "_s);
    }
    void roundEnds(const QDateTime &since)
    {
        runUntil([&] { return tracking.askedAt.value() && *tracking.askedAt.value() > since; }, &clock);
    }

    int number = 0;
};

} // namespace

TEST_F(OpenItemsScreenTest, AsksForLabelsOnTheirWayNewestFirstAndPausesWhenTold)
{
    carrier.setScenario({.failNext = CarrierFailure{"tracks", 429, "text/plain", "too many", 1, "", 1}});
    const QDateTime begin = clock.now();
    runTask(tracking.start()); // without the items, whose timer would fire during a question
    runUntil([this] { return tracking.pausedUntil.value().has_value(); }, &clock);
    EXPECT_EQ(asked(), u"Ana Ben"_s);
    EXPECT_TRUE(tracking.text().startsWith(u"The carrier asks for a pause — going on at "_s));
    roundEnds(begin);
    EXPECT_EQ(asked(), u"Ben"_s);
    EXPECT_GE(begin.secsTo(clock.now()), 60);
    EXPECT_TRUE(tracking.text().endsWith(u" for 3 labels that are on their way."_s)) << tracking.text().toStdString();
    const QDateTime first = clock.now();
    roundEnds(first);
    EXPECT_GE(first.secsTo(clock.now()), 6 * 3600 - 65) << "hours after the question before the pause";
    EXPECT_EQ(asked(), u"Ana"_s);
    clock.start = clock.start.addDays(-1); // someone sets the clock
    const auto set = clock.elapsed();
    runUntil([this] { return !carrier.requests().isEmpty(); }, &clock);
    EXPECT_LE(clock.elapsed() - set, 7h);
    asked();
    carrier.setScenario({.dropConnection = true});
    runUntil([this] { return carrier.requests().size() >= 1; }, &clock);
    carrier.setScenario({});
    tracking.isOn = false;
    runUntil([this] { return tracking.followed == 0; }, &clock);
    EXPECT_EQ(tracking.text(), u"Tracking is not asked — switched off in Settings."_s);
    EXPECT_EQ(read(preferences, settings::asksForTracking), false);
}

TEST_F(OpenItemsScreenTest, NeverAsksWithATestKey)
{
    useToken(PracticeCarrier::testToken);
    run(keys.refresh());
    runTask(tracking.start());
    settle();
    EXPECT_EQ(asked(), QString());
    EXPECT_FALSE(clock.fireNext()) << "nothing waits";
}

TEST_F(OpenItemsScreenTest, TakesItemsOffAndDoesTheirNextStep)
{
    for (qint64 id = 1; id <= number; ++id)
        ASSERT_TRUE(app->log.change([&](Database &db) { return Journeys::put(db, id, {.askedAt = clock.now()}); }));
    runTask(items.start());
    EXPECT_EQ(listed(), u"Ben REFUND_ENDING, Ana NOT_SCANNED"_s);
    EXPECT_EQ(items.countText(), u"2 open items, oldest first"_s);
    settlePool(5); // the labels that were added touch the list, too
    int lists = 0;
    QObject counter;
    QObject::connect(&items, &OpenItemsScreen::itemsChanged, &counter, [&lists] { ++lists; });
    for (int label = 0; label < 3; ++label) {
        emit tracking.learned();
        settlePool();
    }
    EXPECT_EQ(lists, 0);
    clock.advance(10s);
    runUntil([&] { return lists > 0; });
    settlePool(2);
    EXPECT_EQ(lists, 1) << "one list for many labels";
    const OpenItem ben = items.items().first();
    runTask(items.takeOff(ben));
    runUntil([this] { return listed() == u"Ana NOT_SCANNED"_s; });
    EXPECT_TRUE(items.note.value().contains(u"Ben was taken off"_s) && items.canUndo);
    runTask(items.undo());
    runUntil([this] { return items.items().size() == 2; });
    items.search = u" ana "_s;
    runUntil([this] { return listed() == u"Ana NOT_SCANNED"_s; });
    EXPECT_EQ(items.countText(), u"1 open item found"_s);
    EXPECT_EQ(items.count.value(), 2) << "the badge counts all";
    items.search = QString();

    prompts.answer = 1;
    answer("refunds", R"({"status": "QUEUED"})", 201);
    runTask(items.act(ben));
    runUntil([this] { return listed() == u"Ana NOT_SCANNED"_s; });
    const auto row = *app->log.find(ben.label);
    EXPECT_NE(refundState(*row), RefundState::none);
    OpenItem back{.reason = OpenReason::returned, .label = *row};
    const QString streets[][3] = {{u"Bend Coins, 88 Quarry Ln"_s, u"Bend Coins"_s, u"88 Quarry Ln"_s},
                                  {u"PO Box 12"_s, {}, u"PO Box 12"_s},
                                  {u"Bend Coins, Quarry Ln"_s, {}, {}}};
    for (const auto &[text, company, street] : streets) {
        back.label.recipient = u"Ben, %1, Bend OR 97702"_s.arg(text);
        runTask(items.act(back));
        EXPECT_EQ(app->draftTo.value().company, company);
        EXPECT_EQ(app->draftTo.value().street1, street);
    }
    EXPECT_TRUE(app->tab == MainTab::newLabel && app->draftTo.value().zip == u"97702" &&
                app->draftReference == u"47806");
}

} // namespace parcelory::test

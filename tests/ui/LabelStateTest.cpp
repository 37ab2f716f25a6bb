#include "support/UiTest.h"
#include "ui/log/ShipmentTexts.h"

#include <QListView>

// What the New Label screen shows and offers in each state.

namespace parcelory::test {
namespace {

bool offers(const QWidget &window, const QString &start)
{
    return std::ranges::any_of(window.findChildren<Button *>(), [&start](const Button *button) {
        return button->isVisible() && button->text().startsWith(start);
    });
}

QAction *actionOf(const QWidget &window, const QString &text)
{
    for (QAction *action : window.findChildren<QAction *>()) {
        if (action->text() == text)
            return action;
    }
    qFatal("no action says %s", qUtf8Printable(text));
}

TEST(LabelState, EveryButtonIsOffUntilItCanAct)
{
    WindowDesk desk;
    const Button *rates = desk.button(u"Get Rates"_s), *buy = desk.button(u"Buy & Print Label"_s);
    QAction *action = actionOf(desk.window(), u"Buy && Print Label"_s);
    EXPECT_FALSE(rates->isEnabled() || buy->isEnabled() || action->isEnabled());
    desk.compose(homeAddress());
    EXPECT_TRUE(rates->isEnabled());
    EXPECT_FALSE(buy->isEnabled() || action->isEnabled());
    desk.composeAndRate(homeAddress());
    EXPECT_TRUE(buy->isEnabled() && action->isEnabled());
    EXPECT_EQ(buy->accessibleDescription(), u"TEST: Not real postage");
    desk.label().busy = true;
    EXPECT_FALSE(buy->isEnabled()) << "in the same event";
    desk.label().busy = false;
    EXPECT_TRUE(buy->isEnabled());
    settlePool(4);       // a look for a second label is two jobs
    const HeldPool held; // no other look ends meanwhile
    desk.label().secondLabel = u"A label was bought today."_s;
    desk.settleAll();
    EXPECT_EQ(buy->text(), u"Bought Already — Buy Again?");
    desk.label().secondLabelAgreed = true;
    desk.settleAll();
    EXPECT_EQ(buy->text(), u"Buy a Second Label");
    for (const char *text :
         {"Buy && Print Label", "Clear Form", "Get Rates", "Reprint", "SCAN Form", "Validate Address"})
        EXPECT_FALSE(actionOf(desk.window(), QString::fromLatin1(text))->autoRepeat()) << text;
}

TEST(LabelState, TheListShowsEachRatesPriceAndTheCardTheLastLabel)
{
    WindowDesk desk;
    desk.composeAndRate(homeAddress());
    const auto *list = desk.named<QListView>(u"Rates"_s);
    const QList<ShippoRate> rates = desk.label().rates;
    ASSERT_EQ(list->model()->rowCount(), rates.size());
    constexpr int priceRole = Qt::UserRole + 2;
    for (int row = 0; row < rates.size(); ++row)
        EXPECT_EQ(list->model()->index(row, 0).data(priceRole).toString(), u'$' + rates[row].amount);
    desk.pressBuy();
    const QString tracking = trackingLines(desk.app().log.records().first().tracking);
    EXPECT_TRUE(shows(desk.window().labelView(), tracking));

    // An action that can no longer act does nothing, even before the menu is drawn again.
    desk.press(Qt::Key_2, Qt::ControlModifier);
    MailingLogScreen &log = desk.program->screens().mailingLog;
    log.selected = log.records().first().id;
    desk.settleAll();
    QAction *track = actionOf(desk.window(), u"Track Online"_s);
    ASSERT_TRUE(track->isEnabled());
    log.selected = std::nullopt;
    track->trigger();
    desk.settleAll();
    EXPECT_TRUE(desk.desktop.opened.isEmpty());
}

TEST(LabelState, ALabelThatDidNotComeOutIsAmberUntilItIsReprinted)
{
    for (const bool isExpired : {false, true}) {
        SCOPED_TRACE(isExpired);
        WindowDesk desk;
        desk.composeAndRate(homeAddress());
        if (isExpired)
            desk.carrier.setScenario({.labelAnswer = LabelAnswer::expired});
        else
            desk.processes.behave = failingPrinter("no paper\n");
        const auto failed = [&] {
            const std::optional<Banner> banner = desk.label().banner;
            EXPECT_TRUE(banner && !banner->ok && banner->text.contains(u"(print failed: "_s));
            EXPECT_EQ(desk.focusName(), u"Reprint");
            EXPECT_EQ(desk.solidButtons(), QStringList{u"Reprint"_s});
            EXPECT_TRUE(shows(desk.window(), u"Bought, not printed"_s));
            EXPECT_FALSE(desk.label().last.label.value()->message.contains(u'\n'));
        };
        // Fake time stands still: while blocking work is late, it would run for weeks, and Reprint asks about an old
        // label first.
        const auto waitFor = [&desk](const auto &done) {
            runUntil(done);
            desk.settleAll();
        };
        const auto isIdle = [&desk] { return !desk.label().busy; };
        desk.press(Qt::Key_Return, Qt::ControlModifier);
        waitFor(isIdle);
        failed();
        desk.press(Qt::Key_2, Qt::ControlModifier);
        desk.press(Qt::Key_1, Qt::ControlModifier);
        failed();
        desk.press(Qt::Key_Return);
        waitFor(isIdle);
        if (isExpired) {
            desk.dialog()->accept(); // the alert; a printer's failure raises none
            desk.window().activateWindow();
            waitFor([] { return QApplication::activeWindow() != nullptr; });
        }
        waitFor([&] { return desk.focusName() == u"Reprint"; });
        failed();
        const QString reason = desk.label().last.label.value()->message;
        desk.press(Qt::Key_C, Qt::ControlModifier | Qt::ShiftModifier);
        EXPECT_EQ(desk.label().last.label.value()->message, reason) << "the card says why it was not printed";
        EXPECT_TRUE(desk.label().banner.value()->text.startsWith(u"Copied tracking 9"_s));
        desk.carrier.setScenario({});
        desk.processes.behave = nullptr;
        if (isExpired) { // as the message says
            MailingLogScreen &log = desk.program->screens().mailingLog;
            desk.press(Qt::Key_2, Qt::ControlModifier);
            log.selected = log.records().first().id;
            desk.settleAll();
            desk.press(Qt::Key_P, Qt::ControlModifier);
            waitFor([&] { return !log.busy; });
            desk.press(Qt::Key_1, Qt::ControlModifier);
        } else {
            desk.press(Qt::Key_Return);
            waitFor(isIdle);
        }
        const QString label = desk.label().last.label.value()->record.transactionID;
        EXPECT_EQ(desk.label().banner.value(), (Banner{u"Label sent to ZD421."_s, true, Banner::Offer::none, label}));
        EXPECT_TRUE(desk.label().last.label.value()->isPrinted);
        EXPECT_EQ(desk.focusName(), u"Recipient name");
        EXPECT_EQ(desk.solidButtons(), QStringList());
        EXPECT_EQ(desk.purchases(), 1);
    }
}

TEST(LabelState, AFailedScanIsInTheMessageLine)
{
    WindowDesk desk;
    desk.label().banner = Banner{u"Success!"_s, true};
    const auto warning = [&] {
        const std::optional<Banner> banner = desk.label().banner;
        return banner && !banner->ok ? banner->text : QString();
    };
    desk.app().handleInvoiceScan(u"48214"_s); // the back office is out of reach
    desk.wait([&] { return !desk.app().scanBusy; });
    EXPECT_TRUE(warning().startsWith(u"Can't reach deskline"_s)) << warning().toStdString();
    desk.app().failScan(u"The deskline session has expired."_s, true);
    desk.settleAll();
    ASSERT_TRUE(offers(desk.window(), u"Sign In Again"_s));
    desk.composeAndRate(homeAddress()); // the next message
    desk.button(u"Sign In Again"_s)->setFocus();
    desk.press(Qt::Key_Return);
    EXPECT_EQ(desk.app().flow.value(), AppFlow::login);
    EXPECT_EQ(warning(), QString());
}

TEST(LabelState, AnUnresolvedPurchaseIsResolvedByHandOnlyIfAskingMayNotHelp)
{
    WindowDesk desk;
    desk.label().purchases.checking = true; // no lookup of its own
    UnresolvedPurchase pending = other(UnresolvedPurchase());
    const auto offered = [&](bool inconclusive, bool unlogged) {
        pending.isInconclusive = inconclusive;
        pending.isUnlogged = unlogged;
        desk.label().purchases.unresolved = QList{pending};
        desk.settleAll();
        return offers(desk.window(), u"It Was Not Bought"_s);
    };
    EXPECT_FALSE(offered(false, false) || offered(true, true));
    EXPECT_TRUE(offered(true, false));
    for (const auto &[text, title] : {std::pair{u"It Was Not Bought"_s, u"This Label Was Not Bought?"_s},
                                      std::pair{u"I Have the Label"_s, u"You Have This Label?"_s}}) {
        desk.click(desk.button(text));
        Dialog *question = desk.dialog();
        EXPECT_EQ(question->windowTitle(), title);
        question->reject();
        desk.settleAll();
    }
    desk.label().purchases.unresolved = QList<UnresolvedPurchase>();
    desk.label().purchases.checking = false;

    ResolvedPurchase found = other(ResolvedPurchase());
    found.record.createdAt = desk.clock.now();
    found.record.zpl = "^XA^FDfound^FS^XZ";
    desk.label().purchases.resolved = QList{found};
    desk.settleAll();
    {
        const HeldPool held; // the first print is under way
        desk.click(desk.button(u"Print Label"_s), 2);
    }
    desk.wait([&desk] { return desk.label().purchases.resolved.value().isEmpty(); });
    EXPECT_TRUE(desk.label().banner.value()->ok) << "the message line says that it is printed";
    EXPECT_EQ(printJobs(desk.processes), 1);

    // A label that was sold twice is not printed; beside it is its refund, which the mailing log requests.
    found.id = -1;
    found.isSecond = true;
    found.record.transactionID = QString(32, u'b');
    found.record.tracking = u"9400"_s;
    found.record.status = u"PRINTED"_s;
    ASSERT_TRUE(desk.app().log.insertOnce(found.record));
    // A reprint from the mailing log prints the found label, too.
    MailingLogScreen &log = desk.program->screens().mailingLog;
    ResolvedPurchase first = found;
    first.isSecond = false;
    desk.label().purchases.resolved = QList{first, found};
    emit log.reprinted(QString(32, u'c'), u"Label sent to ZD421."_s);
    EXPECT_EQ(desk.label().purchases.resolved.value().size(), 2) << "another label";
    emit log.reprinted(found.record.transactionID, u"Label sent to ZD421."_s);
    EXPECT_EQ(desk.label().purchases.resolved.value(), QList{found});
    desk.settleAll();
    EXPECT_FALSE(offers(desk.window(), u"Print "_s));
    desk.click(desk.button(u"Refund"_s));
    EXPECT_EQ(desk.dialog()->windowTitle(), u"Refund This Label?"_s);
    EXPECT_EQ(desk.app().tab.value(), MainTab::mailingLog);
    desk.dialog()->reject();
    desk.settleAll();
    EXPECT_TRUE(desk.app().log.setStatus(desk.app().log.records().value(0), u"REFUNDED"_s));
    desk.app().tab = MainTab::newLabel;
    desk.settleAll();
    desk.click(desk.button(u"Refund"_s));
    desk.wait([&desk] {
        return desk.program->screens().mailingLog.message.value() == u"This label was already refunded."_s;
    });
}

} // namespace
} // namespace parcelory::test

#include "app/label/LabelTexts.h"
#include "support/UiTest.h"

// The New Label screen, operated like a clerk does.

namespace parcelory::test {
namespace {

TEST(LabelFlow, AParcelIsShippedWithoutTheMouse)
{
    WindowDesk desk;
    EXPECT_EQ(desk.focusName(), u"Recipient name");
    // An empty text: the clerk leaves the field out.
    const auto fill = [&desk](const QStringList &fields) {
        desk.type(fields.first());
        for (const QString &text : fields.sliced(1)) {
            desk.press(Qt::Key_Tab);
            desk.type(text);
        }
    };
    fill({u"Eleanor Whitfield"_s, {}, u"418 Montford Ave"_s, u"Apt 3B"_s, u"Asheville"_s, u"NC"_s, u"28801"_s});
    desk.press(Qt::Key_Return); // the next step is Validate
    desk.idle();
    EXPECT_EQ(desk.label().validationStatus.value(), u"Valid ✓ (USPS version)");
    EXPECT_EQ(desk.focusName(), u"Weight, pounds");
    fill({u"1"_s, {}, u"12"_s, u"8"_s, u"2"_s});
    desk.press(Qt::Key_Return); // the next step is Get Rates
    desk.idle();
    EXPECT_EQ(desk.focusName(), u"Rates");
    EXPECT_EQ(desk.label().selectedRate()->servicelevel.token, u"usps_priority");
    desk.press(Qt::Key_Down);
    EXPECT_EQ(desk.label().selectedRate()->servicelevel.token, u"usps_priority_express");
    desk.press(Qt::Key_Up);
    desk.pressBuy();
    EXPECT_TRUE(desk.label().banner.value()->text.startsWith(u"Success! Priority Mail to Eleanor Whitfield, $"_s));
    EXPECT_TRUE(desk.processes.lastPrinted().startsWith("^XA") && desk.label().last.label.value());
    EXPECT_EQ(desk.focusName(), u"Recipient name");
    EXPECT_EQ(desk.purchases(), 1);
    desk.press(Qt::Key_C, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(desk.desktop.clipboard, desk.app().log.records().first().tracking);
}

TEST(LabelFlow, AnAddressOfTheBookIsBoughtInFourGestures)
{
    WindowDesk desk;
    desk.compose({}); // what is packed and weighed before the address is known
    AddressBook &book = desk.program->screens().addressBook;
    runTask(book.save(PostalContact::of(homeAddress())), &desk.clock);
    desk.settleAll();
    desk.press(Qt::Key_F, Qt::ControlModifier);
    desk.type(u"whitf"_s);
    desk.press(Qt::Key_Return); // validates and rates
    desk.idle();
    EXPECT_EQ(desk.label().validationStatus.value(), u"Valid ✓ (USPS version)");
    desk.clock.advance(LabelScreen::buyPause);
    desk.pressBuy();
    ASSERT_TRUE(desk.label().last.label.value());
    EXPECT_EQ(desk.purchases(), 1);
    const QString bought = desk.label().last.label.value()->record.transactionID;
    const MailingLogScreen &log = desk.program->screens().mailingLog;
    desk.wait([&] { return log.selectedRecord().has_value(); });
    EXPECT_EQ(log.selectedRecord()->transactionID, bought) << "the newest row is selected";
}

TEST(LabelFlow, NothingIsBoughtWhileAScannedInvoiceIsRead)
{
    WindowDesk desk;
    desk.composeAndRate(homeAddress());
    desk.app().scanBusy = true;
    desk.app().setScanStatus(StatusKind::progress, u"Loading invoice 48303 from deskline…"_s);
    spawn([&desk] { return desk.label().buyAndPrint(); }); // in the same turn as the scan
    desk.pressBuy();                                       // the clerk means the scanned parcel
    EXPECT_EQ(desk.purchases(), 0);
    const Button *buy = desk.button(u"Buy & Print Label"_s);
    EXPECT_FALSE(buy->isEnabled());
    EXPECT_TRUE(shows(desk.window(), u"Loading the scanned invoice. You can buy once it is in the form."_s));
    desk.app().cancelInvoiceScan();
    desk.settleAll();
    EXPECT_TRUE(buy->isEnabled());
    desk.pressBuy(); // meant for the scanned parcel, too
    EXPECT_EQ(desk.purchases(), 0);
    desk.clock.advance(LabelScreen::buyPause);
    desk.pressBuy();
    EXPECT_EQ(desk.purchases(), 1);
}

TEST(LabelFlow, AnInvoicesParcelIsInsuredWithOneKeyAndAClearedFormComesBack)
{
    WindowDesk desk;
    DesklineInvoice invoice{.invoiceID = u"48213"_s, .buyerName = u"Eleanor Whitfield"_s, .address = homeAddress()};
    invoice.items = {{.title = u"Silver dollar"_s, .qty = u"2"_s, .total = u"$1,525.00"_s}};
    desk.app().scannedInvoice = invoice;
    desk.app().fillFromInvoice(invoice);
    desk.compose(homeAddress());
    EXPECT_EQ(LabelTexts::uninsuredNote(desk.label()), u"Not insured"_s);
    EXPECT_TRUE(desk.button(u"Invoice $1,525.00 — insure"_s)->isVisible());
    EXPECT_EQ(desk.button(u"Invoice $1,525.00 — insure"_s)->accessibleName(),
              u"Insure for the invoice amount, $1,525.00"_s);
    for (const bool isBuying : {true, false}) { // the label that is being bought cannot be insured any more
        desk.label().buying = isBuying;
        desk.settleAll();
        EXPECT_EQ(desk.button(u"Invoice $1,525.00 — insure"_s)->isEnabled(), !isBuying);
        desk.press(Qt::Key_I, Qt::ControlModifier | Qt::ShiftModifier);
        EXPECT_EQ(desk.label().insuranceValue.value(), isBuying ? QString() : u"1525.00"_s);
    }
    EXPECT_EQ(LabelTexts::insuranceOffer(desk.label()), u"Insured for the invoice ✓"_s);
    EXPECT_EQ(LabelTexts::uninsuredNote(desk.label()), QString());

    for (int press = 0; press < 2; ++press)
        desk.press(Qt::Key_N, Qt::ControlModifier);
    desk.click(desk.button(u"Clear Form"_s));
    EXPECT_TRUE(desk.label().isClear());
    desk.press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(desk.label().recipient(), homeAddress());
    EXPECT_EQ(desk.label().insuranceValue.value(), u"1525.00"_s);
    EXPECT_EQ(desk.label().reference.value(), u"48213"_s);
}

TEST(LabelFlow, AParcelGoesAbroadByMouseThroughThePaperwork)
{
    WindowDesk desk;
    desk.compose(londonAddress());
    desk.click(desk.button(u"Validate"_s));
    EXPECT_EQ(QApplication::activeModalWidget(),
              nullptr); // the declared value is missing, which is reported first
    EXPECT_EQ(desk.focusName(), u"Declared value, US dollars");
    desk.type(u"1860"_s);
    desk.click(desk.button(u"Get Rates"_s));
    QWidget *sheet = desk.readyDialog();
    EXPECT_EQ(sheet->windowTitle(), u"International Paperwork");
    desk.click(desk.button(u"Get Rates"_s, sheet));
    desk.idle();
    ASSERT_TRUE(desk.label().selectedRate());
    desk.click(desk.button(u"Buy & Print Label"_s), 5);
    for (int again = 0; again < 3; ++again)
        desk.press(Qt::Key_Return, Qt::ControlModifier);
    desk.idle();
    EXPECT_EQ(desk.purchases(), 1) << "a burst of clicks and keys buys one label";
    EXPECT_TRUE(desk.app().log.records().first().isIntl);
}

TEST(LabelFlow, ReturnNeverBuysAndNeitherDoOtherTabs)
{
    WindowDesk desk;
    desk.composeAndRate(homeAddress());
    ASSERT_EQ(desk.solidButtons(), QStringList{u"Buy & Print Label"_s});
    const QWidget *first = QApplication::focusWidget();
    int stops = 0;
    do { // Return presses any other button
        const auto *button = dynamic_cast<const Button *>(QApplication::focusWidget());
        if (!button || button->text() == u"Buy & Print Label") {
            desk.press(Qt::Key_Return);
            desk.press(Qt::Key_Enter, Qt::KeypadModifier);
        }
        desk.press(Qt::Key_Tab);
    } while (QApplication::focusWidget() != first && ++stops < 60);
    EXPECT_GT(stops, 15);
    ASSERT_TRUE(desk.label().selectedRate()); // Return changed nothing
    desk.composeAndRate(homeAddress());
    desk.label().weightLb = u"2"_s; // clears the rates, which disables Buy
    desk.settleAll();
    desk.pressBuy();
    EXPECT_TRUE(desk.label().rates.value().isEmpty()) << "Buy's keys do nothing else";
    for (const auto tab : {Qt::Key_2, Qt::Key_3, Qt::Key_4}) {
        desk.press(tab, Qt::ControlModifier);
        desk.press(Qt::Key_Return, Qt::ControlModifier);
    }
    EXPECT_EQ(desk.app().tab.value(), MainTab::settings);
    EXPECT_EQ(desk.purchases(), 0);
}

TEST(LabelFlow, TheWindowRespondsWhileCarrierAndPrintToolAreSlow)
{
    WindowDesk desk;
    QSemaphore printed;
    desk.processes.behave = [&](const QString &program, const QStringList &) {
        if (program.endsWith(u"lpr"_s))
            printed.acquire(); // until the test releases it
        return ProcessOutcome{};
    };
    desk.composeAndRate(homeAddress());
    desk.carrier.setScenario({.holdsAnswers = true});
    desk.press(Qt::Key_Return, Qt::ControlModifier);
    ASSERT_TRUE(desk.label().buying);
    // Everything below would hang if the main thread waited for the carrier or the print tool.
    desk.press(Qt::Key_2, Qt::ControlModifier);
    EXPECT_EQ(desk.app().tab.value(), MainTab::mailingLog);
    desk.carrier.setScenario({});
    runUntil([&] { return !desk.processes.lastPrinted().isEmpty(); });
    desk.press(Qt::Key_1, Qt::ControlModifier);
    desk.press(Qt::Key_L, Qt::ControlModifier);
    desk.type(u"Next Customer"_s);
    EXPECT_EQ(desk.app().draftTo.value().name, u"Next Customer");

    desk.window().close(); // the purchase continues, so the window stays open
    EXPECT_TRUE(desk.window().isVisible());
    desk.settleAll();
    EXPECT_TRUE(shows(desk.window(), u"Buying and printing the label — Parcelory closes when it is done."_s));
    EXPECT_TRUE(shows(desk.window(), u"Parcelory closes when the purchase is done."_s));
    printed.release();
    desk.idle();
    EXPECT_EQ(desk.app().log.records().size(), 1);
    EXPECT_EQ(desk.app().draftTo.value().name, u"Next Customer");
    EXPECT_FALSE(desk.window().isVisible());
}

TEST(LabelFlow, AFailedPurchaseCancelsTheDeferredClose)
{
    WindowDesk desk;
    const auto closeDuringPurchase = [&desk](const CarrierScenario &scenario) {
        desk.carrier.setScenario({.holdsAnswers = true, .purchaseFails = scenario.purchaseFails});
        desk.press(Qt::Key_Return, Qt::ControlModifier);
        ASSERT_TRUE(desk.label().buying);
        desk.window().close();
        desk.carrier.setScenario(scenario);
        desk.idle();
        EXPECT_TRUE(desk.window().isVisible()) << "the clerk must read the message";
    };
    desk.composeAndRate(homeAddress());
    closeDuringPurchase({.purchaseFails = true});
    EXPECT_FALSE(desk.label().banner.value()->ok);
    desk.dialog()->accept();
    desk.window().activateWindow();
    desk.wait([] { return QApplication::activeWindow() != nullptr; });
    desk.processes.behave = failingPrinter("no paper");
    closeDuringPurchase({});
    EXPECT_TRUE(desk.label().banner.value()->text.contains(u"(print failed: "_s));
}

} // namespace
} // namespace parcelory::test

#include "support/UiTest.h"

namespace parcelory::test {
namespace {

TEST(LabelFocus, TabWalksTheFormInTheOrderInWhichItIsRead)
{
    WindowDesk desk;
    desk.compose(londonAddress());
    desk.label().mailpiece = BuiltinMailpiece::package;
    desk.label().weightOz = u"4"_s;
    desk.label().carrier = Carrier::fedex;
    desk.settleAll();
    desk.named<ComboBox>(u"Sender profile"_s)->setFocus();
    QStringList walked;
    while (walked.size() < 60) {
        walked += desk.focusName();
        if (desk.focusName() == u"Get Rates")
            break;
        desk.press(Qt::Key_Tab);
    }
    EXPECT_EQ(walked, texts(table(u"screen-reader"_s, "order of the form")));
}

TEST(LabelFocus, OneButtonIsSolidTheNextStep)
{
    WindowDesk desk;
    EXPECT_EQ(desk.solidButtons(), QStringList());
    ShippoAddress to = homeAddress();
    to.zip.clear();
    desk.compose(to);
    EXPECT_EQ(desk.solidButtons(), QStringList());
    desk.compose(homeAddress());
    EXPECT_EQ(desk.solidButtons(), QStringList{u"Validate"_s});
    desk.label().validationOK = true;
    desk.settleAll();
    EXPECT_EQ(desk.solidButtons(), QStringList{u"Get Rates"_s});
    desk.carrier.setScenario({.holdsAnswers = true});
    desk.press(Qt::Key_R, Qt::ControlModifier);
    EXPECT_EQ(desk.solidButtons(), QStringList()); // busy
    desk.carrier.setScenario({});
    desk.idle();
    EXPECT_EQ(desk.solidButtons(), QStringList{u"Buy & Print Label"_s});
    desk.named<LineEdit>(u"City"_s)->setFocus();
    desk.type(u"x"_s); // a price belongs to what was rated
    EXPECT_TRUE(desk.label().rates.value().isEmpty());
    EXPECT_EQ(desk.solidButtons(), QStringList{u"Validate"_s});
}

TEST(LabelFocus, AFailedCheckTakesTheFocusToItsField)
{
    const std::pair<std::function<void(WindowDesk &)>, QString> cases[] = {
        {[](WindowDesk &d) { d.label().mailpiece = BuiltinMailpiece::package; }, u"Length, inches"_s},
        {[](WindowDesk &d) { d.label().weightLb = u"71"_s; }, u"Weight, pounds"_s},
        {[](WindowDesk &d) { d.label().insuranceValue = u"1,500"_s; }, u"Insured value, US dollars"_s},
        {[](WindowDesk &d) { d.app().draftTo = londonAddress(); }, u"Declared value, US dollars"_s},
        {[](WindowDesk &d) { d.app().draftTo = ShippoAddress{}; }, u"Recipient name"_s},
    };
    for (const auto &[spoil, name] : cases) {
        WindowDesk desk;
        desk.compose(homeAddress());
        spoil(desk);
        desk.settleAll();
        desk.press(Qt::Key_R, Qt::ControlModifier);
        desk.idle();
        ASSERT_TRUE(desk.label().banner.value());
        EXPECT_EQ(desk.focusName(), name);
        auto *field = desk.named<LineEdit>(name);
        EXPECT_TRUE(field->hasFault()) << name.toStdString();
        EXPECT_EQ(field->accessibleDescription(), desk.label().banner.value()->text);
        desk.type(u"2"_s);
        EXPECT_FALSE(field->hasFault() || desk.label().banner.value()) << name.toStdString();
    }
}

TEST(LabelFocus, AButtonThatGoesOffGetsTheFocusBack)
{
    WindowDesk desk;
    desk.carrier.setScenario({.holdsAnswers = true, .noRates = true});
    desk.compose(homeAddress());
    desk.label().validationOK = true;
    desk.settleAll();
    desk.button(u"Get Rates"_s)->setFocus();
    desk.press(Qt::Key_Space);
    EXPECT_EQ(desk.focusName(), u"New Label"); // where arrow keys change nothing
    desk.carrier.setScenario({.noRates = true});
    desk.idle();
    EXPECT_EQ(desk.focusName(), u"Get Rates");
}

TEST(LabelFocus, StaysInTheFormWhenTheRatesGo)
{
    WindowDesk desk;
    desk.press(Qt::Key_B, Qt::ControlModifier); // no sidebar that could take it
    desk.composeAndRate(homeAddress());
    const QList<ShippoRate> rates = desk.label().rates;
    ASSERT_EQ(desk.focusName(), u"Rates");
    desk.label().rates = rates.first(1);
    desk.settleAll();
    EXPECT_TRUE(shows(desk.window(), u"1 USPS rate"_s));
    desk.label().rates = rates;
    desk.label().selectedRateID = std::nullopt;
    desk.settleAll();
    for (const int row : {0, 1}) { // the first key chooses the first rate
        desk.press(Qt::Key_Down);
        EXPECT_EQ(desk.label().selectedRateID.value(), rates[row].objectId);
    }
    desk.label().insuranceValue = u"5"_s; // by its key
    desk.settleAll();
    EXPECT_EQ(desk.focusName(), u"Get Rates");
    desk.press(Qt::Key_Space);
    desk.idle();
    ASSERT_EQ(desk.focusName(), u"Rates");
    desk.pressBuy();
    EXPECT_EQ(desk.purchases(), 1);
    EXPECT_EQ(desk.focusName(), u"Recipient name");
}

TEST(LabelFocus, ARecipientThatIsFilledDuringARequestIsCheckedAfterItUnlessTheClerkTypes)
{
    const std::tuple<const char *, QString, bool, QString> rows[] = {
        {"in a field of the form", {}, true, u"Email"_s},
        {"typing", u"x"_s, false, u"Email"_s},
        {"in the address search", {}, true, u"Rates"_s},
    };
    for (const auto &[what, typed, isChecked, focus] : rows) {
        SCOPED_TRACE(what);
        WindowDesk desk;
        desk.compose(homeAddress());
        desk.label().validationOK = true;
        desk.carrier.setScenario({.holdsAnswers = true});
        desk.press(Qt::Key_R, Qt::ControlModifier);
        ASSERT_TRUE(desk.label().busy);
        const DesklineInvoice invoice{.invoiceID = u"48213"_s, .address = homeAddress()};
        desk.app().fillFromInvoice(invoice);
        emit desk.app().recipientTaken();
        desk.label().weightLb = u"1"_s; // by the scale
        if (focus == u"Email")
            desk.named<LineEdit>(u"Email"_s)->setFocus();
        else
            desk.press(Qt::Key_F, Qt::ControlModifier);
        desk.type(typed);
        desk.carrier.setScenario({});
        desk.idle();
        desk.idle(); // the check
        EXPECT_EQ(desk.label().validationOK.value(), isChecked);
        EXPECT_EQ(desk.label().rates.value().isEmpty(), !isChecked);
        EXPECT_EQ(desk.focusName(), focus);
    }
}

TEST(LabelFocus, TheFocusGoesToWhatIsToBeMended)
{
    ShippoAddress nowhere = homeAddress(), noCity = homeAddress();
    nowhere.street1 = u"1 Nowhere Ln"_s;
    noCity.city.clear();
    const auto scan = [&noCity](WindowDesk &d) {
        const DesklineInvoice invoice{.invoiceID = u"48213"_s, .address = noCity};
        d.app().scannedInvoice = invoice;
        d.app().fillFromInvoice(invoice);
        emit d.app().recipientTaken();
    };
    const auto validate = [](const ShippoAddress &to) {
        return [to](WindowDesk &d) {
            d.compose(to);
            d.named<LineEdit>(u"Email"_s)->setFocus();
            d.press(Qt::Key_K, Qt::ControlModifier);
        };
    };
    const std::tuple<CarrierScenario, std::function<void(WindowDesk &)>, QString, QString> cases[] = {
        {{.rewrittenAddressTo = true},
         [&](WindowDesk &d) {
             validate(homeAddress())(d);
             d.readyDialog();
             d.press(Qt::Key_Return); // Go Back & Fix Address
         },
         u"Street"_s,
         u"Rates cleared — adjust the address and validate again."_s},
        {{}, validate(nowhere), u"Street"_s, u"The address as submitted could not be found."_s},
        {{}, scan, u"City"_s, u"The invoice has no city — type it, then validate."_s},
    };
    for (const auto &[scenario, act, field, reason] : cases) {
        WindowDesk desk;
        desk.carrier.setScenario(scenario);
        act(desk);
        desk.idle();
        desk.window().activateWindow(); // as a window system does after a dialog
        desk.settleAll();
        EXPECT_EQ(desk.focusName(), field);
        EXPECT_TRUE(desk.named<LineEdit>(field)->accessibleDescription().contains(reason))
            << desk.named<LineEdit>(field)->accessibleDescription().toStdString();
    }
}

TEST(LabelFocus, AfterALostAnswerTheFocusIsOnTheQuestionToTheCarrier)
{
    WindowDesk desk;
    desk.composeAndRate(homeAddress());
    desk.carrier.setScenario({.dropConnection = true});
    desk.pressBuy();
    desk.wait([&] {
        if (auto *alert = qobject_cast<Dialog *>(QApplication::activeModalWidget()))
            alert->accept();
        else if (!QApplication::activeWindow())
            desk.window().activateWindow();
        return desk.focusName() == u"Check again" || desk.focusName() == u"Unresolved purchases";
    });
    desk.carrier.setScenario({});
    desk.wait([&] { return desk.label().purchases.unresolved.value().isEmpty(); });
}

TEST(LabelFocus, ReturnPressesTheFocusedButtonAndTheSafeChoiceIsRightmostAndTakenByAClose)
{
    WindowDesk desk;
    desk.compose(homeAddress());
    desk.button(u"Save to Address Book"_s)->setFocus();
    desk.press(Qt::Key_Return);
    desk.wait([&] { return desk.program->screens().addressBook.kept.value().has_value(); });
    EXPECT_TRUE(desk.label().validationStatus.value().isEmpty()) << "Validate is the default button";

    for (const int safe : {0, 1}) {
        const auto ask = [&desk, safe] {
            return desk.windowPrompts.choose({.title = u"Sure?"_s, .choices = {u"A"_s, u"B"_s}, .safeChoice = safe});
        };
        Task<int> closed = ask();
        desk.dialog()->reject();
        EXPECT_EQ(runTask(std::move(closed)), safe);
        Task<int> asking = ask();
        QWidget *question = desk.readyDialog();
        Button *kept = desk.button(safe ? u"B"_s : u"A"_s, question),
               *other = desk.button(safe ? u"A"_s : u"B"_s, question);
        EXPECT_TRUE(kept->isDefault() && kept->hasFocus());
        EXPECT_GT(kept->x(), other->x());
        other->setFocus();
        desk.press(Qt::Key_Return);
        EXPECT_EQ(runTask(std::move(asking)), 1 - safe);
    }
}

TEST(LabelFocus, AReviewIsNotAnsweredByTheTailOfAScan)
{
    WindowDesk desk;
    ShippoAddress boxHolder = homeAddress();
    boxHolder.street1 = u"PO Box 239 #12"_s;
    boxHolder.street2.clear();
    desk.compose(boxHolder);
    desk.label().weightLb = QString();
    desk.press(Qt::Key_K, Qt::ControlModifier);
    const QPointer<Dialog> dialog = desk.dialog();
    EXPECT_EQ(dialog->windowTitle(), u"USPS Rewrote This Address");
    desk.settleAll();
    EXPECT_TRUE(desk.named(u"Waiting for your choice."_s)->isVisible()) << "behind the dialog";
    auto *whole = desk.named<QLabel>(
        joinPresent({boxHolder.name, u"PO Box 239 #12"_s, u"Asheville NC 28801"_s, u"US"_s}, u"\n"_s), dialog);
    EXPECT_TRUE(whole->text().contains(u"#12&nbsp;</b>"_s)) << "the lost number is marked";
    EXPECT_TRUE(dialog->accessibleDescription().startsWith(u"USPS standardization DROPPED: 12\n\nUSPS version:\n"_s));
    desk.press(Qt::Key_Return);
    desk.press(Qt::Key_Escape);
    desk.press(Qt::Key_Space);
    EXPECT_TRUE(dialog->isVisible());
    desk.clock.advance(Dialog::keyGuard);
    desk.click(whole); // takes the focus from the buttons: Return now presses the default button
    for (const auto type : {QEvent::KeyPress, QEvent::KeyRelease}) { // a Return that is still held down
        QKeyEvent held(type, Qt::Key_Return, {}, u"\r"_s, true);
        QCoreApplication::sendEvent(dialog->windowHandle(), &held);
    }
    EXPECT_TRUE(dialog->isVisible());
    desk.press(Qt::Key_Return); // the default keeps what was typed
    desk.idle();
    EXPECT_EQ(desk.label().validationStatus.value(), u"Valid ✓ (kept as typed)");
    EXPECT_EQ(desk.app().draftTo.value().street1, u"PO Box 239 #12");
}

TEST(LabelFocus, ShortcutsReachTheirScreens)
{
    WindowDesk desk;
    const std::pair<Qt::Key, MainTab> tabs[] = {{Qt::Key_2, MainTab::mailingLog},
                                                {Qt::Key_3, MainTab::masterLog},
                                                {Qt::Key_Comma, MainTab::settings},
                                                {Qt::Key_1, MainTab::newLabel}};
    for (const auto &[key, tab] : tabs) {
        desk.press(key, Qt::ControlModifier);
        EXPECT_EQ(desk.app().tab.value(), tab);
    }
    desk.press(Qt::Key_F6);
    EXPECT_EQ(desk.focusName(), u"Search name, company, place") << "the rates have nothing to focus";
    desk.press(Qt::Key_F6, Qt::ShiftModifier);
    EXPECT_EQ(desk.focusName(), u"Recipient name");
    desk.compose(homeAddress());
    desk.press(Qt::Key_F6);
    EXPECT_EQ(desk.focusName(), u"Get Rates");
    desk.press(Qt::Key_L, Qt::ControlModifier);
    EXPECT_EQ(desk.focusName(), u"Recipient name");
    desk.press(Qt::Key_N, Qt::ControlModifier);
    EXPECT_TRUE(desk.app().draftTo.value().isEmpty());
    desk.press(Qt::Key_2, Qt::ControlModifier);
    desk.press(Qt::Key_F, Qt::ControlModifier);
    EXPECT_EQ(desk.focusName(), u"Search the mailing log");
    desk.press(Qt::Key_L, Qt::ControlModifier | Qt::ShiftModifier);
    const auto windows = QApplication::topLevelWidgets();
    EXPECT_TRUE(std::ranges::any_of(
        windows, [](const QWidget *one) { return one->isVisible() && one->windowTitle() == u"Error Log"; }));
    desk.app().flow = AppFlow::login;
    desk.settleAll();
    desk.window().activateWindow();
    desk.press(Qt::Key_1, Qt::ControlModifier);
    EXPECT_EQ(desk.app().tab.value(), MainTab::mailingLog); // before the sign-in nothing is reached
}

} // namespace
} // namespace parcelory::test

#include "support/UiTest.h"
#include "ui/settings/SettingsView.h"
#include "ui/sidebar/AddressBookView.h"

#include <QCheckBox>
#include <QLayout>
#include <QRadioButton>

namespace parcelory::test {
namespace {

struct SettingsViews : testing::Test, WindowDesk {
    using Page = SettingsView::Page;

    void open(Page page)
    {
        app().tab = MainTab::settings;
        view().showPage(page);
        settleAll();
    }
    SettingsView &view() { return window().settingsView(); }
    SettingsScreen &settings() { return program->screens().settings; }
    KeysScreen &keys() { return program->screens().keys; }
    LineEdit *field(const QString &name) { return named<LineEdit>(name, &view()); }
    QUuid profile(int at) { return app().senders.profiles.value()[at].id; }
    /// Clicks an answer of the open question.
    void answer(const QString &text)
    {
        clock.advance(Dialog::keyGuard);
        click(button(text));
    }
    void pressButton(const QString &name) { click(named<Button>(name, &view())); }
};

} // namespace

TEST_F(SettingsViews, TypingKeepsTheCursorAndChangesMadeElsewhere)
{
    open(Page::senders);
    settings().editProfile(profile(0), [](SenderProfile &profile) { profile.address.company = u"Corvallon"_s; });
    settleAll();
    LineEdit *company = field(u"Company"_s);
    click(company);
    company->setCursorPosition(3);
    type(u"x"_s);
    settings().editProfile(profile(0), [](SenderProfile &profile) { profile.address.city = u"Bend"_s; });
    app().senders.add();
    settleAll();
    type(u"y"_s);
    EXPECT_EQ(focusName(), u"Company"_s);
    EXPECT_EQ(company->cursorPosition(), 5);
    const ShippoAddress stored = app().senders.find(profile(0))->address;
    EXPECT_EQ(stored.company, u"Corxyvallon"_s);
    EXPECT_EQ(stored.city, u"Bend"_s);
    EXPECT_EQ(field(u"City"_s)->text(), u"Bend"_s);
}

TEST_F(SettingsViews, ANewProfileIsNamedAtOnceMadeTheDefaultAndOutlivesTheFirst)
{
    open(Page::senders);
    const QString first = app().senders.profiles.value()[0].name;
    EXPECT_FALSE(named<Button>(u"Delete "_s + first, &view())->isEnabled());
    click(button(u"Add Profile"_s));
    type(u"Vault"_s);
    EXPECT_EQ(app().senders.profiles.value()[1].name, u"Vault"_s);
    press(Qt::Key_Tab);
    EXPECT_EQ(focusName(), u"Name"_s);
    press(Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_EQ(focusName(), u"Profile name"_s);

    auto *makeDefault = named<Button>(u"Make Default: Vault"_s, &view());
    click(makeDefault);
    EXPECT_EQ(app().senders.defaultProfile()->id, profile(1));
    EXPECT_FALSE(makeDefault->isVisible());
    pressButton(u"Delete "_s + first);
    answer(u"Keep Profile"_s);
    EXPECT_EQ(app().senders.profiles.value().size(), 2);
    pressButton(u"Delete "_s + first);
    answer(u"Delete Profile"_s);
    EXPECT_EQ(app().senders.profiles.value().size(), 1);
    EXPECT_FALSE(named<Button>(u"Delete Vault"_s, &view())->isEnabled());
}

TEST_F(SettingsViews, TheSwitchShowsAndHidesTheSidebar)
{
    open(Page::senders);
    const auto boxes = view().findChildren<QCheckBox *>();
    QCheckBox *shown = *std::ranges::find_if(boxes, &QCheckBox::isVisible);
    for (const bool on : {false, true}) {
        QTest::mouseClick(shown, Qt::LeftButton, {}, QPoint(8, shown->height() / 2));
        EXPECT_EQ(read(preferences, settings::showAddressSidebar), on);
        press(Qt::Key_1, Qt::ControlModifier);
        EXPECT_EQ(window().labelView().addressBook().isVisible(), on);
        press(Qt::Key_Comma, Qt::ControlModifier);
    }
    press(Qt::Key_1, Qt::ControlModifier);
    press(Qt::Key_B, Qt::ControlModifier);
    EXPECT_FALSE(shown->isChecked());
}

TEST_F(SettingsViews, TheRuleLineLeadsToTheRulesAndFollowsTheirSwitches)
{
    const QString money =
        u"FedEx lists money, coins and bullion among restricted goods without a contract — check yours."_s;
    const QString signature = u"FedEx usually adds direct signature by itself from $500."_s;
    label().carrier = Carrier::fedex;
    label().insuranceValue = u"500"_s;
    composeAndRate(homeAddress());
    named(money, &window().labelView());
    click(button(u"1 more"_s));
    ASSERT_TRUE(QApplication::activePopupWidget());
    press(Qt::Key_Escape);
    EXPECT_FALSE(QApplication::activePopupWidget());
    click(button(u"1 more"_s));
    click(button(u"Shipping Rules"_s));
    EXPECT_EQ(app().tab, MainTab::settings);
    auto *box = named<QCheckBox>(money + u", on, checked November 2, 2026"_s, &view());
    QTest::mouseClick(box, Qt::LeftButton, {}, QPoint(8, box->height() / 2));
    settleAll();
    EXPECT_EQ(box->accessibleName(), money + u", off, checked November 2, 2026"_s);
    EXPECT_TRUE(shows(view(), u"25 rules, 24 on"_s));
    app().tab = MainTab::newLabel;
    settleAll();
    named(signature, &window().labelView());
}

TEST_F(SettingsViews, ABoxIsTypedInOneGoAndDeletedAfterAQuestion)
{
    open(Page::boxes);
    const BoxProfile twice{.name = u"Twice"_s};
    app().boxes.profiles = QList{twice, twice}; // as in a file edited by hand
    click(button(u"Add Box"_s));
    type(u"S-4344"_s);
    for (const QString &size : {u"12"_s, u"10"_s, u"8"_s}) {
        press(Qt::Key_Tab);
        type(size);
    }
    type(u"four"_s); // is no number
    const BoxProfile box = app().boxes.profiles.value().value(2);
    EXPECT_EQ(box.name, u"S-4344"_s);
    EXPECT_EQ(box.dimsDisplay(), u"12×10×8\""_s);
    pressButton(u"Delete S-4344"_s);
    answer(u"Delete Box"_s);
    EXPECT_EQ(app().boxes.profiles.value(), QList({twice, twice}));
}

TEST_F(SettingsViews, ATokenIsHiddenWhileTypedAndClearedOnceStored)
{
    open(Page::keys);
    LineEdit *name = field(u"Key name"_s), *token = field(u"Token"_s);
    click(name);
    type(u"Live"_s);
    EXPECT_FALSE(button(u"Add Key"_s)->isEnabled());
    press(Qt::Key_Tab);
    type(u"shippo_live_1"_s);
    EXPECT_FALSE(token->displayText().contains(u"live"_s));
    EXPECT_TRUE(button(u"Add Key"_s)->isEnabled());
    press(Qt::Key_Return);
    wait([&] { return keys().keys.value().size() == 2 && name->isEnabled(); });
    EXPECT_EQ(name->text() + token->text(), QString());
    EXPECT_EQ(app().keys.token(u"Live"_s), u"shippo_live_1"_s);

    auto *live = named<QRadioButton>(u"Live, LIVE key"_s, &view());
    QTest::mouseClick(live, Qt::LeftButton);
    wait([&] { return keys().mode == PostageMode::live; });
    EXPECT_TRUE(live->isChecked());
    pressButton(u"Remove this key: Live"_s);
    answer(u"Remove Key"_s);
    wait([&] { return keys().keys.value().size() == 1; });
    EXPECT_TRUE(named<QRadioButton>(u"Practice, TEST key"_s, &view())->isChecked());
}

TEST_F(SettingsViews, AMissingPrinterIsShownAsMissingAndAReplacedOneComesBackWithUndo)
{
    open(Page::printers);
    wait([&] { return !settings().zebraQueues.value().isEmpty(); }); // until then no queue is missing
    auto *labels = named<ComboBox>(u"Label printer"_s, &view());
    EXPECT_EQ(labels->currentText(), u"ZD421"_s);
    settings().zebraQueue = QString();
    settings().documentQueue = u"Gone"_s;
    settleAll();
    auto *documents = named<ComboBox>(u"Document printer"_s, &view());
    EXPECT_EQ(documents->currentText(), u"Gone (not found)"_s);
    EXPECT_EQ(labels->currentText(), u"— none chosen —"_s) << "no queue is chosen by itself";
    documents->setFocus();
    press(Qt::Key_Home);
    EXPECT_EQ(documents->currentText(), u"— open PDFs in Preview —"_s);
    EXPECT_EQ(read(preferences, settings::documentQueue), QString());

    settings().chooseLabelQueue(u"Gone"_s);
    button(u"Refresh"_s, &view())->setFocus();
    press(Qt::Key_Space);
    wait([this] { return !settings().busy; });
    EXPECT_EQ(focusName(), u"Refresh"_s);
    EXPECT_EQ(read(preferences, settings::zebraQueue), u"ZD421"_s);
    click(button(u"Undo"_s, &view()));
    EXPECT_EQ(read(preferences, settings::zebraQueue), u"Gone"_s);
}

TEST_F(SettingsViews, RestoreIsAskedAboutAndDamageLeadsToIt)
{
    RecordsScreen &records = program->screens().records;
    wait([&] { return records.lastGood().has_value() && !records.copying; }); // the copy of the day
    wait([&] { return records.restore.obstacle().isEmpty(); });               // the start looks for found labels
    EXPECT_FALSE(records.canRestore()) << "no copy is chosen";
    records.selected = records.lastGood()->folder;
    for (const bool isDamaged : {false, true}) {
        app().tab = MainTab::newLabel;
        settleAll();
        records.restore.logDamaged = isDamaged;
        emit records.attentionWanted();
        settleAll();
        EXPECT_EQ(app().tab, MainTab::settings);
        EXPECT_TRUE(field(u"Copies folder"_s)->text().endsWith(u" ▸ Copies"_s));
        Button *restore = button(u"Restore…"_s, &view());
        EXPECT_EQ(window().focusWidget() == restore, isDamaged);
        click(restore);
        Dialog *asked = dialog();
        wait([&] { return records.restore.canRestore(); });
        settleAll();
        EXPECT_EQ(asked->height(), asked->layout()->totalHeightForWidth(asked->width()));
        EXPECT_EQ(asked->windowTitle(), isDamaged ? u"The Mailing Log Is Damaged"_s : u"Restore This Copy?"_s);
        EXPECT_EQ(focusName(), isDamaged ? u"Not Now"_s : u"Cancel"_s);
        EXPECT_TRUE(asked->accessibleDescription().contains(u"Would be lost: Nothing"_s));
        EXPECT_TRUE(button(u"Restore Copy"_s)->isEnabled());
        clock.advance(Dialog::keyGuard);
        press(Qt::Key_Return);
        EXPECT_FALSE(QApplication::activeModalWidget());
        EXPECT_EQ(records.restored.value(), QString()) << "Return leaves the records alone";
        EXPECT_FALSE(records.restore.canRestore());
    }
    Purchases &purchases = program->screens().label.purchases;
    const std::pair<Observed<bool> &, QString> obstacles[] = {
        {program->screens().label.busy, u"A purchase is in progress"_s},
        {app().scanFormBusy, u"A SCAN form is in progress"_s},
        {purchases.checking, u"A label is being checked or printed"_s},
        {purchases.printing, u"A label is being checked or printed"_s}};
    for (const auto &[isBusy, work] : obstacles) {
        isBusy = true;
        click(button(u"Restore…"_s, &view()));
        EXPECT_EQ(records.message.value(), work + u" — restore the copy when it is done."_s);
        isBusy = false;
    }
}

} // namespace parcelory::test

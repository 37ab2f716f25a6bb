#include "support/UiTest.h"

namespace parcelory::test {
namespace {
using testing::Contains;

struct SignInDesk : WindowDesk {
    QLineEdit *password() { return named<QLineEdit>(u"Password"_s); }
    QStringList texts() { return shownTexts(window()); }
};

TEST(SignInView, ReturnSignsInOrFocusesTheEmptyField)
{
    SignInDesk desk;
    desk.app().signOut();
    desk.settleAll();
    EXPECT_EQ(desk.focusName(), u"Email or user name");
    desk.press(Qt::Key_Return);
    desk.type(u"dana.marsh"_s);
    desk.press(Qt::Key_Return);
    EXPECT_EQ(desk.focusName(), u"Password");
    EXPECT_FALSE(desk.app().loginBusy || desk.app().loginError.value()); // no attempt was made
    desk.type(u"wrong"_s);
    desk.app().loginBusy = true;
    desk.settleAll();
    EXPECT_FALSE(desk.button(u"Signing in…"_s)->isEnabled() || desk.password()->isEnabled());
    desk.click(desk.button(u"Cancel"_s));
    EXPECT_FALSE(desk.app().loginBusy);
    desk.app().loginBusy = true;
    desk.settleAll();
    desk.press(Qt::Key_Escape);
    EXPECT_FALSE(desk.app().loginBusy);
    desk.press(Qt::Key_Return); // the back office is unreachable
    desk.wait([&] { return desk.app().loginError.value().has_value(); });
    EXPECT_THAT(desk.texts(), Contains(u"Can't reach deskline — connect to the VPN and try again."_s));
    EXPECT_EQ(desk.focusName(), u"Password");
    EXPECT_EQ(desk.password()->selectedText().size(), 5); // typing replaces it
}

TEST(SignInView, StartsOverAfterASignOut)
{
    SignInDesk desk;
    desk.app().signedInUser = u"d.marsh"_s;
    desk.settleAll();
    EXPECT_THAT(desk.texts(), Contains(u"d.marsh"_s));
    desk.program->screens().signIn.name = u"dana.marsh"_s;
    desk.program->screens().signIn.password = u"secret"_s;
    desk.click(desk.button(u"Sign Out"_s));
    desk.press(Qt::Key_I, Qt::ControlModifier); // shortcuts behind the sign-in are disabled
    EXPECT_EQ(desk.focusName(), u"Password");   // the name is filled in
    EXPECT_EQ(desk.password()->text(), QString());
    desk.program->screens().signIn.password = u"secret"_s; // a remembered password
    desk.settleAll();
    desk.type(u"typed"_s);
    EXPECT_EQ(desk.password()->text(), u"typed"_s) << "typing replaces it";
}

TEST(SignInView, ASignOutClosesAllWindowsButTheErrorLog)
{
    SignInDesk desk;
    const auto windows = [] {
        QStringList titles;
        for (const QWidget *shown : QApplication::topLevelWidgets()) {
            if (shown->isVisible() && shown->isWindow() && !qobject_cast<const MainWindow *>(shown))
                titles += shown->windowTitle();
        }
        return titles;
    };
    for (const QString &window : {u"errorlog"_s, u"scanform"_s, u"addressbook"_s})
        desk.window().openWindow(window);
    EXPECT_EQ(windows().size(), 3);
    desk.wait(
        [] { return QApplication::activeWindow() && QApplication::activeWindow()->windowTitle() == u"Address Book"; });
    spawn([&desk] { return desk.program->screens().addressBook.importVCard(); });
    desk.wait([] { return QApplication::activeModalWidget(); }); // the file dialog of the address book
    desk.click(desk.button(u"Sign Out"_s));
    EXPECT_EQ(windows(), QStringList{u"Error Log"_s});
    desk.wait([&desk] { return !desk.program->screens().addressBook.importing; });
    desk.app().flow = AppFlow::main;
    desk.settleAll();
    EXPECT_EQ(windows(), QStringList{u"Error Log"_s});
}

TEST(InvoicePane, LooksUpANumberAndShowsTheInvoicesWarnings)
{
    SignInDesk desk;
    desk.app().tab = MainTab::settings;
    desk.compose(homeAddress());
    desk.press(Qt::Key_I, Qt::ControlModifier);
    EXPECT_EQ(desk.app().tab.value(), MainTab::newLabel);
    EXPECT_EQ(desk.focusName(), u"Invoice #");
    desk.type(u"12"_s);
    desk.press(Qt::Key_Return);
    EXPECT_THAT(desk.texts(), Contains(u"\"12\" doesn't look like an invoice QR code or number."_s));
    EXPECT_FALSE(desk.label().busy); // Return did not reach the form
    desk.app().scannedInvoice = DesklineInvoice{.invoiceID = u"48213"_s,
                                                .items = {{.title = u"<b>Bar</b>"_s}},
                                                .tracking = u"9405511899560417228011"_s,
                                                .codes = {u"2AC14"_s, u"ARC14"_s},
                                                .notes = {{.text = QString(400, u'W'), .by = u"r.odell"_s}}};
    desk.settleAll();
    for (const QString &text :
         {u"Address flags: 2AC14, ARC14 — check the invoice's Address Change History"_s,
          u"Already has tracking: 9405511899560417228011"_s, u"<b>Bar</b>"_s, QString(400, u'W'), u"r.odell"_s})
        EXPECT_THAT(desk.texts(), Contains(text));
    ShippoAddress incomplete = homeAddress();
    incomplete.zip = QString();
    desk.app().draftTo = incomplete;
    emit desk.app().recipientTaken();
    EXPECT_FALSE(desk.label().busy);
    desk.app().fillFromInvoice({.invoiceID = u"48213"_s, .address = homeAddress()});
    emit desk.app().recipientTaken();
    EXPECT_TRUE(desk.label().busy); // validates by itself
    desk.idle();
}

TEST(InvoicePane, CancelsReadingByButtonAndByEscape)
{
    SignInDesk desk;
    for (const bool byKey : {false, true}) {
        desk.press(Qt::Key_I, Qt::ControlModifier);
        desk.app().scanBusy = true;
        desk.app().setScanStatus(StatusKind::progress, u"Loading invoice 48213 from deskline…"_s);
        desk.settleAll();
        if (byKey)
            desk.press(Qt::Key_Escape);
        else
            desk.click(desk.button(u"Cancel"_s));
        EXPECT_FALSE(desk.app().scanBusy);
        EXPECT_EQ(desk.focusName(), u"Invoice #");
    }
    desk.app().tab = MainTab::settings; // the pane is not shown
    desk.app().scanBusy = true;
    desk.app().setScanStatus(StatusKind::progress, u"Loading invoice 48213 from deskline…"_s);
    desk.settleAll();
    desk.click(desk.named<Button>(u"Stop reading the invoice"_s));
    EXPECT_FALSE(desk.app().scanBusy);
}

TEST(InvoicePane, HidesInANarrowWindowAndOpensOnRequest)
{
    SignInDesk desk;
    desk.composeAndRate(homeAddress());
    desk.press(Qt::Key_F6);
    EXPECT_EQ(desk.focusName(), u"Search name, company, place");
    desk.window().resize(1024, 680);
    desk.settleAll();
    EXPECT_EQ(desk.focusName(), u"Recipient name");
    desk.press(Qt::Key_B, Qt::ControlModifier);
    desk.press(Qt::Key_Return, Qt::ControlModifier); // only shows the price again
    EXPECT_EQ(desk.purchases(), 0);
    EXPECT_TRUE(desk.button(u"Buy & Print Label"_s)->isVisible());
    EXPECT_TRUE(read(desk.preferences, settings::showAddressSidebar));
    desk.window().resize(1280, 800);
    desk.settleAll();
    desk.press(Qt::Key_B, Qt::ControlModifier);
    EXPECT_FALSE(read(desk.preferences, settings::showAddressSidebar));
}

} // namespace
} // namespace parcelory::test

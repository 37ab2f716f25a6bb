#include "ui/MainWindow.h"

#include "app/AppState.h"
#include "app/Screens.h"
#include "app/settings/KeysScreen.h"
#include "core/Task.h"
#include "core/ports/Preferences.h"
#include "ui/ModeStripe.h"
#include "ui/theme/Tokens.h"

#include "core/SettingsKeys.h"
#include "ui/EndOfDayWindow.h"
#include "ui/ErrorLogWindow.h"
#include "ui/HeaderBar.h"
#include "ui/HelpMenu.h"
#include "ui/LabelWindow.h"
#include "ui/StatusStrip.h"
#include "ui/WindowActions.h"
#include "ui/label/LabelView.h"
#include "ui/log/MailingLogView.h"
#include "ui/log/MasterLogView.h"
#include "ui/log/ScanFormWindow.h"
#include "ui/parts/PanelFrame.h"
#include "ui/parts/WindowSize.h"
#include "ui/settings/SettingsView.h"
#include "ui/sidebar/AddressBookWindow.h"
#include "ui/signin/SignInView.h"
#include "ui/theme/Theme.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDialog>
#include <QScreen>
#include <QStackedWidget>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

/// How many owners lead from a dialog to the window; 0 if the dialog is not the window's.
int stepsTo(const QWidget *window, const QWidget *dialog)
{
    int steps = 0;
    for (const QWidget *owner = dialog; owner; owner = owner->parentWidget(), ++steps) {
        if (owner == window)
            return steps;
    }
    return 0;
}

/// The last dialog over the window, which has the window's keys; without a dialog, the window.
QWidget *frontOf(QWidget *window)
{
    if (QWidget *last = QApplication::activeModalWidget(); last && stepsTo(window, last) > 0)
        return last;
    QWidget *front = window; // the last dialog of all is another window's
    int farthest = 0;
    for (QWidget *dialog : QApplication::topLevelWidgets()) {
        const int steps = dialog->isModal() && dialog->isVisible() ? stepsTo(window, dialog) : 0;
        if (steps > farthest) {
            farthest = steps;
            front = dialog;
        }
    }
    return front;
}

constexpr QSize leastSize(1024, 680);
constexpr int lowestHeight = 604; ///< of a screen with 800 lines at 125 %: what is higher than this scrolls

/// The least size on a screen with this much room, which is lower than usual on a low screen.
QSize leastSizeIn(QSize room)
{
    const Theme &theme = Theme::current();
    const int width = std::min(theme.scaled(leastSize.width()), std::max(leastSize.width(), room.width()));
    const int height = std::min(theme.scaled(leastSize.height()), roomFor(room).height());
    return {width, std::max(lowestHeight, height)};
}

void showSettings(MainWindow &window, SettingsView::Page page)
{
    window.app().tab = MainTab::settings;
    window.settingsView().showPage(page);
}

} // namespace

MainWindow::MainWindow(AppState &app, Screens &screens, const QString &signInNote)
    : m_app(app), m_screens(screens), m_flows(new QStackedWidget), m_formsOpened(app.scanFormOpenTick),
      m_labelsOpened(screens.labelsOpened), m_start([this] { refreshStart(); })
{
    auto *signIn = new SignInView(app, screens.signIn, signInNote);
    signIn->installEventFilter(this);
    m_flows->addWidget(signIn);
    setCentralWidget(m_flows);
    addWindowActions(*this);
    addHelpMenu(*this);
    setMinimumSize(leastSizeIn(screen()->availableSize()));
    restoreLayout();
    connect(&screens.records, &RecordsScreen::attentionWanted, this,
            [this] { showSettings(*this, SettingsView::Page::records); });
    m_start.follow(screens);
    refreshStart();
}

MainWindow::~MainWindow()
{
    for (const QPointer<QWidget> &window : std::as_const(m_windows))
        delete window;
}

/// The tabs take longer to make than the sign-in page, and the clerk does not see them yet.
bool MainWindow::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Paint) {
        watched->removeEventFilter(this);
        QTimer::singleShot(0, this, [this] { makeMain(); });
    }
    return QMainWindow::eventFilter(watched, event);
}

/// Only once.
void MainWindow::makeMain()
{
    if (m_tabs)
        return;
    m_stripe = new ModeStripe;
    m_tabs = new QStackedWidget;
    m_label = new LabelView(m_app, m_screens.label, m_screens.addressBook, m_screens.keys, m_screens.settings);
    m_mailingLog = new MailingLogView(m_app, m_screens.mailingLog, m_screens.openItems);
    m_masterLog = new MasterLogView(m_app, m_screens.masterLog);
    m_settings = new SettingsView(m_app, m_screens);
    for (QWidget *view : {static_cast<QWidget *>(m_label), static_cast<QWidget *>(m_mailingLog),
                          static_cast<QWidget *>(m_masterLog), static_cast<QWidget *>(m_settings)})
        m_tabs->addWidget(view); // in the order of mainTabs()
    auto *main = new PanelFrame(&Tokens::window);
    auto *rows = new QVBoxLayout(main);
    rows->setContentsMargins(0, 0, 0, 0);
    rows->setSpacing(0);
    rows->addWidget(m_stripe);
    rows->addWidget(new HeaderBar(m_app, m_screens));
    rows->addWidget(m_tabs, 1);
    auto *strip = new StatusStrip(m_app, m_screens);
    rows->addWidget(strip);
    connect(strip, &StatusStrip::keysRequested, this, [this] { showSettings(*this, SettingsView::Page::keys); });
    connect(m_label, &LabelView::rulesRequested, this, [this] { showSettings(*this, SettingsView::Page::rules); });
    m_flows->addWidget(main);
    m_refresh.emplace([this] { refresh(); });
    m_refresh->follow(m_screens);
    refresh();
}

QSize MainWindow::firstSize(QSize room)
{
    return QSize(1280, 800).boundedTo(roomFor(room)).expandedTo(leastSizeIn(room));
}

void MainWindow::restoreLayout()
{
    const QByteArray geometry = read(m_app.platform.preferences, settings::windowGeometry);
    if (geometry.isEmpty() || !restoreGeometry(geometry))
        resize(firstSize(screen()->availableSize()));
}

void MainWindow::refreshStart()
{
    if (m_app.flow == AppFlow::main)
        makeMain();
    switch (m_screens.keys.mode) {
    case PostageMode::test:
        setWindowTitle(u"Parcelory — TEST MODE"_s);
        break;
    case PostageMode::practice:
        setWindowTitle(u"Parcelory — PRACTICE MODE"_s);
        break;
    default:
        setWindowTitle(u"Parcelory"_s);
    }
}

void MainWindow::refresh()
{
    const bool signedIn = m_app.flow == AppFlow::main;
    const bool entering = signedIn && m_flows->currentIndex() == 0;
    if (!signedIn && m_flows->currentIndex() == 1)
        closeWindowsOfSession();
    m_flows->setCurrentIndex(signedIn ? 1 : 0);
    if (entering)
        spawn([this] { return m_app.syncRefundStatuses(); });
    const int tab = int(m_app.tab.value());
    const bool changed = m_tabs->currentIndex() != tab;
    m_tabs->setCurrentIndex(tab);
    m_stripe->setMode(m_screens.keys.mode);
    if ((entering || changed) && signedIn && m_app.tab == MainTab::newLabel && m_app.draftTo.value().isEmpty())
        m_label->focusStart();
    if (const int opened = m_app.scanFormOpenTick; std::exchange(m_formsOpened, opened) != opened)
        openWindow(u"scanform"_s);
    if (const int opened = m_screens.labelsOpened; std::exchange(m_labelsOpened, opened) != opened)
        openWindow(u"label"_s);
    finishClosing();
}

void MainWindow::showTab(MainTab tab)
{
    m_app.tab = tab;
    makeMain();
    m_refresh->refreshNow();
}

QWidget *MainWindow::makeWindow(const QString &identifier)
{
    if (identifier == u"addressbook")
        return makeAddressBook();
    if (identifier == u"errorlog")
        return new ErrorLogWindow(m_app.errors, m_app.platform.desktop);
    if (identifier == u"scanform")
        return new ScanFormWindow(m_app, m_screens.scanForm);
    if (identifier == u"endofday")
        return makeEndOfDay();
    if (identifier == u"label")
        return new LabelWindow(m_app, m_screens);
    return nullptr;
}

/// Filling the label from the address book brings this window to the front.
QWidget *MainWindow::makeAddressBook()
{
    auto *window = new AddressBookWindow(m_app, m_screens.addressBook);
    connect(window, &AddressBookWindow::filled, this, [this] { bringToFront(this); });
    return window;
}

/// A label that is shown in a log brings this window to the front.
QWidget *MainWindow::makeEndOfDay()
{
    auto *window = new EndOfDayWindow(m_app, m_screens);
    connect(window, &EndOfDayWindow::labelShown, this, [this] { bringToFront(this); });
    return window;
}

void MainWindow::bringToFront(QWidget *window)
{
    window->setWindowState(window->windowState() & ~Qt::WindowMinimized);
    window->show();
    window->raise();
    frontOf(window)->activateWindow();
}

void MainWindow::openWindow(const QString &identifier)
{
    QPointer<QWidget> &window = m_windows[identifier];
    if (!window)
        window = makeWindow(identifier);
    if (!window)
        return;
    window->setAttribute(Qt::WA_DeleteOnClose);
    bringToFront(window);
}

/// A clerk who is signed out must not change the address book or print a form. The error log belongs to the program.
void MainWindow::closeWindowsOfSession()
{
    for (auto window = m_windows.cbegin(); window != m_windows.cend(); ++window) {
        if (!*window || window.key() == u"errorlog")
            continue;
        for (QDialog *dialog : (*window)->findChildren<QDialog *>())
            dialog->reject(); // answers the operation that waits for it
        (*window)->close();
    }
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    write(m_app.platform.preferences, settings::windowGeometry, saveGeometry());
    if (m_screens.mustStayOpen()) {
        if (!m_closing)
            m_closing = Closing{};
        m_app.closing = true;
        noteReasons();
        event->ignore();
        return;
    }
    const bool keepsForm = m_closing && m_closing->afterForm;
    for (auto window = m_windows.cbegin(); window != m_windows.cend(); ++window) {
        if (*window && !(keepsForm && window.key() == u"scanform")) // a new form is yet to be printed
            (*window)->close();
    }
    event->accept();
}

void MainWindow::noteReasons()
{
    m_closing->afterPurchase |= m_screens.label.buying;
    m_closing->afterForm |= m_app.scanFormBusy;
}

/// Closes the window after the purchase or the SCAN form that kept it open. If the label is not bought, printed and
/// logged, or the form failed, the window stays open, because the clerk must read the message.
void MainWindow::finishClosing()
{
    if (!m_closing)
        return;
    noteReasons();
    if (m_screens.mustStayOpen())
        return;
    const bool isRead = (!m_closing->afterPurchase || m_screens.label.purchaseComplete()) &&
                        (!m_closing->afterForm || m_app.scanFormComplete);
    if (isRead)
        close();
    m_closing = std::nullopt;
    m_app.closing = false;
}

void MainWindow::changeEvent(QEvent *event)
{
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow())
        spawn([this] { return m_screens.keys.refreshAtActivation(); });
}

} // namespace parcelory

#include "ui/WindowActions.h"

#include "app/AppState.h"
#include "app/label/LabelScreen.h"
#include "app/logs/MailingLogScreen.h"
#include "app/logs/MasterLogScreen.h"
#include "app/logs/TrackPage.h"
#include "carrier/MasterEntry.h"
#include "core/Task.h"
#include "records/LabelChecks.h"
#include "records/ShipmentRecord.h"
#include "ui/EditMenu.h"
#include "ui/MainWindow.h"
#include "ui/label/LabelView.h"
#include "ui/log/MailingLogView.h"
#include "ui/log/MasterLogView.h"
#include "ui/parts/RefreshScheduler.h"
#include "ui/parts/RowTable.h"

#include <QAction>
#include <QApplication>
#include <QHeaderView>
#include <QMenuBar>

#include <functional>
#include <optional>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

#ifdef Q_OS_MACOS
const QKeySequence minimizeKeys(Qt::CTRL | Qt::Key_M);
constexpr bool isMac = true;
#else
const QKeySequence minimizeKeys; // the window manager has its own
constexpr bool isMac = false;
#endif

/// An action and when it is enabled.
struct Offer {
    QAction *action;
    std::function<bool()> when;
};

class Menus : public QObject {
public:
    explicit Menus(MainWindow &window) : QObject(&window), m_window(window), m_refresh([this] { refresh(); }) {}

    void fill();

private:
    AppState &app() { return m_window.app(); }
    LabelView &view() { return m_window.labelView(); } ///< made after the menus
    LabelScreen &label() { return m_window.screens().label; }
    MailingLogScreen &mailingLog() { return m_window.screens().mailingLog; }
    MasterLogScreen &masterLog() { return m_window.screens().masterLog; }
    std::function<bool()> signedIn()
    {
        return [this] { return app().flow == AppFlow::main; };
    }
    bool isOn(MainTab tab) { return app().flow == AppFlow::main && app().tab == tab; }
    /// The shipment that an action of the mailing log applies to.
    std::optional<ShipmentRecord> chosen()
    {
        return isOn(MainTab::mailingLog) ? mailingLog().selectedRecord() : std::nullopt;
    }
    std::optional<MasterEntry> chosenEntry()
    {
        return isOn(MainTab::masterLog) ? masterLog().selectedEntry() : std::nullopt;
    }
    /// The same, while no operation of the mailing log is in progress.
    std::optional<ShipmentRecord> idleChosen() { return mailingLog().busy ? std::nullopt : chosen(); }
    bool hasLastLabel() { return isOn(MainTab::newLabel) && label().last.label.value().has_value(); }

    void add(QMenu *menu, const QString &text, const QKeySequence &keys, std::function<bool()> when,
             std::function<void()> run);
    void addProgram(QMenu *menu);
    void addLabel();
    void addLog();
    void addShipment(QMenu *menu);
    void addTracking(QMenu *menu);
    void addExchange(QMenu *menu);
    void addSorting(QMenu *menu);
    void addView();
    void addWindow();
    void refresh();

    MainWindow &m_window;
    QList<Offer> m_offers;
    RefreshScheduler m_refresh;
};

void Menus::add(QMenu *menu, const QString &text, const QKeySequence &keys, std::function<bool()> when,
                std::function<void()> run)
{
    QAction *action = menu->addAction(text);
    action->setShortcut(keys);
    action->setAutoRepeat(false); // a key held down must not buy, print or clear again and again
    action->setMenuRole(QAction::NoRole);
    QObject::connect(action, &QAction::triggered, &m_window, [when, run] {
        if (when()) // the state may have changed since the menu was drawn
            run();
    });
    m_offers.append({action, std::move(when)});
}

void Menus::fill()
{
    if (!isMac) // its two entries are in the application's menu there, which would leave an empty menu
        addProgram(m_window.menuBar()->addMenu(u"&File"_s));
    addEditMenu(m_window.menuBar(), {.isOffered = [this] { return m_window.screens().canUndo(); },
                                     .run = [this] { m_window.screens().undo(); }});
    addLabel();
    addLog();
    addView();
    addWindow();
    m_refresh.follow(m_window.screens());
    refresh();
}

void Menus::refresh()
{
    for (const Offer &offer : m_offers)
        offer.action->setEnabled(offer.when());
}

void Menus::addProgram(QMenu *menu)
{
    add(menu, u"Settings…"_s, Qt::CTRL | Qt::Key_Comma, signedIn(), [this] { m_window.showTab(MainTab::settings); });
    menu->actions().last()->setMenuRole(QAction::PreferencesRole);
    menu->addSeparator();
    QAction *quit = menu->addAction(u"Quit Parcelory"_s);
    quit->setShortcut(Qt::CTRL | Qt::Key_Q);
    quit->setMenuRole(QAction::QuitRole);
    quit->setShortcutContext(Qt::ApplicationShortcut);                       // from the secondary windows, too
    QObject::connect(quit, &QAction::triggered, &m_window, &QWidget::close); // a purchase is finished first
}

void Menus::addLabel()
{
    QMenu *menu = m_window.menuBar()->addMenu(u"&Label"_s);
    const auto here = [this] { return isOn(MainTab::newLabel); };
    const auto idle = [this, here] { return here() && !label().busy; };
    add(
        menu, u"Clear Form"_s, Qt::CTRL | Qt::Key_N, [this, here] { return here() && label().canClear(); },
        [this] { view().clear(); });
    add(menu, u"Recipient"_s, Qt::CTRL | Qt::Key_L, here, [this] { view().focusRecipient(); });
    add(menu, u"Search the Address Book"_s, Qt::CTRL | Qt::Key_F, here, [this] { view().focusAddressSearch(); });
    add(menu, u"Invoice Number"_s, Qt::CTRL | Qt::Key_I, signedIn(), [this] {
        m_window.showTab(MainTab::newLabel);
        view().focusInvoiceNumber();
    });
    add(
        menu, u"Validate Address"_s, Qt::CTRL | Qt::Key_K,
        [this, idle] { return idle() && !label().recipient().isEmpty(); }, [this] { view().validate(); });
    add(
        menu, u"Weigh"_s, Qt::CTRL | Qt::Key_G, [this, idle] { return idle() && app().scale.connected; },
        [this] { label().weigh(); });
    add(menu, u"Get Rates"_s, Qt::CTRL | Qt::Key_R, idle, [this] { view().getRates(); }); // or says what is missing
    add(
        menu, u"Insure for the Invoice"_s, Qt::CTRL | Qt::SHIFT | Qt::Key_I,
        [this, here] { return here() && label().isInsurable() && !label().buying; },
        [this] { label().insureForInvoice(); });
    menu->addSeparator();
    add(
        menu, u"Buy && Print Label"_s, Qt::CTRL | Qt::Key_Return,
        [this, here] { return here() && label().nextStep() == NextStep::buy; }, [this] { view().buy(); });
    if (isMac)
        addProgram(menu);
}

void Menus::addLog()
{
    QMenu *menu = m_window.menuBar()->addMenu(u"L&og"_s);
    add(
        menu, u"Search the Mailing Log"_s, Qt::CTRL | Qt::Key_F, [this] { return isOn(MainTab::mailingLog); },
        [this] { m_window.mailingLogView().focusSearch(); });
    add(
        menu, u"Search the Master Log"_s, Qt::CTRL | Qt::Key_F, [this] { return isOn(MainTab::masterLog); },
        [this] { m_window.masterLogView().focusSearch(); });
    add(menu, u"Open Items"_s, Qt::CTRL | Qt::SHIFT | Qt::Key_T, signedIn(), [this] {
        OpenItemsScreen &items = m_window.screens().openItems;
        items.isShown = app().tab != MainTab::mailingLog || !items.isShown;
        app().tab = MainTab::mailingLog;
    });
    addSorting(menu->addMenu(u"Sort By"_s));
    menu->addSeparator();
    addShipment(menu);
    addTracking(menu);
    menu->addSeparator();
    add( // no shortcut: a refund voids the label and must not happen by accident
        menu, u"Refund"_s, {}, [this] { return idleChosen() && MailingLogScreen::isRefundable(*chosen()); },
        [this] { spawn([this] { return mailingLog().refund(*chosen()); }); });
    menu->addSeparator();
    addExchange(menu);
    menu->addSeparator();
    add(
        menu, u"SCAN Form"_s, Qt::CTRL | Qt::SHIFT | Qt::Key_F,
        [this] { return app().flow == AppFlow::main && !app().scanFormBusy; },
        [this] { spawn([this] { return m_window.screens().createScanForm(); }); });
    add(menu, u"End of Day"_s, {}, signedIn(), [this] { m_window.openWindow(u"endofday"_s); });
}

void Menus::addShipment(QMenu *menu)
{
    add(
        menu, u"Reprint"_s, Qt::CTRL | Qt::Key_P,
        [this] {
            return hasLastLabel() ? !label().busy
                                  : idleChosen() && labelBlocker(LabelUse::reprint, *chosen()).isEmpty();
        },
        [this] {
            if (hasLastLabel())
                view().reprint();
            else
                spawn([this] { return mailingLog().reprint(*chosen()); });
        });
    add( // Space does it in the list and on the label's picture
        menu, u"Show Label"_s, {}, [this] { return chosen() || hasLastLabel(); },
        [this] { (hasLastLabel() ? label().last.preview : mailingLog().preview).open(); });
    add(
        menu, u"Customs Docs"_s, Qt::CTRL | Qt::SHIFT | Qt::Key_D,
        [this] {
            return hasLastLabel() ? label().last.hasCustoms() && !label().busy : idleChosen() && chosen()->isIntl;
        },
        [this] {
            spawn([this] {
                return hasLastLabel() ? label().last.reprintCustoms() : mailingLog().reprintCustoms(*chosen());
            });
        });
    add(
        menu, u"Check Status"_s, {}, [this] { return idleChosen() && MailingLogScreen::isCheckable(*chosen()); },
        [this] { spawn([this] { return mailingLog().checkStatus(*chosen()); }); });
}

void Menus::addTracking(QMenu *menu)
{
    add(
        menu, u"Copy Tracking"_s, Qt::CTRL | Qt::SHIFT | Qt::Key_C,
        [this] {
            const auto record = chosen();
            const auto entry = chosenEntry();
            return (record && !record->tracking.isEmpty()) || (entry && !entry->tracking.isEmpty()) ||
                   (hasLastLabel() && label().last.hasTracking());
        },
        [this] {
            if (hasLastLabel())
                label().last.copyTracking();
            else if (const auto entry = chosenEntry())
                masterLog().copyTracking(*entry);
            else
                mailingLog().copyTracking(*chosen());
        });
    add(
        menu, u"Track Online"_s, Qt::CTRL | Qt::SHIFT | Qt::Key_O,
        [this] {
            const auto entry = chosenEntry();
            return (entry && !entry->trackingURL.isEmpty()) || (chosen() && !trackingPageOf(*chosen()).isEmpty());
        },
        [this] {
            if (const auto entry = chosenEntry())
                spawn([this, entry] { return masterLog().trackOnline(*entry); });
            else
                spawn([this] { return mailingLog().trackOnline(*chosen()); });
        });
}

void Menus::addExchange(QMenu *menu)
{
    const auto onLog = [this] { return isOn(MainTab::mailingLog) && !mailingLog().busy; };
    const auto onMaster = [this] { return isOn(MainTab::masterLog); };
    add(menu, u"Import Endicia Mail Log"_s, Qt::CTRL | Qt::SHIFT | Qt::Key_M, onLog,
        [this] { spawn([this] { return mailingLog().importCSV(); }); });
    add(
        menu, u"Export"_s, Qt::CTRL | Qt::SHIFT | Qt::Key_S,
        [=, this] { return onLog() || (onMaster() && masterLog().canExport()); },
        [=, this] {
            if (onMaster())
                spawn([this] { return masterLog().exportCSV(); });
            else
                spawn([this] { return mailingLog().exportCSV(); });
        });
    add(
        menu, u"Refresh"_s, Qt::CTRL | Qt::Key_R, [=, this] { return onMaster() && masterLog().canLoad(); },
        [this] { m_window.masterLogView().load(); });
}

/// Lets the keyboard do what a click on a column's header does.
void Menus::addSorting(QMenu *menu)
{
    QObject::connect(menu, &QMenu::aboutToShow, this, [this, menu] {
        menu->clear();
        RowTable *table = isOn(MainTab::mailingLog)  ? m_window.mailingLogView().table()
                          : isOn(MainTab::masterLog) ? m_window.masterLogView().table()
                                                     : nullptr;
        for (int column = 0; table && column < table->model()->columnCount(); ++column) {
            QAction *action = menu->addAction(table->model()->headerData(column, Qt::Horizontal).toString());
            action->setCheckable(true);
            action->setChecked(table->horizontalHeader()->sortIndicatorSection() == column);
            QObject::connect(action, &QAction::triggered, table, [table, column] { table->sortBy(column); });
        }
    });
    m_offers.append({menu->menuAction(), [this] { return isOn(MainTab::mailingLog) || isOn(MainTab::masterLog); }});
}

void Menus::addView()
{
    QMenu *menu = m_window.menuBar()->addMenu(u"&View"_s);
    int number = 1;
    for (const MainTabInfo &info : mainTabs()) {
        const auto show = [this, tab = info.tab] { app().tab = tab; };
        add(menu, info.title, QKeySequence(Qt::CTRL | Qt::Key(Qt::Key_0 + number++)), signedIn(), show);
    }
    menu->addSeparator();
    const auto here = [this] { return isOn(MainTab::newLabel); };
    add(menu, u"Sidebar"_s, Qt::CTRL | Qt::Key_B, here, [this] { view().toggleSidebar(); });
    add(menu, u"Next Region"_s, Qt::Key_F6, here, [this] { view().focusRegion(+1); });
    add(menu, u"Previous Region"_s, Qt::SHIFT | Qt::Key_F6, here, [this] { view().focusRegion(-1); });
    if (isMac) // the system adds its own entry for the full screen
        return;
    menu->addSeparator();
    add(
        menu, u"Full Screen"_s, QKeySequence::keyBindings(QKeySequence::FullScreen).value(0, Qt::Key_F11),
        [] { return true; }, [this] { m_window.setWindowState(m_window.windowState() ^ Qt::WindowFullScreen); });
}

void Menus::addWindow()
{
    QMenu *menu = m_window.menuBar()->addMenu(u"&Window"_s);
    add(menu, u"Minimize"_s, minimizeKeys, [] { return true; }, [this] { m_window.showMinimized(); });
    menu->addSeparator();
    add(menu, u"Address Book"_s, Qt::CTRL | Qt::SHIFT | Qt::Key_B, signedIn(),
        [this] { m_window.openWindow(u"addressbook"_s); });
    add( // the carrier creates a form only once, and its window may have been closed
        menu, u"SCAN Forms"_s, {}, [this] { return app().flow == AppFlow::main; },
        [this] { m_window.openWindow(u"scanform"_s); });
    add(
        menu, u"Error Log"_s, Qt::CTRL | Qt::SHIFT | Qt::Key_L, [] { return true; },
        [this] { m_window.openWindow(u"errorlog"_s); });
}

} // namespace

void addWindowActions(MainWindow &window)
{
    (new Menus(window))->fill(); // the window owns it
}

} // namespace parcelory

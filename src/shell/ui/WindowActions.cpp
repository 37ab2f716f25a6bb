#include "shell/ui/WindowActions.h"

#include "shell/ui/MainWindow.h"
#include "shell/ui/label/LabelView.h"
#include "shell/ui/log/MailingLogView.h"

#include <QAction>
#include <QApplication>
#include <QMenuBar>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

/// An action and when it can be used.
struct Offer {
    QAction *action;
    std::function<bool()> when;
};

class Menus : public QObject {
public:
    explicit Menus(MainWindow &window) : QObject(&window), m_window(window), m_follower([this] { refresh(); }) {}

    void fill();

private:
    AppState &app() { return m_window.app(); }
    LabelScreen &label() { return m_window.screens().label; }
    bool isOn(MainTab tab) { return app().flow == AppFlow::main && app().tab == tab; }

    void add(QMenu *menu, const QString &text, const QKeySequence &keys, std::function<bool()> when,
             std::function<void()> run);
    void addFile();
    void addLabel();
    void addLog();
    void addView();
    void addWindow();
    void refresh();

    MainWindow &m_window;
    QList<Offer> m_offers;
    Follower m_follower;
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
    addFile();
    addLabel();
    addLog();
    addView();
    addWindow();
    m_follower.follow(app().flow, app().tab, app().draftTo, label().busy, label().rates, label().selectedRateID,
                      label().weightLb, label().weightOz, label().lastLabel, app().scale.connected,
                      m_window.screens().mailingLog.selected);
    refresh();
}

void Menus::refresh()
{
    for (const Offer &offer : m_offers)
        offer.action->setEnabled(offer.when());
}

void Menus::addFile()
{
    QMenu *menu = m_window.menuBar()->addMenu(u"&File"_s);
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
    LabelView &view = m_window.labelView();
    add(menu, u"Clear Form"_s, Qt::CTRL | Qt::Key_N, here, [&view] { view.clear(); });
    add(menu, u"Recipient"_s, Qt::CTRL | Qt::Key_L, here, [&view] { view.focusRecipient(); });
    add(
        menu, u"Invoice Number"_s, Qt::CTRL | Qt::Key_I, [this] { return app().flow == AppFlow::main; },
        [this] {
            m_window.showTab(MainTab::newLabel);
            m_window.labelView().focusInvoiceNumber();
        });
    add(menu, u"Validate Address"_s, Qt::CTRL | Qt::Key_K, idle, [&view] { view.validate(); });
    add(
        menu, u"Weigh"_s, Qt::CTRL | Qt::Key_G, [this, idle] { return idle() && app().scale.connected; },
        [this] { label().weigh(); });
    add(menu, u"Get Rates"_s, Qt::CTRL | Qt::Key_R, idle, [&view] { view.getRates(); });
    menu->addSeparator();
    add(
        menu, u"Buy && Print Label"_s, Qt::CTRL | Qt::Key_Return,
        [this, here] { return here() && label().nextStep() == NextStep::buy; }, [&view] { view.buy(); });
}

void Menus::addLog()
{
    QMenu *menu = m_window.menuBar()->addMenu(u"L&og"_s);
    const auto onLog = [this] { return isOn(MainTab::mailingLog); };
    const auto chosen = [this] { return m_window.mailingLogView().selectedRecord(); };
    const auto onLast = [this] { return isOn(MainTab::newLabel) && label().lastLabel.value().has_value(); };
    const auto canAct = [=] { return (onLog() && chosen()) || onLast(); };
    add(menu, u"Search the Mailing Log"_s, Qt::CTRL | Qt::Key_F, onLog,
        [this] { m_window.mailingLogView().focusSearch(); });
    menu->addSeparator();
    add(menu, u"Reprint"_s, Qt::CTRL | Qt::Key_P, canAct, [=, this] {
        if (onLast())
            spawn([this] { return label().reprintLast(); });
        else
            spawn([this, chosen] { return m_window.screens().mailingLog.reprint(*chosen()); });
    });
    add(
        menu, u"Customs Docs"_s, Qt::CTRL | Qt::SHIFT | Qt::Key_D,
        [=] { return onLog() && chosen() && chosen()->isIntl; },
        [this, chosen] { spawn([this, chosen] { return m_window.screens().mailingLog.reprintCustoms(*chosen()); }); });
    add(menu, u"Copy Tracking"_s, Qt::CTRL | Qt::SHIFT | Qt::Key_C, canAct, [=, this] {
        if (onLast())
            label().copyLastTracking();
        else
            m_window.screens().mailingLog.copyTracking(*chosen());
    });
}

void Menus::addView()
{
    QMenu *menu = m_window.menuBar()->addMenu(u"&View"_s);
    const auto signedIn = [this] { return app().flow == AppFlow::main; };
    int number = 1;
    for (const MainTabInfo &info : mainTabs()) {
        const auto show = [this, tab = info.tab] { app().tab = tab; };
        add(menu, info.title, QKeySequence(Qt::CTRL | Qt::Key(Qt::Key_0 + number++)), signedIn, show);
    }
    QAction *settings = menu->actions().last();
    settings->setShortcuts({settings->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_Comma)});
    menu->addSeparator();
    const auto here = [this] { return isOn(MainTab::newLabel); };
    add(menu, u"Sidebar"_s, Qt::CTRL | Qt::Key_B, here, [this] { m_window.labelView().toggleSidebar(); });
    add(menu, u"Next Region"_s, Qt::Key_F6, here, [this] { m_window.labelView().focusRegion(+1); });
    add(menu, u"Previous Region"_s, Qt::SHIFT | Qt::Key_F6, here, [this] { m_window.labelView().focusRegion(-1); });
}

void Menus::addWindow()
{
    QMenu *menu = m_window.menuBar()->addMenu(u"&Window"_s);
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

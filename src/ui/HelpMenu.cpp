#include "ui/HelpMenu.h"

#include "core/Task.h"
#include "ui/MainWindow.h"
#include "ui/ShortcutOverview.h"
#include "ui/UpdatePrompt.h"
#include "ui/parts/RefreshScheduler.h"

#include <QAction>
#include <QMenuBar>
#include <QPointer>

#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

/// Opens the update prompt, one at a time.
class Updates : public QObject {
public:
    explicit Updates(MainWindow &window)
        : QObject(&window), m_window(window), m_shown(window.screens().updates.offers), m_refresh([this] { refresh(); })
    {
        m_refresh.follow(window.screens().updates);
    }

private:
    void refresh()
    {
        Screens &screens = m_window.screens();
        const int offers = screens.updates.offers;
        if (std::exchange(m_shown, offers) == offers || m_prompt || !screens.updates.available.value())
            return;
        m_prompt = new UpdatePrompt(m_window.app(), screens, &m_window);
        m_prompt->setAttribute(Qt::WA_DeleteOnClose);
        m_prompt->open();
    }

    MainWindow &m_window;
    QPointer<UpdatePrompt> m_prompt;
    int m_shown; ///< UpdateChecker::offers at the last prompt
    RefreshScheduler m_refresh;
};

void say(MainWindow &window, const QString &title, const QString &text)
{
    spawn([&prompts = window.app().platform.prompts, title, text] { return prompts.alert(title, text); });
}

} // namespace

void addHelpMenu(MainWindow &window)
{
    new Updates(window); // the window owns it
    QMenu *menu = window.menuBar()->addMenu(u"&Help"_s);
    const auto add = [&](const QString &text, QAction::MenuRole role, auto run) {
        QAction *action = menu->addAction(text);
        action->setMenuRole(role);
        QObject::connect(action, &QAction::triggered, &window, run);
    };
    add(u"Keyboard Shortcuts"_s, QAction::NoRole,
        [&window] { makeShortcutOverview(window.app().platform.clock, *window.menuBar(), &window)->open(); });
    menu->actions().last()->setShortcut(QKeySequence::HelpContents);
    add(u"Check for Updates…"_s, QAction::ApplicationSpecificRole,
        [&window] { spawn([&updates = window.screens().updates] { return updates.checkNow(); }); });
    add(u"About Parcelory"_s, QAction::AboutRole, [&window] {
        say(window, u"About Parcelory"_s,
            u"Parcelory %1\nPrepares, buys and prints USPS and FedEx labels.\n\nIt uses Qt, which is free software under the GNU Lesser General Public License, version 3."_s
                .arg(window.screens().updates.installedVersion()));
    });
}

} // namespace parcelory

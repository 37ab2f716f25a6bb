#include "ui/HelpMenu.h"

#include "app/Screens.h"
#include "core/Task.h"
#include "ui/MainWindow.h"
#include "ui/ShortcutOverview.h"
#include "ui/UpdateOffers.h"

#include <QAction>
#include <QMenuBar>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

/// Disables the entry, and says why, while there is no handbook.
void followHandbook(QAction *entry, MainWindow &window)
{
    const Handbook &handbook = window.screens().handbook;
    const auto refresh = [entry, &handbook] {
        entry->setEnabled(handbook.installed);
        entry->setText(handbook.installed ? u"Handbook"_s : u"Handbook — not installed"_s);
    };
    QObject::connect(&handbook, &Handbook::changed, entry, refresh);
    refresh();
}

void say(MainWindow &window, const QString &title, const QString &text)
{
    spawn([&prompts = window.app().platform.prompts, title, text] { return prompts.alert(title, text); });
}

} // namespace

void addHelpMenu(MainWindow &window)
{
    new UpdateOffers(window); // the window owns it
    QMenu *menu = window.menuBar()->addMenu(u"&Help"_s);
    const auto add = [&](const QString &text, QAction::MenuRole role, auto run) {
        QAction *action = menu->addAction(text);
        action->setMenuRole(role);
        QObject::connect(action, &QAction::triggered, &window, run);
    };
    add(u"Handbook"_s, QAction::NoRole,
        [&window] { spawn([&handbook = window.screens().handbook] { return handbook.open(); }); });
    followHandbook(menu->actions().last(), window);
    add(u"Keyboard Shortcuts"_s, QAction::NoRole,
        [&window] { makeShortcutOverview(window.app().platform.clock, *window.menuBar(), &window)->open(); });
    menu->actions().last()->setShortcut(QKeySequence::HelpContents);
    add(u"Save Support Bundle…"_s, QAction::NoRole,
        [&window] { spawn([&support = window.screens().support] { return support.save(); }); });
    add(u"Check for Updates…"_s, QAction::ApplicationSpecificRole,
        [&window] { spawn([&updates = window.screens().updates] { return updates.checkNow(); }); });
    add(u"About Parcelory"_s, QAction::AboutRole, [&window] {
        say(window, u"About Parcelory"_s,
            u"Parcelory %1\nPrepares, buys and prints USPS and FedEx labels.\n\nIt uses Qt, which is free software under the GNU Lesser General Public License, version 3."_s
                .arg(window.screens().updates.installedVersion()));
    });
}

} // namespace parcelory

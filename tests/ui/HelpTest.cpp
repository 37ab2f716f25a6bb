#include "app/handbook/Handbook.h"
#include "support/UiTest.h"
#include "ui/MainWindow.h"

#include <QFileDialog>

namespace parcelory::test {

struct Help : testing::Test, WindowDesk {
    QAction *handbookEntry() { return window().menuBar()->actions().last()->menu()->actions().first(); }
};

TEST_F(Help, OpensTheHandbookAtTheMessageOfAnAlert)
{
    EXPECT_FALSE(handbookEntry()->isEnabled());
    EXPECT_TRUE(handbookEntry()->text().contains(u"not installed"_s));
    settlePool(); // the program itself has looked for the pages by now
    runTask(program->screens().handbook.load({QStringLiteral(PARCELORY_HANDBOOK)}));
    EXPECT_TRUE(handbookEntry()->isEnabled());
    handbookEntry()->trigger();
    wait([this] { return desktop.opened.size() == 1; });
    EXPECT_TRUE(desktop.opened.last().endsWith(u"/handbook/index.html"_s));

    const Task<> known = world.prompts.alert(u"Check Invoice 1"_s, u"2 Address Changes in 14 Days"_s);
    Dialog *alert = dialog();
    click(button(u"Help"_s, alert));
    wait([this] { return desktop.opened.size() == 2; });
    EXPECT_TRUE(desktop.opened.last().endsWith(u"/go/2-address-changes-in-14-days.html"_s));
    EXPECT_TRUE(alert->isVisible()) << "the clerk reads both";
    clock.advance(Dialog::keyGuard);
    press(Qt::Key_Return);
    EXPECT_EQ(desktop.opened.size(), 2) << "Return presses OK";

    const Task<> unknown = world.prompts.alert(u"Nothing"_s, u"Nobody explains this."_s);
    for (const Button *offered : dialog()->findChildren<Button *>())
        EXPECT_NE(offered->text(), u"Help"_s);
    dialog()->accept();
}

TEST_F(Help, ListsEveryShortcutOfTheWindowAndFilePanelsShowTheirKindOfFileFirst)
{
    window().menuBar()->actions().last()->menu()->actions()[1]->trigger();
    Dialog *overview = dialog();
    int listed = 0;
    for (const QAction *action : window().findChildren<QAction *>()) {
        if (action->shortcut().isEmpty())
            continue;
        const QString text = action->text().replace(u"&&"_s, u"+"_s).remove(u'&').replace(u'+', u'&');
        EXPECT_TRUE(shows(*overview, action->shortcut().toString(QKeySequence::NativeText)) && shows(*overview, text))
            << text.toStdString();
        ++listed;
    }
    EXPECT_GT(listed, 20);
    overview->accept();
    settleAll();

    const auto filtersOf = [this](const Task<QString> &) {
        auto *panel = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
        const QStringList filters = panel ? panel->nameFilters() : QStringList();
        if (panel)
            panel->reject();
        settleAll();
        return filters;
    };
    EXPECT_EQ(filtersOf(windowPrompts.openFile(u"Open"_s, u"vCard files (*.vcf)"_s)),
              QStringList({u"vCard files (*.vcf)"_s, u"All files (*)"_s}));
    EXPECT_EQ(filtersOf(windowPrompts.saveFile(u"Save"_s, u"Log.csv"_s)),
              QStringList({u"CSV files (*.csv)"_s, u"All files (*)"_s}));
}

} // namespace parcelory::test

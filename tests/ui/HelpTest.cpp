#include "app/handbook/Handbook.h"
#include "support/UiTest.h"
#include "ui/MainWindow.h"

namespace parcelory::test {

struct Help : testing::Test, WindowDesk {
    QAction *handbookEntry() { return window().menuBar()->actions().last()->menu()->actions().first(); }
};

TEST_F(Help, OpensTheHandbookAtTheMessageOfAnAlert)
{
    EXPECT_FALSE(handbookEntry()->isEnabled());
    EXPECT_TRUE(handbookEntry()->text().contains(u"not installed"_s));
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

} // namespace parcelory::test

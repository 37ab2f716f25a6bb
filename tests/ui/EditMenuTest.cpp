#include "support/UiTest.h"

namespace parcelory::test {

TEST(EditMenu, ActsOnTheFocusedWidget)
{
    WindowDesk desk;
    const auto choose = [&desk](const QString &text) {
        const auto menus = desk.window().menuBar()->actions();
        QMenu *edit = (*std::ranges::find(menus, u"&Edit"_s, &QAction::text))->menu();
        edit->popup(QPoint()); // enables the usable entries
        edit->hide();
        desk.window().activateWindow(); // the popup takes the activation on this display
        desk.settleAll();
        const auto entries = edit->actions();
        QAction *entry = *std::ranges::find(entries, text, &QAction::text);
        entry->trigger();
        desk.settleAll();
        return entry->isEnabled();
    };
    auto *name = desk.named<LineEdit>(u"Recipient name"_s);
    name->setFocus();
    desk.type(u"Bend"_s);
    EXPECT_TRUE(choose(u"Select All"_s) && choose(u"Cut"_s));
    EXPECT_EQ(name->text(), QString());
    EXPECT_TRUE(choose(u"Paste"_s) && choose(u"Paste"_s));
    EXPECT_EQ(desk.app().draftTo.value().name, u"BendBend"_s);
    EXPECT_TRUE(choose(u"Undo"_s));
    EXPECT_EQ(name->text(), u"Bend"_s);
    EXPECT_TRUE(choose(u"Redo"_s));
    EXPECT_EQ(name->text(), u"BendBend"_s);
    desk.button(u"Clear Form"_s)->setFocus();
    EXPECT_FALSE(choose(u"Paste"_s));
    EXPECT_EQ(name->text(), u"BendBend"_s);

    int undone = 0;
    const auto change = [&] { desk.app().lastChange.note(u"“Carton” is deleted."_s, [&undone] { ++undone; }); };
    EXPECT_FALSE(choose(u"Undo"_s));
    change();
    EXPECT_TRUE(choose(u"Undo"_s));
    EXPECT_EQ(undone, 1) << "the focused button has nothing to undo";
    change();
    desk.button(u"Clear Form"_s)->setFocus();
    desk.press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(undone, 2);
    change();
    desk.settleAll();
    desk.click(desk.named<Button>(u"Undo the last change"_s));
    EXPECT_EQ(undone, 3);

    AddressBook &book = desk.program->screens().addressBook;
    for (const QString &who : {u"Ida Penn"_s, u"Odell"_s})
        runTask(book.save({.name = who}), &desk.clock);
    desk.press(Qt::Key_F, Qt::ControlModifier);
    desk.press(Qt::Key_Down);
    desk.press(Qt::Key_Delete);
    desk.click(desk.button(u"Delete"_s, desk.readyDialog()));
    desk.wait([&] { return book.canUndo(); });
    desk.window().activateWindow(); // like a window system does after a dialog
    desk.settleAll();
    EXPECT_TRUE(choose(u"Undo"_s)) << "Undo belongs to the list with the focus";
    desk.wait([&] { return book.contacts().size() == 2; });
}

} // namespace parcelory::test

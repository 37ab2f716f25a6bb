#include "support/UiTest.h"
#include "ui/UpdateOffers.h"
#include "ui/settings/SettingsView.h"

namespace parcelory::test {
namespace {

struct UpdateWindow : testing::Test, WindowDesk {
    UpdateChecker &updates() { return program->screens().updates; }
    void offer(UpdatePhase phase)
    {
        updates().available = UpdateInfo{.version = u"9.9"_s, .url = {}, .notes = u"Faster."_s};
        updates().phase = phase;
        updates().offers = updates().offers + 1;
        settleAll();
    }
    bool isPrompted() const
    {
        const QWidget *modal = QApplication::activeModalWidget();
        return modal && modal->windowTitle() == u"Update Available";
    }
};

} // namespace

TEST_F(UpdateWindow, PromptsAtAQuietMomentAndRestartsOnlyByItsButton)
{
    label().weightLb = u"1"_s;
    click(named<LineEdit>(u"Recipient name"_s));
    type(u"Ann"_s);
    offer(UpdatePhase::ready);
    EXPECT_FALSE(isPrompted()) << "the clerk is typing";
    clock.advance(2s);
    type(u"e"_s);
    clock.advance(UpdateOffers::quietTime - 1ms);
    settleAll();
    EXPECT_FALSE(isPrompted());
    clock.advance(1ms);
    Dialog *prompt = dialog();
    ASSERT_TRUE(isPrompted());
    EXPECT_THAT(shownTexts(*prompt).join(u'\n').toStdString(), HasSubstr("not verified")) << "this build has no key";
    window().comeToFront(); // as a second start does
    settleAll();
    EXPECT_EQ(QApplication::activeWindow(), prompt) << "otherwise nothing takes the keys";
    clock.advance(Dialog::keyGuard);
    press(Qt::Key_Return);
    EXPECT_FALSE(isPrompted()) << "Return presses Later";
    EXPECT_TRUE(application.started.isEmpty());
    EXPECT_EQ(app().draftTo.value().name, u"Anne"_s);
}

TEST_F(UpdateWindow, WaitsUntilAnotherDialogIsClosed)
{
    const Task<> asked = world.prompts.alert(u"Check Invoice 1"_s, u"Read this."_s);
    Dialog *question = dialog();
    offer(UpdatePhase::idle);
    clock.advance(UpdateOffers::quietTime);
    settleAll();
    EXPECT_FALSE(isPrompted());
    question->done(0);
    settleAll();
    clock.advance(UpdateOffers::quietTime);
    dialog();
    EXPECT_TRUE(isPrompted());
}

TEST_F(UpdateWindow, SettingsTellThatSignaturesAreNotVerified)
{
    app().tab = MainTab::settings;
    window().settingsView().showPage(SettingsView::Page::updates);
    settleAll();
    EXPECT_THAT(shownTexts(window().settingsView()).join(u'\n').toStdString(), HasSubstr("not verified"));
}

} // namespace parcelory::test

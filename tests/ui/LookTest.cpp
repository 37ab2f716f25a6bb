#include "app/AppState.h"
#include "compose/Services.h"
#include "practice/carrier/PracticeCarrier.h"
#include "records/SenderProfile.h"
#include "support/CarrierDesk.h"
#include "support/RunTask.h"
#include "support/WindowDesk.h"
#include "ui/parts/Button.h"
#include "ui/parts/LineEdit.h"
#include "ui/parts/TextLabel.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QAbstractButton>
#include <QComboBox>

#include <gmock/gmock.h>

#include <algorithm>
#include <utility>

namespace parcelory::test {
namespace {
using namespace Qt::StringLiterals;

TEST(Look, EveryTextHasEnoughContrast)
{
    using T = Tokens;
    struct Pair {
        const char *what;
        Token ink, ground;
        double least;
    };
    const Pair pairs[] = {
        {"text", &T::text, &T::sheet, 7},
        {"text on the frame", &T::text, &T::window, 7},
        {"text in the rates", &T::text, &T::panel, 7},
        {"text in a selected row", &T::text, &T::rowSel, 7},
        {"text in a head", &T::text, &T::header, 7},
        {"text on a trough", &T::text, &T::segBg, 7},
        {"raised choice", &T::text, &T::segOn, 7},
        {"second line", &T::muted, &T::sheet, 4.5},
        {"second line on the frame", &T::muted, &T::window, 4.5},
        {"second line in a selected row", &T::muted, &T::rowSel, 4.5},
        {"second line in a head", &T::muted, &T::header, 4.5},
        {"solid button", &T::onAccent, &T::accent, 4.5},
        {"solid button under the mouse", &T::onAccent, &T::accentHover, 4.5},
        {"link", &T::accentText, &T::sheet, 4.5},
        {"link on the frame", &T::accentText, &T::window, 4.5},
        {"selected", &T::accentText, &T::accentTint, 4.5},
        {"success", &T::ok, &T::okTint, 4.5},
        {"success on a sheet", &T::ok, &T::sheet, 4.5},
        {"warning", &T::warn, &T::warnTint, 4.5},
        {"warning on a sheet", &T::warn, &T::sheet, 4.5},
        {"banner", &T::text, &T::warnTint, 7},
        {"error", &T::bad, &T::badTint, 4.5},
        {"error on a sheet", &T::bad, &T::sheet, 4.5},
        {"test mode", &T::onTest, &T::test, 4.5},
        {"practice", &T::onPractice, &T::practice, 4.5},
        {"disabled", &T::disabledText, &T::disabledFill, 4.5},
        {"edge of a field", &T::control, &T::sheet, 3},
        {"edge of a field on the frame", &T::control, &T::window, 3},
        {"focus ring", &T::accent, &T::sheet, 3},
        {"edge of a warning", &T::warnEdge, &T::warnTint, 3},
    };
    for (const Tokens *tokens : {&lightTokens(), &darkTokens()}) {
        for (const Pair &pair : pairs) {
            EXPECT_GE(contrast(tokens->*pair.ink, tokens->*pair.ground), pair.least)
                << pair.what << (tokens == &darkTokens() ? ", dark" : ", light");
        }
    }
}

TEST(Look, EveryControlHasANameForAScreenReader)
{
    WindowDesk desk;
    desk.composeAndRate(homeAddress());
    for (const MainTabInfo &info : mainTabs()) {
        desk.app().tab = info.tab;
        desk.settleAll();
        for (const QWidget *widget : desk.window().findChildren<QWidget *>()) {
            if (!widget->isVisible() || !(widget->focusPolicy() & Qt::TabFocus))
                continue;
            const auto *button = qobject_cast<const QAbstractButton *>(widget);
            EXPECT_FALSE(widget->accessibleName().isEmpty() && (!button || button->text().isEmpty()))
                << widget->metaObject()->className() << " in " << info.title.toStdString();
        }
    }
}

/// Texts that do not fit in the screens as they are shown now.
QStringList clippedTexts(WindowDesk &desk)
{
    QStringList clipped;
    for (const TextLabel *text : desk.window().findChildren<TextLabel *>()) {
        const bool shortened = dynamic_cast<const ElidedLabel *>(text); // its tooltip has the whole text
        if (!text->isVisible() || shortened || text->text().isEmpty())
            continue;
        const bool tooNarrow = !text->wordWrap() && text->width() < text->sizeHint().width();
        const bool tooLow = text->wordWrap() && text->height() < text->heightForWidth(text->width());
        if (tooNarrow || tooLow)
            clipped += text->text();
    }
    for (const Button *button : desk.window().findChildren<Button *>()) {
        if (button->isVisible() && button->width() < button->sizeHint().width())
            clipped += button->text();
    }
    return clipped;
}

TEST(Look, NothingIsClippedInTheSmallestWindow)
{
    WindowDesk desk;
    desk.window().resize(desk.window().minimumSize());
    desk.compose(londonAddress());
    desk.label().carrier = Carrier::fedex;
    desk.label().service = ServiceOption::fedexIndirect;
    desk.press(Qt::Key_K, Qt::ControlModifier);
    desk.idle();
    EXPECT_EQ(clippedTexts(desk), QStringList());
    desk.label().carrier = Carrier::usps;
    desk.composeAndRate(homeAddress());
    EXPECT_EQ(clippedTexts(desk), QStringList());
    desk.app().senders.profiles = QList<SenderProfile>{{.name = u"Bullion Vault"_s}};
    desk.settleAll();
    EXPECT_EQ(clippedTexts(desk), QStringList());
}

TEST(Look, TheFirstWindowFitsTheScreen)
{
    const std::pair<QSize, QSize> rooms[] = {{{1920, 1080}, {1280, 800}},
                                             {{1280, 800}, {1280, 764}},
                                             {{1280, 768}, {1280, 732}},
                                             {{1024, 768}, {1024, 732}},
                                             {{800, 600}, {1024, 680}}};
    for (const auto &[room, size] : rooms)
        EXPECT_EQ(MainWindow::firstSize(room), size) << room.width();
    WindowDesk desk;
    desk.window().resize(desk.window().minimumSize());
    desk.composeAndRate(homeAddress());
    const Button *buy = desk.button(u"Buy & Print Label"_s);
    EXPECT_LT(buy->mapTo(&desk.window(), buy->rect().bottomLeft()).y(), desk.window().height());
    EXPECT_LE(desk.window().height(), 732);
}

TEST(Look, TheModeIsShownThreeTimes)
{
    struct Mode {
        bool practice;
        QString token, title, strip;
        Button::Kind buy;
    };
    const Mode modes[] = {
        {true, PracticeCarrier::testToken, u"Parcelory — PRACTICE MODE"_s,
         u"Practice — nothing is sent, charged or printed"_s, Button::Kind::practice},
        {false, PracticeCarrier::testToken, u"Parcelory — TEST MODE"_s,
         u"Shippo TEST mode (Practice) — labels are not real postage"_s, Button::Kind::test},
        {false, PracticeCarrier::liveToken, u"Parcelory"_s, u"Shippo LIVE (Practice) — labels cost real money"_s,
         Button::Kind::solid},
    };
    for (const Mode &mode : modes) {
        WindowDesk desk(mode.practice);
        desk.useToken(mode.token);
        runTask(desk.program->screens().keys.refresh(), &desk.clock);
        desk.composeAndRate(homeAddress());
        EXPECT_EQ(desk.window().windowTitle(), mode.title);
        EXPECT_EQ(desk.button(u"Buy & Print Label"_s)->kind(), mode.buy);
        const auto texts = desk.window().findChildren<QLabel *>();
        EXPECT_TRUE(std::ranges::any_of(texts, [&](const QLabel *text) {
            return text->isVisible() && text->text() == mode.strip;
        })) << mode.strip.toStdString();
    }
}

TEST(Look, TheRunningProgramSwitchesBetweenLightAndDark)
{
    WindowDesk desk;
    const auto ground = [&] { return desk.window().grab().toImage().pixelColor(400, 700); };
    const auto ink = [&] { return desk.named<LineEdit>(u"City"_s)->palette().color(QPalette::Text); };
    EXPECT_EQ(ground(), lightTokens().sheet);
    Theme::current().setDark(true);
    desk.settleAll();
    EXPECT_EQ(ground(), darkTokens().sheet);
    EXPECT_EQ(ink(), darkTokens().text);
    for (const TextLabel *text : desk.window().findChildren<TextLabel *>()) {
        if (text->isVisible())
            EXPECT_GT(contrast(text->palette().color(QPalette::WindowText), darkTokens().sheet), 4)
                << text->text().toStdString();
    }
    Theme::current().setDark(false);
    desk.settleAll();
    EXPECT_EQ(ground(), lightTokens().sheet);
}

} // namespace
} // namespace parcelory::test

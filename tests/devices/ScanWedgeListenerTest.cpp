#include "devices/ScanWedgeListener.h"
#include "core/ports/Keyboard.h"
#include "devices/ScanBurst.h"
#include "support/FakeClock.h"
#include "support/Table.h"

namespace parcelory::test {
namespace {

/// A keyboard with one text field and its cursor.
class FakeKeyboard : public Keyboard {
public:
    void listen(Handler wanted, std::function<void()> other, std::function<void()> left) override
    {
        handler = std::move(wanted);
        before = std::move(other);
        cut = std::move(left);
    }
    bool inTextField() const override { return focused; }
    FieldState fieldState() const override
    {
        return focused ? FieldState{const_cast<QObject *>(&field), text, cursor, cursor} : FieldState{};
    }
    FieldState stateNow(const FieldState &) const override { return fieldState(); }
    void restore(const FieldState &state) override
    {
        text = state.text;
        cursor = state.cursor;
    }
    FieldState releaseHeld() override
    {
        FieldState state = fieldState();
        type(held.takeFirst());
        return state;
    }
    void dropHeld() override { held.removeFirst(); }
    void type(const QString &key)
    {
        if (focused)
            text.insert(std::exchange(cursor, cursor + key.size()), key);
        else
            pressed += key;
    }

    Handler handler;
    std::function<void()> before, cut;
    bool focused = true;
    QObject field;
    QString text, pressed; ///< typed into the field; pressed on another focused widget
    qsizetype cursor = 0;
    QStringList held;
};

struct ScanDesk {
    FakeKeyboard keyboard;
    FakeClock clock;
    ScanWedgeListener listener{keyboard, clock, u"go.corvallon.example"_s};
    QStringList scans, noises;

    explicit ScanDesk(bool focused = true, const QString &text = {})
    {
        keyboard.focused = focused;
        keyboard.text = text;
        keyboard.cursor = text.size();
        listener.onScan = [this](const QString &text) { scans += text; };
        listener.onNoise = [this](const QString &text) { noises += text; };
        listener.start();
    }
    KeyVerdict press(KeyPress key, std::chrono::milliseconds after)
    {
        clock.advance(after);
        key.time = clock.elapsed() + 10s;
        const KeyVerdict verdict = keyboard.handler(key);
        if (verdict == KeyVerdict::hold)
            keyboard.held += key.text;
        if (verdict == KeyVerdict::deliver && !key.text.isEmpty() && key.text != u"\r" && key.text != u"\t")
            keyboard.type(key.text);
        return verdict;
    }
    void type(const QString &text, std::chrono::milliseconds spacing)
    {
        for (const QChar letter : text)
            press({.text = letter}, spacing);
    }
    /// Types at a scanner's speed, with a pause before one character.
    void scan(const QString &text, qsizetype place, std::chrono::milliseconds pause)
    {
        type(text.left(place), 8ms);
        press({.text = text.mid(place, 1)}, pause);
        type(text.mid(place + 1), 8ms);
    }
    KeyVerdict pressReturn(std::chrono::milliseconds after)
    {
        return press({.text = u"\r"_s, .isReturn = true}, after);
    }
};

const QString link = u"https://GO.Corvallon.example/i48213"_s;

TEST(ScanWedgeListener, AScanThatADialogMayHaveCutAsksForNoInvoice)
{
    for (const bool ends : {false, true}) {
        ScanDesk desk;
        desk.keyboard.text = u"Smith"_s;
        desk.type(link.chopped(2), 8ms);
        desk.keyboard.cut();
        if (ends)
            desk.pressReturn(8ms);
        desk.clock.advance(1s);
        EXPECT_THAT(desk.scans, IsEmpty()) << ends;
        EXPECT_THAT(desk.noises, ElementsAre(link.chopped(2)));
        EXPECT_EQ(desk.keyboard.text, u"Smith");
        desk.keyboard.cut(); // between two scans
        desk.type(link, 8ms);
        desk.pressReturn(8ms);
        EXPECT_THAT(desk.scans, ElementsAre(link));
    }
}

TEST(ScanWedgeListener, AScanIsReadWholeAndLeavesTheFieldUnchanged)
{
    enum class End { none, enter, tab, crlf };
    for (const auto spacing : {3ms, 10ms, 30ms, 49ms, 55ms, 60ms}) {
        for (const End end : {End::none, End::enter, End::tab, End::crlf}) {
            for (const bool focused : {true, false}) {
                ScanDesk desk(focused, u"Eleanor htWhitfield"_s);
                desk.keyboard.cursor = 8; // the text after it looks like a code's start
                desk.type(link, spacing);
                if (end == End::tab)
                    EXPECT_EQ(desk.press({.text = u"\t"_s, .isTab = true}, spacing), KeyVerdict::swallow);
                if (end == End::enter || end == End::crlf)
                    EXPECT_EQ(desk.pressReturn(spacing), KeyVerdict::swallow);
                if (end == End::crlf)
                    EXPECT_EQ(desk.press({.text = u"\n"_s, .withCommand = true}, spacing), KeyVerdict::swallow);
                desk.clock.advance(300ms);
                EXPECT_THAT(desk.scans, ElementsAre(link)) << spacing.count();
                EXPECT_EQ(desk.keyboard.text, u"Eleanor htWhitfield") << spacing.count();
                EXPECT_EQ(desk.keyboard.cursor, 8);
                EXPECT_EQ(desk.keyboard.pressed, QString());
                EXPECT_THAT(desk.noises, IsEmpty());
            }
        }
    }
}

TEST(ScanWedgeListener, AnUnevenScanAfterTypedKeysLeavesThoseKeys)
{
    ScanDesk desk;
    desk.type(u"Jo"_s, 120ms);
    desk.clock.advance(200ms);
    int turn = 0;
    for (const QChar letter : link)
        desk.press({.text = letter}, std::chrono::milliseconds(3 + (turn++ * 23) % 58));
    desk.clock.advance(300ms);
    ASSERT_EQ(desk.scans.size(), 1);
    EXPECT_TRUE(desk.scans.first().endsWith(link));
    EXPECT_EQ(desk.keyboard.text, u"Jo");
}

TEST(ScanWedgeListener, NoTypedKeyIsLostOrReordered)
{
    for (const bool focused : {true, false}) {
        ScanDesk desk(focused);
        QString typed;
        int turn = 0;
        for (const QChar letter : u"The quick brown fox, 12 dogs & 3 foxes – Zoë"_s) {
            // Runs of up to four quick keys, then a pause.
            const auto after = turn++ % 5 == 4 ? 140ms : std::chrono::milliseconds(30 + turn % 20);
            desk.press({.text = letter}, after);
            typed += letter;
        }
        desk.press({.text = {}, .withCommand = true}, 20ms);
        desk.clock.advance(100ms);
        EXPECT_EQ(focused ? desk.keyboard.text : desk.keyboard.pressed, typed);
        EXPECT_THAT(desk.scans + desk.noises, IsEmpty());
    }
    ScanDesk desk; // a quickly typed word and Return: the word comes first
    desk.type(u"ok"_s, 35ms);
    EXPECT_EQ(desk.pressReturn(35ms), KeyVerdict::deliver);
    EXPECT_EQ(desk.keyboard.text, u"ok");
    for (int repeat = 0; repeat < 30; ++repeat) // a key held down
        desk.press({.text = u"x"_s, .isRepeat = repeat > 0}, repeat == 1 ? 200ms : 30ms);
    EXPECT_EQ(desk.keyboard.text, u"ok"_s + QString(30, u'x'));
    EXPECT_EQ(desk.press({.text = u"a"_s}, 1s), KeyVerdict::deliver);
    EXPECT_EQ(desk.press({.text = u"b"_s}, 51ms), KeyVerdict::deliver);
    EXPECT_EQ(desk.press({.text = u"c"_s}, 49ms), KeyVerdict::hold) << "fast enough for a scanner";
}

TEST(ScanWedgeListener, NoPauseInsideACodeCutsIt)
{
    const qsizetype firstDigit = link.size() - 5;
    for (const auto pause : {51ms, 81ms, 100ms, 249ms, 400ms}) {
        for (qsizetype place = 1; place < link.size(); ++place) {
            for (const int typed : {0, 5, 9}) {
                ScanDesk desk;
                const QString name = u"Whitfield"_s.left(typed);
                desk.type(name, 110ms);
                desk.clock.advance(30ms);
                desk.scan(link, place, pause);
                EXPECT_EQ(desk.pressReturn(8ms), KeyVerdict::swallow);
                EXPECT_EQ(desk.keyboard.text, name) << place << ", " << pause.count();
                EXPECT_THAT(desk.keyboard.held, IsEmpty());
                // A longer pause between digits ends the code; its rest then completes the number.
                const bool cut = pause > 250ms && place > firstDigit;
                ASSERT_EQ(desk.scans.size(), cut ? 2 : 1) << place << ", " << pause.count();
                EXPECT_TRUE(desk.scans.last().endsWith(link)) << place << ", " << pause.count();
                desk.clock.advance(1s);
                EXPECT_EQ(desk.keyboard.text, name);
                EXPECT_THAT(desk.noises, IsEmpty());
            }
        }
    }
}

TEST(ScanWedgeListener, ACodeWithoutAnEndKeyEndsByAPause)
{
    for (const auto late : {81ms, 150ms, 240ms, 260ms, 400ms}) { // a slow suffix, or the clerk's own Return
        ScanDesk desk(true, u"Smith"_s);
        desk.type(link, 10ms);
        EXPECT_EQ(desk.pressReturn(late), KeyVerdict::swallow);
        EXPECT_EQ(desk.keyboard.text, u"Smith") << late.count();
        EXPECT_THAT(desk.scans, ElementsAre(link));
        EXPECT_EQ(desk.pressReturn(130ms), late == 260ms ? KeyVerdict::swallow : KeyVerdict::deliver);
        EXPECT_EQ(desk.pressReturn(600ms), KeyVerdict::deliver);
    }
    ScanDesk desk;
    desk.type(link, 10ms);
    desk.clock.advance(250ms);
    EXPECT_THAT(desk.scans, ElementsAre(link));
    desk.type(u"9"_s, 20ms); // a person's: no end key follows at a scanner's speed
    desk.clock.advance(100ms);
    EXPECT_EQ(desk.keyboard.text, u"9");
    desk.type(link, 10ms);
    desk.clock.advance(260ms);
    desk.type(link, 10ms);
    desk.type(u"ok"_s, 130ms); // a person's: the code is over
    EXPECT_EQ(desk.scans.size(), 3);
    EXPECT_EQ(desk.keyboard.text, u"9ok");
    desk.clock.advance(1s);
    desk.type(link + u"?a=1"_s, 10ms);
    EXPECT_TRUE(desk.clock.fireNext());
    EXPECT_EQ(desk.scans.size(), 3) << "keys that queued up while the program was busy come first";
    EXPECT_TRUE(desk.clock.fireNext());
    EXPECT_EQ(desk.scans.last(), link + u"?a=1"_s);
}

TEST(ScanWedgeListener, ALinkTypedByHandCountsAfterAPause)
{
    ScanDesk desk(true, u"see "_s);
    desk.type(u"go.corvallon.example/i12"_s, 150ms);
    EXPECT_EQ(desk.keyboard.text, u"see go.corvallon.example/i12");
    EXPECT_THAT(desk.scans, IsEmpty());
    desk.clock.advance(251ms);
    EXPECT_THAT(desk.scans, ElementsAre(u"go.corvallon.example/i12"));
    EXPECT_EQ(desk.keyboard.text, u"see ");
    desk.type(u"goXcorvallon.example/i12 "_s, 150ms);
    desk.clock.advance(251ms);
    EXPECT_EQ(desk.scans.size(), 1) << "another host";
}

TEST(ScanWedgeListener, DropsOnlyWhatAMachineTypesAndSaysSo)
{
    for (const Json &row : table(u"scanner"_s, "digits")) {
        const int keys = row[0], pauseAt = row[2];
        const std::chrono::milliseconds spacing(row[1].get<int>());
        const bool ends = row[3], heard = row[4], stays = row[5];
        for (const QString &typed : {QString(), u"Ann"_s}) {
            if (!typed.isEmpty() && (stays || pauseAt == 3 || spacing > 10ms))
                continue; // with typed keys, the average is another
            ScanDesk desk;
            desk.type(typed, 35ms);
            desk.clock.advance(typed.isEmpty() ? 1s : 30ms);
            const QString code(keys, u'7');
            desk.type(code.left(pauseAt), spacing);
            desk.clock.advance(pauseAt ? 120ms : 0ms);
            desk.type(code.mid(pauseAt), spacing);
            if (ends)
                EXPECT_EQ(desk.pressReturn(spacing), stays ? KeyVerdict::deliver : KeyVerdict::swallow) << row;
            desk.clock.advance(1s);
            EXPECT_EQ(!desk.noises.isEmpty(), heard) << row;
            EXPECT_EQ(desk.keyboard.text, typed + (stays ? code : QString())) << row;
        }
    }
    ScanDesk desk; // more than any code contains, junk before a code, and a code without an end
    desk.type(QString(500, u'8') + link, 5ms);
    desk.pressReturn(5ms);
    ASSERT_EQ(desk.scans.size(), 1);
    EXPECT_EQ(desk.scans.first().size(), ScanBurst::mostCharacters);
    EXPECT_TRUE(desk.scans.first().endsWith(link));
    desk.clock.advance(1s);
    desk.type(QString(12, u'9'), 5ms);
    desk.clock.advance(1s);
    EXPECT_THAT(desk.noises, ElementsAre(QString(12, u'9')));
    EXPECT_EQ(desk.keyboard.text, QString());
    desk.type(u"1"_s, 100ms);
    EXPECT_EQ(desk.keyboard.text, u"1");
}

TEST(ScanWedgeListener, ReadsCharactersThatTheSystemTakesForRepeated)
{
    for (const bool focused : {true, false}) {
        ScanDesk desk(focused);
        QChar last;
        for (const QChar letter : link) {
            desk.press({.text = letter, .isRepeat = letter == last}, 1ms);
            last = letter;
        }
        desk.pressReturn(1ms);
        EXPECT_THAT(desk.scans, ElementsAre(link));
        EXPECT_EQ(desk.keyboard.text + desk.keyboard.pressed, QString());
    }
}

TEST(ScanWedgeListener, OtherInputComesAfterTheHeldKeys)
{
    ScanDesk desk;
    desk.type(u"Re"_s, 30ms);
    EXPECT_EQ(desk.keyboard.text, u"R");
    desk.keyboard.before();
    EXPECT_EQ(desk.keyboard.text, u"Re");
    desk.keyboard.type(u"é"_s); // an input method's
    desk.clock.advance(1s);
    desk.type(link.left(9), 8ms);
    desk.keyboard.before();
    desk.keyboard.type(u"n"_s);
    desk.type(link.mid(9), 8ms);
    desk.pressReturn(8ms);
    EXPECT_THAT(desk.scans, ElementsAre(link));
    EXPECT_EQ(desk.keyboard.text, u"Reén") << "only the code is removed";
    EXPECT_EQ(desk.keyboard.cursor, 4);
    desk.type(u"123456789012"_s, 8ms);
    desk.keyboard.before();
    EXPECT_EQ(desk.keyboard.text, u"Reén1") << "a machine's keys are not released for a click";
    desk.keyboard.text = u"other"_s; // filled in by the program
    desk.keyboard.cursor = 5;
    desk.pressReturn(8ms);
    EXPECT_EQ(desk.keyboard.text, u"other");
}

TEST(ScanWedgeListener, OnlyCharactersOfACodeAreKept)
{
    ScanDesk desk(false);
    EXPECT_EQ(desk.press({.text = u" "_s}, 1s), KeyVerdict::deliver);
    EXPECT_EQ(desk.press({.text = u"\x01"_s, .withCommand = true}, 5ms), KeyVerdict::deliver);
    EXPECT_EQ(desk.press({.text = u"\x1b"_s}, 5ms), KeyVerdict::deliver);
    EXPECT_EQ(desk.press({.text = u"a"_s}, 5ms), KeyVerdict::hold);
    EXPECT_EQ(desk.press({.text = u" "_s}, 5ms), KeyVerdict::hold) << "it would press the button with the focus";
    EXPECT_EQ(desk.pressReturn(5ms), KeyVerdict::swallow);
    desk.clock.advance(1s);
    desk.press({.text = u"a"_s}, 1s);
    EXPECT_EQ(desk.press({.text = u" "_s}, 60ms), KeyVerdict::hold) << "a slow scanner's, too";
    desk.listener.stop();
    EXPECT_THAT(desk.keyboard.held, IsEmpty());
    EXPECT_FALSE(desk.keyboard.handler);
}

} // namespace
} // namespace parcelory::test

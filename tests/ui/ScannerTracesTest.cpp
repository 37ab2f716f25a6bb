#include "support/UiTest.h"

#include <QInputMethodEvent>
#include <QShortcut>

#include <array>

// Random traces of a typing clerk and a scanner, in the fields of the real window. PARCELORY_SCAN_TRACES is the number
// of traces; PARCELORY_SCAN_TRACE is the only trace to run.

namespace parcelory::test {
namespace {
using std::chrono::milliseconds;

/// Counts the end keys that reach a field: they would validate the address or move the focus.
struct EndKeyCounter : QObject {
    int count = 0;

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::KeyPress && watched->isWidgetType()) {
            const int key = static_cast<QKeyEvent *>(event)->key();
            count += key == Qt::Key_Return || key == Qt::Key_Tab || key == Qt::Key_J;
        }
        return false;
    }
};

class Trace {
public:
    Trace(WindowDesk &desk, unsigned seed) : m_desk(desk), m_random(seed)
    {
        m_fields = {desk.named<QLineEdit>(u"Recipient name"_s), desk.named<QLineEdit>(u"Company"_s),
                    desk.named<QLineEdit>(u"Street"_s)};
        desk.clock.advance(milliseconds(2000));
        desk.app().draftTo = ShippoAddress();
        settle();
        m_fields.front()->setFocus();
        desk.app().scanListener.onScan = [this](const QString &text) { m_scans += text; };
        desk.app().scanListener.onNoise = [this](const QString &text) { m_heard += text; };
        m_shortcut.setKey(Qt::CTRL | Qt::ALT | Qt::Key_9);
        QObject::connect(&m_shortcut, &QShortcut::activated, [this] {
            if (!m_inCode)
                check("at a shortcut"); // the held keys came first
        });
    }

    void run()
    {
        constexpr auto word = &Trace::typeWord, link = &Trace::scanLink, noise = &Trace::scanNoise,
                       other = &Trace::disturb;
        constexpr std::array acts = {word, word, word, word, link, link, link, noise, other, other};
        for (int step = upTo(3, 9); step > 0; --step) {
            (this->*acts[size_t(upTo(0, 9))])();
            if (upTo(0, 3) == 0)
                settle();
        }
        m_desk.clock.advance(milliseconds(1200));
        settle();
        check("at the end");
        expect(m_scans.isEmpty(), u"read as a code: "_s + m_scans.join(u' '));
        expect(m_endKeys.count == 0, u"end keys delivered"_s);
        m_desk.app().scanListener.onScan = m_desk.app().scanListener.onNoise = [](const QString &) {};
    }
    /// What went wrong.
    QStringList faults;
    /// What happened, for the repair of a fault.
    QStringList events;

private:
    int upTo(int from, int to) { return std::uniform_int_distribution(from, to)(m_random); }
    bool chance(int percent) { return upTo(1, 100) <= percent; }
    void expect(bool holds, const QString &fault)
    {
        if (!holds)
            faults += fault;
    }

    void press(int key, QChar letter, Qt::KeyboardModifiers modifiers, int pause)
    {
        m_desk.clock.advance(milliseconds(pause));
        events += u"%1+%2"_s.arg(pause).arg(letter);
        QWindow *window = m_desk.window().windowHandle();
        qApp->installEventFilter(&m_endKeys);
        // A key with its text: letters of any case, digits and symbols. Its release comes after some later key's press.
        QTest::sendKeyEvent(QTest::Press, window, Qt::Key(key), QString(letter), modifiers);
        m_down.append({Qt::Key(key), letter, modifiers});
        while (m_down.size() > upTo(0, 3)) {
            const Down up = m_down.takeAt(upTo(0, int(m_down.size()) - 1));
            QTest::sendKeyEvent(QTest::Release, window, up.key, QString(up.letter), up.modifiers);
        }
        qApp->removeEventFilter(&m_endKeys);
    }
    void pressLetter(QChar letter, int pause) { press(letter.toUpper().unicode(), letter, {}, pause); }

    void settle()
    {
        for (int turn = 0; turn < 2; ++turn)
            QCoreApplication::processEvents();
    }

    /// The clerk types a word: single keys, or a few overlapping keys and then a pause.
    void typeWord()
    {
        static const QString letters = u"AaehiostTwxyzüß0179-.&'# "_s;
        int quick = 0;
        for (int length = upTo(1, 12); length > 0; --length) {
            const bool overlaps = quick > 0;
            quick = overlaps ? quick - 1 : chance(30) ? upTo(1, 4) : 0;
            const QChar letter = letters[upTo(0, int(letters.size()) - 1)];
            pressLetter(letter, overlaps ? upTo(20, 49) : chance(5) ? upTo(400, 900) : upTo(85, 300));
            expectTyped(letter);
        }
    }
    void expectTyped(QChar letter) { m_typed[m_field].insert(m_cursor[m_field]++, letter); }

    void scanLink()
    {
        const QString host = m_desk.world.deployment.shortLinkHost;
        const QStringList starts{u"https://"_s, u"HTTP://"_s, QString(), u"https://www."_s, u"]Q1https://"_s};
        const QString number = QString::number(upTo(0, chance(20) ? 9 : 999999));
        const QString code = starts[upTo(0, 4)] + (chance(20) ? host.toUpper() : host) + u"/i"_s + number;
        const int length = int(code.size()), secondDigit = length - int(number.size()) + 1;
        const bool disturbs = chance(15);
        // A regular scanner with up to three pauses, an uneven one, or any pause at every key.
        const int kind = upTo(0, 5), usual = upTo(1, 40);
        std::vector<int> pauses;
        for (int place = 0; place < length; ++place)
            pauses.push_back(kind == 4 ? upTo(1, 60) : kind == 5 ? upTo(1, 400) : usual);
        for (int pause = kind <= 3 ? upTo(0, 3) : 0; pause > 0; --pause)
            pauses[size_t(upTo(1, length - 1))] = upTo(41, 400);
        for (int place = secondDigit; place < length; ++place) // a longer pause ends the code
            pauses[size_t(place)] = std::min(pauses[size_t(place)], disturbs ? 180 : 249);
        const bool ended = kind <= 3 && !disturbs && secondDigit < length && chance(15);
        if (ended) {
            const int place = upTo(secondDigit, length - 1);
            std::fill(pauses.begin() + place, pauses.end(), usual);
            pauses[size_t(place)] = upTo(251, 400);
        }
        pauses[0] = upTo(1, 400);
        m_inCode = true;
        for (int place = 0; place < length; ++place) {
            pressLetter(code[place], pauses[size_t(place)]);
            if (disturbs && place + 1 < length && chance(6))
                disturb();
        }
        const int suffix = !ended && chance(10) ? upTo(51, 400) : usual;
        switch (ended ? 0 : upTo(0, 4)) {
        case 3:
            press(Qt::Key_Tab, u'\t', {}, suffix);
            break;
        case 4: // no end key
            m_desk.clock.advance(milliseconds(upTo(510, 700)));
            break;
        case 2:
            press(Qt::Key_Return, u'\r', {}, suffix);
            press(Qt::Key_J, u'\n', Qt::ControlModifier, usual);
            break;
        default:
            press(Qt::Key_Return, u'\r', {}, suffix);
        }
        m_inCode = false;
        events += u"[scanned %1]"_s.arg(m_scans.join(u' '));
        // A code that a pause has ended is read once more when its rest comes.
        expect(m_scans.size() == (ended ? 2 : 1) && m_scans.last().endsWith(code), u"cut: "_s + code);
        m_scans.clear();
    }

    void scanNoise()
    {
        const int length = upTo(10, 40), usual = upTo(1, 15), pause = chance(50) ? upTo(3, length - 1) : 0;
        const bool ends = chance(70);
        m_inCode = true;
        m_heard.clear();
        for (int place = 0; place < length; ++place)
            pressLetter(QChar(u'0' + upTo(0, 9)), place == 0                             ? upTo(85, 400)
                                                  : place == pause && pause + 2 < length ? upTo(16, 400)
                                                                                         : usual);
        if (ends)
            press(Qt::Key_Return, u'\r', {}, usual);
        else
            m_desk.clock.advance(milliseconds(upTo(501, 800)));
        m_inCode = false;
        expect(!m_heard.isEmpty(), u"noise not reported"_s);
    }

    /// Something other than a key.
    void disturb()
    {
        m_desk.clock.advance(milliseconds(upTo(1, 60)));
        switch (upTo(0, 3)) {
        case 0:
            events += u"[shortcut]"_s;
            QTest::keyClick(m_desk.window().windowHandle(), Qt::Key_9, Qt::ControlModifier | Qt::AltModifier);
            break;
        case 1: {
            events += u"[input method]"_s;
            QInputMethodEvent event;
            event.setCommitString(u"é"_s);
            QCoreApplication::sendEvent(m_fields[m_field], &event);
            expectTyped(u'é');
            break;
        }
        default: // a click moves the cursor, or the focus
            m_field = size_t(upTo(0, 2));
            events += u"[click %1]"_s.arg(m_field);
            QLineEdit *field = m_fields[m_field];
            const bool atStart = chance(50);
            const QPoint place(atStart ? 2 : field->width() - 4, field->height() / 2);
            QTest::mouseClick(m_desk.window().windowHandle(), Qt::LeftButton, {},
                              field->mapTo(&m_desk.window(), place));
            field->setCursorPosition(atStart ? 0 : int(field->text().size())); // a long text is scrolled
            m_cursor[m_field] = atStart ? 0 : m_typed[m_field].size();
        }
    }

    void check(const char *when)
    {
        for (size_t field = 0; field < m_fields.size(); ++field) {
            const QString text = m_fields[field]->text();
            if (text == m_typed[field])
                continue;
            faults += u"%1, field %2: “%3” instead of “%4”"_s.arg(QLatin1StringView(when))
                          .arg(field)
                          .arg(text, m_typed[field]);
            m_typed[field] = text;
            m_cursor[field] = m_fields[field]->cursorPosition();
        }
    }

    struct Down {
        Qt::Key key;
        QChar letter;
        Qt::KeyboardModifiers modifiers;
    };

    WindowDesk &m_desk;
    std::mt19937 m_random;
    std::array<QLineEdit *, 3> m_fields{};
    std::array<QString, 3> m_typed;
    std::array<qsizetype, 3> m_cursor{};
    size_t m_field = 0;
    QList<Down> m_down;
    QStringList m_scans, m_heard;
    bool m_inCode = false;
    EndKeyCounter m_endKeys;
    QShortcut m_shortcut{&m_desk.window()};
};

TEST(ScannerTraces, NoCodeIsCutNoTypedKeyIsLostAndNothingOfACodeStays)
{
    WindowDesk desk;
    bool isOne = false;
    const int only = qEnvironmentVariableIntValue("PARCELORY_SCAN_TRACE", &isOne);
    const int wanted = qEnvironmentVariableIntValue("PARCELORY_SCAN_TRACES");
    const int first = isOne ? only : 0, last = isOne ? only : (wanted > 0 ? wanted : 40) - 1;
    for (int seed = first; seed <= last; ++seed) {
        Trace trace(desk, unsigned(seed));
        trace.run();
        EXPECT_EQ(trace.faults, QStringList()) << "trace " << seed << ": " << qPrintable(trace.events.join(u' '));
    }
}

} // namespace
} // namespace parcelory::test

#include "devices/ScanWedgeListener.h"

#include "core/ports/Clock.h"
#include "core/ports/Keyboard.h"

#include <algorithm>
#include <functional>
#include <optional>
#include <utility>

namespace parcelory {

ScanWedgeListener::ScanWedgeListener(Keyboard &keyboard, Clock &clock, const QString &linkHost)
    : m_keyboard(keyboard), m_clock(clock), m_burst(linkHost), m_typed(keyboard)
{
}

ScanWedgeListener::~ScanWedgeListener()
{
    stop();
}

void ScanWedgeListener::start()
{
    if (std::exchange(m_listening, true))
        return;
    m_keyboard.listen([this](const KeyPress &key) { return handle(key); }, [this] { letPass(); }, [this] { cut(); });
}

void ScanWedgeListener::stop()
{
    if (!std::exchange(m_listening, false))
        return;
    clear();
    m_keyboard.listen({}, {}, {});
}

KeyVerdict ScanWedgeListener::handle(const KeyPress &key)
{
    if (!isWanted()) {
        clear();
        return KeyVerdict::deliver;
    }
    if (isHeldDown(key))
        return pass();
    const bool isEnd = key.isReturn || key.isTab || key.text.contains(u'\r') || key.text.contains(u'\n');
    const Time pause = m_burst.pauseAt(key.time);
    if (pause > ScanBurst::burstGap || pause < Time(0) || (pause > ScanBurst::finishDelay && m_burst.holdsLink()))
        finishBurst(); // the timer is late
    if (isEnd && m_burst.keys() == 0 && key.time >= m_codeEnd && key.time <= m_suffixEnd) {
        m_suffixEnd = std::max(m_suffixEnd, key.time + suffixGap);
        m_cutLink.clear();
        return KeyVerdict::swallow;
    }
    m_inRest = isRest(key);
    if (!m_inRest)
        m_cutLink.clear();
    const bool fast = m_burst.beat(key.time);
    if (isEnd)
        return handleEnd(key, fast);
    if (!key.withCommand && ScanBurst::isBufferable(key.text))
        return handleText(key, fast);
    // A blank in a code must not press the button that has the focus, nor stay in a field.
    const bool isBlank = !key.withCommand && !key.text.isEmpty() && key.text.front().isSpace();
    if (isBlank && m_typed.isHolding() && (fast || m_outsideFields || holdsCode()))
        return hold({m_burst.keys() - 1, m_burst.keys(), key.text});
    return pass();
}

/// A person holds a key down. The system also says so when a scanner sends the same character twice.
bool ScanWedgeListener::isHeldDown(const KeyPress &key)
{
    m_heldDown = key.isRepeat && (m_heldDown || m_burst.pauseAt(key.time) >= ScanBurst::fastKey);
    return m_heldDown;
}

/// True if the held keys are surely a machine's, also without the keys that may still come.
bool ScanWedgeListener::holdsCode() const
{
    return m_typed.isHolding() && m_burst.code().isLong;
}

/// True if the key may continue a link that a long pause has ended.
bool ScanWedgeListener::isRest(const KeyPress &key) const
{
    if (m_burst.keys() > 0)
        return m_inRest && m_burst.pauseAt(key.time) < ScanBurst::fastKey;
    return !m_cutLink.isEmpty() && key.time <= m_suffixEnd && key.text.size() == 1 && key.text.front().isDigit();
}

/// Something other than a run's key reaches a widget: the held keys that a person typed come first.
void ScanWedgeListener::letPass()
{
    const ScanBurst::Code code = m_burst.code();
    m_typed.showHeld(code.isLong ? m_burst.linkStart().value_or(code.from) : m_burst.keys());
    m_typed.interrupt();
}

/// Of a link, only the first digits may arrive: another invoice's number.
void ScanWedgeListener::cut()
{
    m_isCut = m_burst.keys() > 0;
    m_cutLink.clear();
}

KeyVerdict ScanWedgeListener::pass()
{
    letPass();
    return KeyVerdict::deliver;
}

KeyVerdict ScanWedgeListener::hold(const TypedKeys::Key &key)
{
    m_outsideFields = (m_outsideFields && m_typed.isHolding()) || !m_keyboard.inTextField();
    m_typed.hold(key);
    armTimer();
    return KeyVerdict::hold;
}

KeyVerdict ScanWedgeListener::handleEnd(const KeyPress &key, bool fast)
{
    const ScanBurst::Code code = m_burst.code(m_burst.lastPause());
    const bool isRestOfLink = m_inRest && m_burst.keys() > 0;
    const QString whole = isRestOfLink ? m_cutLink + m_burst.text() : QString();
    const bool isNoise = code.isLong || m_burst.wasFast();
    const bool isReported = isNoise && m_burst.text().size() >= ScanBurst::fewestNoiseCharacters;
    const bool isCode = code.isLink || isRestOfLink || (isReported && !code.isEmpty());
    if (key.isTab && !isCode)
        return pass(); // a person moves to the next field
    if (isRestOfLink) {
        m_typed.takeOut(0, m_burst.keys());
        onScan(whole);
    } else if (code.isLink) {
        finishLink(code);
    } else if (isReported) {
        finishNoise(code);
    }
    clear();
    if (isCode) {
        m_codeEnd = key.time;
        m_suffixEnd = key.time + suffixGap;
        m_cutLink.clear();
        return KeyVerdict::swallow;
    }
    return fast && !m_keyboard.inTextField() ? KeyVerdict::swallow : KeyVerdict::deliver;
}

KeyVerdict ScanWedgeListener::handleText(const KeyPress &key, bool fast)
{
    const bool wasCode = holdsCode();
    m_burst.add(key.text);
    // The keys after the code are a person's if they are not a machine's. The first alone does not tell.
    const ScanBurst::Code code = m_burst.code();
    if (wasCode && code.isLong && m_burst.keys() - code.to >= 2 && (code.isLink || !m_burst.linkStart()))
        finishCode(code);
    const qsizetype number = m_burst.keys() - 1;
    const TypedKeys::Key typed{number, number, key.text};
    if (fast || m_inRest || (wasCode && m_typed.isHolding()) || !m_keyboard.inTextField())
        return hold(typed);
    m_typed.showHeld(m_burst.keys());
    m_typed.show(typed);
    armTimer();
    return KeyVerdict::deliver;
}

void ScanWedgeListener::armTimer()
{
    if (m_burst.holdsLink())
        arm(ScanBurst::finishDelay, [this] { finishBurst(); });
    else if (!m_typed.isHolding() || m_burst.mayBeMachine() || (m_outsideFields && m_burst.linkStart()) || holdsCode())
        arm(ScanBurst::burstGap, [this] { finishBurst(); });
    else
        arm(holdDelay, [this] {
            m_typed.showHeld(m_burst.keys());
            arm(ScanBurst::burstGap - holdDelay, [this] { finishBurst(); });
        });
}

/// Waits once more with a delay of zero, so that keys that queued up while the program was busy come first.
void ScanWedgeListener::arm(Time delay, std::function<void()> action)
{
    cancelTimer();
    m_timer = m_clock.after(delay, [this, action = std::move(action)] {
        m_timer = m_clock.after(Clock::Duration(0), [this, action] {
            m_timer.reset();
            action();
        });
    });
}

void ScanWedgeListener::cancelTimer()
{
    if (m_timer)
        m_clock.cancel(*std::exchange(m_timer, std::nullopt));
}

/// The burst ends by a pause.
void ScanWedgeListener::finishBurst()
{
    if (const ScanBurst::Code code = m_burst.code(); code.isLong)
        finishCode(code);
    clear();
}

/// Ends a code without an end key. Keys after the code stay in the burst.
void ScanWedgeListener::finishCode(const ScanBurst::Code &code)
{
    if (!code.isLink) {
        finishNoise(code);
        return;
    }
    if (code.to == m_burst.keys() && !m_isCut) {
        m_codeEnd = m_burst.lastKey();
        m_suffixEnd = m_codeEnd + ScanBurst::burstGap; // a late end key
        m_cutLink = m_burst.text().back().isDigit() ? m_burst.text() : QString();
    }
    finishLink(code);
}

void ScanWedgeListener::finishLink(const ScanBurst::Code &code)
{
    if (m_isCut) {
        finishNoise(code);
        return;
    }
    const QString text = m_burst.textBefore(code.to);
    m_typed.takeOut(code.from, code.to);
    m_typed.removeFirst(code.to);
    m_burst.removeFirst(code.to);
    onScan(text);
}

void ScanWedgeListener::finishNoise(const ScanBurst::Code &code)
{
    const QString text = code.isEmpty() ? m_burst.text() : m_burst.textBefore(code.to);
    m_typed.takeOut(code.from, code.to);
    m_typed.removeFirst(code.to);
    m_burst.removeFirst(code.to);
    onNoise(text);
}

void ScanWedgeListener::clear()
{
    cancelTimer();
    m_typed.clear();
    m_burst.clear();
    m_inRest = m_outsideFields = m_isCut = false;
}

} // namespace parcelory

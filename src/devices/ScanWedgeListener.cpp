#include "devices/ScanWedgeListener.h"

#include "core/ports/Clock.h"
#include "core/ports/Keyboard.h"

#include <algorithm>
#include <functional>
#include <optional>
#include <utility>

namespace parcelory {

ScanWedgeListener::ScanWedgeListener(Keyboard &keyboard, Clock &clock, const QString &linkHost)
    : m_keyboard(keyboard), m_clock(clock), m_burst(linkHost)
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
    m_keyboard.listen([this](const KeyPress &key) { return handle(key); });
}

void ScanWedgeListener::stop()
{
    if (!std::exchange(m_listening, false))
        return;
    cancelTimer();
    pass();
    m_burst.clear();
    m_keyboard.listen({});
}

KeyVerdict ScanWedgeListener::handle(const KeyPress &key)
{
    if (!isWanted() || key.isRepeat) // a scanner never holds a key down
        return pass();
    const bool isEnd = key.isReturn || key.isTab || key.text.contains(u'\r') || key.text.contains(u'\n');
    // CR-LF, or a suffix of several keys: the code before it was already handled.
    if (isEnd && m_burst.keys() == 0 && key.time - m_machineEnded < ScanBurst::scannerGap &&
        key.time >= m_machineEnded) {
        m_machineEnded = key.time;
        return KeyVerdict::swallow;
    }
    if (!isEnd && m_burst.pausedBy(key.time) && m_burst.scannedLink())
        finishBurst(); // this key is not part of that code
    const bool machine = isNoise();
    const bool fast = m_burst.beat(key.time, isEnd);
    if (!isEnd && m_burst.beganRun() && m_held)
        endRun(machine);
    if (isEnd)
        return handleEnd(key, fast);
    if (!key.withCommand && ScanBurst::isBufferable(key.text))
        return handleText(key, fast);
    // A blank in a code must not press the button that has the focus.
    const bool inRun = m_burst.keys() > 0 && !m_burst.beganRun();
    const bool hold = inRun && !m_keyboard.inTextField() && !key.withCommand && !key.text.isEmpty();
    return hold ? keep() : pass();
}

KeyVerdict ScanWedgeListener::keep()
{
    m_held = true;
    armTimer();
    return KeyVerdict::hold;
}

/// The pause is too long for a scanner, so the run is over: a person's held keys are delivered, a machine's held keys
/// are dropped.
void ScanWedgeListener::endRun(bool machine)
{
    if (!machine) {
        pass();
        return;
    }
    m_held = false;
    m_keyboard.dropHeld();
    m_keyboard.restoreField();
}

/// Delivers a key, after the held keys that were pressed before it.
KeyVerdict ScanWedgeListener::pass()
{
    if (std::exchange(m_held, false))
        m_keyboard.releaseHeld();
    return KeyVerdict::deliver;
}

KeyVerdict ScanWedgeListener::handleEnd(const KeyPress &key, bool fast)
{
    if (key.isTab && !m_burst.holdsLink() && !m_burst.wasFast())
        return pass(); // a person moves to the next field
    switch (finishBurst()) {
    case Ending::scan:
    case Ending::machine:
        m_machineEnded = key.time;
        return KeyVerdict::swallow;
    case Ending::person:
        break;
    }
    return fast && !m_keyboard.inTextField() ? KeyVerdict::swallow : KeyVerdict::deliver;
}

KeyVerdict ScanWedgeListener::handleText(const KeyPress &key, bool fast)
{
    if (m_burst.beganRun())
        m_keyboard.markField();
    m_burst.add(key.text);
    if (fast || !m_keyboard.inTextField())
        return keep();
    armTimer();
    return pass();
}

void ScanWedgeListener::armTimer()
{
    cancelTimer();
    const bool machine = m_burst.wasFast();
    if (m_burst.holdsLink())
        arm(finishDelay, [this] { finishBurst(); });
    else // a machine gets time for its Return
        arm(machine ? finishDelay : ScanBurst::scannerGap, [this] { endRun(isNoise()); });
}

/// Waits once more with a delay of zero, so that keys that queued up while the program was busy come first.
void ScanWedgeListener::arm(Clock::Duration delay, std::function<void()> action)
{
    m_timer = m_clock.after(delay, [this, action = std::move(action)] {
        m_timer = m_clock.after(Clock::Duration(0), [this, action] {
            m_timer.reset();
            action();
        });
    });
}

/// Fast and long enough to be a scanner rather than typing.
bool ScanWedgeListener::isNoise() const
{
    return m_burst.wasFast() && m_burst.text().size() >= ScanBurst::fewestNoiseCharacters;
}

void ScanWedgeListener::cancelTimer()
{
    if (m_timer)
        m_clock.cancel(*std::exchange(m_timer, std::nullopt));
}

/// Decides whether the run was a scan, other machine input or a person's typing, and handles it.
ScanWedgeListener::Ending ScanWedgeListener::finishBurst()
{
    cancelTimer();
    const QString text = m_burst.text();
    const bool fast = m_burst.wasFast(), link = m_burst.holdsLink(), scanned = m_burst.scannedLink();
    m_burst.clear();
    if (link) {
        if (scanned)
            endRun(true);
        else
            scrubTypedText(text);
        onScan(text);
        return Ending::scan;
    }
    if (fast) {
        endRun(true);
        if (text.size() >= ScanBurst::fewestNoiseCharacters)
            onNoise(text);
        return Ending::machine;
    }
    pass();
    return Ending::person;
}

/// Removes a link that a person typed from the field.
void ScanWedgeListener::scrubTypedText(const QString &text)
{
    pass(); // with the held keys delivered, the field holds the whole link
    if (!m_keyboard.inTextField())
        return;
    const QString field = m_keyboard.fieldText();
    if (const qsizetype at = field.lastIndexOf(text); at >= 0) {
        m_keyboard.replaceInField(at, text.size(), {});
        return;
    }
    for (qsizetype count = std::min(field.size(), text.size()); count > 0; --count) {
        if (text.startsWith(QStringView(field).last(count))) {
            m_keyboard.replaceInField(field.size() - count, count, {});
            return;
        }
    }
}

} // namespace parcelory

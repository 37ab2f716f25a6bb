#pragma once

#include "core/ports/Clock.h"
#include "core/ports/Keyboard.h"
#include "devices/ScanBurst.h"

#include <functional>
#include <optional>

namespace parcelory {

/// Tells the code of a keyboard-wedge scanner from what people type, by its timing, and keeps it out of text fields.
/// Keys that may belong to a code are kept back; they are typed after all once their run proves to be a person's.
class ScanWedgeListener {
public:
    using Heard = std::function<void(const QString &text)>;

    static constexpr std::chrono::milliseconds finishDelay{250};

    ScanWedgeListener(Keyboard &keyboard, Clock &clock, const QString &linkHost);
    ~ScanWedgeListener();

    Heard onScan = [](const QString &) {};  ///< an invoice code; the text may hold junk around it
    Heard onNoise = [](const QString &) {}; ///< a fast run of keys that is none

    /// While this is false, keys go on as they come: nothing is scanned on a sign-in screen, but passwords are typed by
    /// machines, too.
    std::function<bool()> isWanted = [] { return true; };

    void start();
    void stop();

private:
    enum class Ending { scan, machine, person };

    KeyVerdict handle(const KeyPress &key);
    KeyVerdict handleEnd(const KeyPress &key, bool fast);
    KeyVerdict handleText(const KeyPress &key, bool fast);
    KeyVerdict pass();
    KeyVerdict keep();
    void endRun(bool machine);
    Ending finishBurst();
    void scrubTypedText(const QString &text);
    void armTimer();
    void arm(Clock::Duration delay, std::function<void()> action);
    void cancelTimer();
    bool isNoise() const;

    Keyboard &m_keyboard;
    Clock &m_clock;
    ScanBurst m_burst;
    bool m_listening = false;
    bool m_held = false;                             ///< the keyboard keeps keys back
    std::chrono::milliseconds m_machineEnded{-1000}; ///< when a code ended; what its suffix still sends is swallowed
    std::optional<quint64> m_timer;                  ///< for the end of a run without an end key
};

} // namespace parcelory

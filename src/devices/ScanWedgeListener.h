#pragma once

#include "core/ports/Clock.h"
#include "core/ports/Keyboard.h"
#include "devices/ScanBurst.h"

#include <functional>
#include <optional>

namespace parcelory {

/// Recognizes the codes of a keyboard-wedge scanner by their timing, and keeps them out of text fields. Keys that may
/// belong to a code are held, and delivered if a person typed them.
class ScanWedgeListener {
public:
    using Heard = std::function<void(const QString &text)>;

    static constexpr std::chrono::milliseconds finishDelay{250};

    ScanWedgeListener(Keyboard &keyboard, Clock &clock, const QString &linkHost);
    ~ScanWedgeListener();

    Heard onScan = [](const QString &) {};  ///< an invoice code; the text may hold junk around it
    Heard onNoise = [](const QString &) {}; ///< a fast run of keys that is not an invoice code

    /// While this is false, all keys are delivered at once: nothing is scanned on a sign-in screen, but a machine may
    /// type a password there.
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
    bool m_held = false;                             ///< the keyboard holds keys
    std::chrono::milliseconds m_machineEnded{-1000}; ///< when a code ended; the rest of its suffix is swallowed
    std::optional<quint64> m_timer;                  ///< for the end of a run without an end key
};

} // namespace parcelory

#pragma once

#include "core/ports/Clock.h"
#include "core/ports/Keyboard.h"
#include "devices/ScanBurst.h"
#include "devices/TypedKeys.h"

#include <functional>
#include <optional>

namespace parcelory {

/// Recognizes the codes of a keyboard-wedge scanner by their timing, and keeps them out of text fields. Keys that may
/// belong to a code are held, and delivered if a person typed them.
class ScanWedgeListener {
public:
    using Heard = std::function<void(const QString &text)>;
    using Time = ScanBurst::Time;

    /// Held keys that may be a person's are delivered after this pause. A scanner rarely makes it, and a person
    /// does not notice it.
    static constexpr Time holdDelay{90};
    /// An end key that follows an end key sooner belongs to the same code. A finger needs longer to press Return twice.
    static constexpr Time suffixGap{120};

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
    KeyVerdict handle(const KeyPress &key);
    KeyVerdict handleEnd(const KeyPress &key, bool fast);
    KeyVerdict handleText(const KeyPress &key, bool fast);
    KeyVerdict pass();
    KeyVerdict hold(const TypedKeys::Key &key);
    bool isHeldDown(const KeyPress &key);
    bool holdsCode() const;
    bool isRest(const KeyPress &key) const;
    void letPass();
    void cut();
    void finishBurst();
    void finishLink(const ScanBurst::Code &code);
    void finishNoise(const ScanBurst::Code &code);
    void finishCode(const ScanBurst::Code &code);
    void clear();
    void armTimer();
    void arm(Time delay, std::function<void()> action);
    void cancelTimer();

    Keyboard &m_keyboard;
    Clock &m_clock;
    ScanBurst m_burst;
    TypedKeys m_typed;
    bool m_listening = false;
    bool m_heldDown = false;            ///< a person holds a key down
    bool m_outsideFields = false;       ///< a held key is not for a text field
    Time m_codeEnd{0}, m_suffixEnd{-1}; ///< end keys between these times belong to the last code
    QString m_cutLink;                  ///< a link that a long pause has ended: its rest may follow until m_suffixEnd
    bool m_isCut = false;               ///< keys of the burst may be lost, because a dialog has opened
    bool m_inRest = false;              ///< the burst may be the rest of m_cutLink
    std::optional<quint64> m_timer;
};

} // namespace parcelory

#pragma once

#include <QObject>
#include <QPointer>
#include <QString>

#include <chrono>
#include <functional>

namespace parcelory {

/// A key press, before any widget sees it. Presses of modifier keys are not reported.
struct KeyPress {
    std::chrono::milliseconds time{0}; ///< when the key was pressed, on the system's clock
    QString text;                      ///< what it types; may be empty
    bool isReturn = false;             ///< Return or the keypad's Enter
    bool isTab = false;
    bool withCommand = false; ///< Command, Control or the like is held
    bool isRepeat = false;    ///< the key is being held down
};

/// What happens to a key: its widget receives it, it is held until its run is recognized, or it is dropped.
enum class KeyVerdict { deliver, hold, swallow };

/// An editable text field at one moment.
struct FieldState {
    QPointer<QObject> field; ///< null: no such field
    QString text;
    qsizetype cursor = 0, anchor = 0; ///< the selection is between them
    bool isMasked = false;            ///< shows dots, as for a password
};

/// The program's keyboard: every key press in any of its windows, and the text field that has the focus. Main thread
/// only.
class Keyboard {
public:
    using Handler = std::function<KeyVerdict(const KeyPress &)>;

    virtual ~Keyboard() = default;

    /// Calls `handler` for every key press from now on, and `before` before a widget receives anything else of the
    /// clerk's: a click, a shortcut, a drop, the text of an input method. Calls `cut` when a window stops receiving
    /// keys, because a dialog or another program does: the next keys may be lost. Empty functions end this.
    virtual void listen(Handler handler, std::function<void()> before, std::function<void()> cut) = 0;

    /// True if an editable text field has the focus.
    virtual bool inTextField() const = 0;
    /// The text field that receives the current key.
    virtual FieldState fieldState() const = 0;
    /// The same text field as it is now.
    virtual FieldState stateNow(const FieldState &earlier) const = 0;
    /// Puts the text field into this state, like an edit by the clerk.
    virtual void restore(const FieldState &state) = 0;

    /// Delivers the first held key to its original target. Returns the target before that, if it is a text field.
    virtual FieldState releaseHeld() = 0;
    /// Drops the first held key.
    virtual void dropHeld() = 0;
};

/// For programs without a window: it never reports a key.
class SilentKeyboard : public Keyboard {
public:
    void listen(Handler, std::function<void()>, std::function<void()>) override {}
    bool inTextField() const override { return false; }
    FieldState fieldState() const override { return {}; }
    FieldState stateNow(const FieldState &) const override { return {}; }
    void restore(const FieldState &) override {}
    FieldState releaseHeld() override { return {}; }
    void dropHeld() override {}
};

} // namespace parcelory

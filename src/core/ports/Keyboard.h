#pragma once

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

/// The program's keyboard: every key press in any of its windows, and the text field that has the focus. Main thread
/// only.
class Keyboard {
public:
    using Handler = std::function<KeyVerdict(const KeyPress &)>;

    virtual ~Keyboard() = default;

    /// Calls `handler` for every key press from now on; an empty handler ends this.
    virtual void listen(Handler handler) = 0;

    /// True if an editable text field has the focus.
    virtual bool inTextField() const = 0;
    virtual QString fieldText() const = 0;
    virtual void replaceInField(qsizetype position, qsizetype length, const QString &text) = 0;

    /// Saves the state of the focused field: its text, cursor and selection.
    virtual void markField() = 0;
    /// Restores the saved field, and discards the saved state.
    virtual void restoreField() = 0;

    /// Delivers the held keys to their original targets, in order.
    virtual void releaseHeld() = 0;
    virtual void dropHeld() = 0;
};

/// For programs without a window: it never reports a key.
class SilentKeyboard : public Keyboard {
public:
    void listen(Handler) override {}
    bool inTextField() const override { return false; }
    QString fieldText() const override { return {}; }
    void replaceInField(qsizetype, qsizetype, const QString &) override {}
    void markField() override {}
    void restoreField() override {}
    void releaseHeld() override {}
    void dropHeld() override {}
};

} // namespace parcelory

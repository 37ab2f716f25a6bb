#pragma once

#include <QString>

#include <chrono>
#include <functional>

namespace parcelory {

/// A key going down, before any widget sees it. Keys that only modify others never come here.
struct KeyPress {
    std::chrono::milliseconds time{0}; ///< when the key was pressed, on the system's clock
    QString text;                      ///< what it types; may be empty
    bool isReturn = false;             ///< Return or the keypad's Enter
    bool isTab = false;
    bool withCommand = false; ///< Command, Control or the like is held
    bool isRepeat = false;    ///< the key is being held down
};

/// What becomes of a key: it goes on to its widget, is kept back until the run it belongs to is understood, or is gone.
enum class KeyVerdict { deliver, hold, swallow };

/// The program's keyboard: every key press in any of its windows, and the text field that has the focus. Main thread
/// only.
class Keyboard {
public:
    using Handler = std::function<KeyVerdict(const KeyPress &)>;

    virtual ~Keyboard() = default;

    /// Asks `handler` about every key press from now on; an empty one ends that.
    virtual void listen(Handler handler) = 0;

    /// An editable text field has the focus.
    virtual bool inTextField() const = 0;
    virtual QString fieldText() const = 0;
    virtual void replaceInField(qsizetype position, qsizetype length, const QString &text) = 0;

    /// Remembers the field that has the focus as it is now: its text, its cursor, its selection.
    virtual void markField() = 0;
    /// Makes the remembered field what it was, and forgets it.
    virtual void restoreField() = 0;

    /// Types the keys that were kept back where they were meant to go, in their order.
    virtual void releaseHeld() = 0;
    virtual void dropHeld() = 0;
};

/// For programs without a window: nobody types.
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

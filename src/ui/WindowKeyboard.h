#pragma once

#include "core/ports/Keyboard.h"

#include <QKeyEvent>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QWidget>
#include <QWindow>

#include <functional>
#include <memory>

namespace parcelory {

/// The key presses in all of the program's windows, and the focused text field: single-line, multi-line, password, spin
/// box or editable combo box.
class WindowKeyboard : public QObject, public Keyboard {
public:
    using TimeOf = std::function<std::chrono::milliseconds(const QKeyEvent &)>;

    /// The system's timestamp of a key press, so that time in the event queue does not count.
    static std::chrono::milliseconds stampedTime(const QKeyEvent &key);

    explicit WindowKeyboard(TimeOf timeOf = stampedTime) : m_timeOf(std::move(timeOf)) {}
    ~WindowKeyboard() override;

    void listen(Handler handler, std::function<void()> before, std::function<void()> cut) override;
    bool inTextField() const override;
    FieldState fieldState() const override;
    FieldState stateNow(const FieldState &earlier) const override;
    void restore(const FieldState &state) override;
    FieldState releaseHeld() override;
    void dropHeld() override { m_held.removeFirst(); }

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QWidget *receiver() const;

    struct Held {
        QPointer<QWidget> target;
        std::shared_ptr<QKeyEvent> key;
    };
    TimeOf m_timeOf;
    Handler m_handler;
    std::function<void()> m_before, m_cut;
    QList<Held> m_held;
    bool m_releasing = false;
    QPointer<QWindow> m_window; ///< receives the current key
};

} // namespace parcelory

#pragma once

#include "core/ports/Keyboard.h"

#include <QKeyEvent>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QWidget>
#include <QWindow>

#include <memory>
#include <optional>

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

    void listen(Handler handler) override;
    bool inTextField() const override;
    QString fieldText() const override;
    void replaceInField(qsizetype position, qsizetype length, const QString &text) override;
    void markField() override;
    void restoreField() override;
    void releaseHeld() override;
    void dropHeld() override { m_held.clear(); }

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QWidget *receiver() const;

    struct Held {
        QPointer<QWidget> target;
        std::shared_ptr<QKeyEvent> key;
    };
    struct Mark {
        QPointer<QWidget> field;
        QString text;
        int cursor = 0, anchor = 0;
    };

    TimeOf m_timeOf;
    Handler m_handler;
    QList<Held> m_held;
    std::optional<Mark> m_mark;
    bool m_releasing = false;
    QPointer<QWindow> m_window; ///< receives the current key
};

} // namespace parcelory

#include "ui/WindowKeyboard.h"

#include "core/ports/Keyboard.h"

#include <QAbstractSpinBox>
#include <QApplication>
#include <QComboBox>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTextEdit>

#include <chrono>
#include <functional>
#include <memory>
#include <utility>

namespace parcelory {

namespace {

bool onlyModifies(const QKeyEvent &key)
{
    switch (key.key()) {
    case Qt::Key_Shift:
    case Qt::Key_Control:
    case Qt::Key_Meta:
    case Qt::Key_Alt:
    case Qt::Key_AltGr:
    case Qt::Key_CapsLock:
    case Qt::Key_NumLock:
    case Qt::Key_ScrollLock:
        return true;
    default:
        return false;
    }
}

Qt::KeyboardModifiers commands()
{
#ifdef Q_OS_MACOS
    return Qt::ControlModifier | Qt::MetaModifier; // Option types symbols
#else
    return Qt::ControlModifier | Qt::MetaModifier | Qt::AltModifier;
#endif
}

KeyPress pressOf(const QKeyEvent &key, std::chrono::milliseconds time)
{
    return {.time = time,
            .text = key.text(),
            .isReturn = key.key() == Qt::Key_Return || key.key() == Qt::Key_Enter,
            .isTab = key.key() == Qt::Key_Tab || key.key() == Qt::Key_Backtab,
            .withCommand = (key.modifiers() & commands()) != Qt::NoModifier,
            .isRepeat = key.isAutoRepeat()};
}

/// The single-line editor that a widget is or contains.
QLineEdit *lineIn(QWidget *widget)
{
    if (auto *line = qobject_cast<QLineEdit *>(widget))
        return line;
    if (auto *list = qobject_cast<QComboBox *>(widget))
        return list->lineEdit();
    if (auto *spin = qobject_cast<QAbstractSpinBox *>(widget))
        return spin->findChild<QLineEdit *>();
    return nullptr;
}

/// Calls `use` with a multi-line editor; false if the widget is not a multi-line editor.
template <class Use>
bool withText(QWidget *widget, Use use)
{
    if (auto *plain = qobject_cast<QPlainTextEdit *>(widget))
        use(*plain);
    else if (auto *rich = qobject_cast<QTextEdit *>(widget))
        use(*rich);
    else
        return false;
    return true;
}

bool isEditable(QWidget *widget)
{
    if (!widget || !widget->isEnabled())
        return false;
    if (const QLineEdit *line = lineIn(widget))
        return !line->isReadOnly() && line->isEnabled();
    bool editable = false;
    withText(widget, [&](auto &text) { editable = !text.isReadOnly(); });
    return editable;
}

QString textOf(QWidget *widget)
{
    if (const QLineEdit *line = lineIn(widget))
        return line->text();
    QString all;
    withText(widget, [&](auto &text) { all = text.toPlainText(); });
    return all;
}

FieldState stateOf(QWidget *widget)
{
    if (!isEditable(widget))
        return {};
    FieldState state{.field = widget, .text = textOf(widget)};
    if (const QLineEdit *line = lineIn(widget)) {
        state.isMasked = line->echoMode() != QLineEdit::Normal;
        state.cursor = state.anchor = line->cursorPosition();
        if (line->hasSelectedText()) // the end of the selection that the cursor is not at
            state.anchor = line->selectionStart() == state.cursor ? line->selectionEnd() : line->selectionStart();
    } else {
        withText(widget, [&](auto &text) {
            state.cursor = text.textCursor().position();
            state.anchor = text.textCursor().anchor();
        });
    }
    return state;
}

/// Replaces the text like an edit by the clerk: the field emits its edit signals, and Undo works.
void replaceText(QWidget *widget, const QString &with)
{
    if (QLineEdit *line = lineIn(widget)) {
        line->selectAll();
        if (with.isEmpty())
            line->del();
        else
            line->insert(with);
        return;
    }
    withText(widget, [&](auto &text) {
        QTextCursor cursor = text.textCursor();
        cursor.select(QTextCursor::Document);
        cursor.insertText(with);
    });
}

/// A key that is neither text nor the end of a line may be a shortcut. A scanner may send a line feed as Ctrl+J.
bool mayBeShortcut(const QKeyEvent &key)
{
    const KeyPress press = pressOf(key, {});
    if (press.withCommand || press.text.isEmpty())
        return press.isReturn || press.isTab || (press.text != u"\n" && press.text != u"\r");
    return !press.isReturn && !press.isTab && press.text.front().category() == QChar::Other_Control;
}

/// True if the event is something of the clerk's that is not a key.
bool isOtherInput(const QObject &watched, const QEvent &event)
{
    switch (event.type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
    case QEvent::Wheel:
    case QEvent::TouchBegin:
    case QEvent::TabletPress:
    case QEvent::Drop:
        return watched.isWindowType();
    case QEvent::InputMethod:
        return true;
    case QEvent::ShortcutOverride: {
        const auto &key = static_cast<const QKeyEvent &>(event);
        return !onlyModifies(key) && mayBeShortcut(key);
    }
    default:
        return false;
    }
}

} // namespace

std::chrono::milliseconds WindowKeyboard::stampedTime(const QKeyEvent &key)
{
    if (key.timestamp() > 0)
        return std::chrono::milliseconds(key.timestamp());
    QElapsedTimer now; // key events that the program creates have no timestamp
    now.start();
    return std::chrono::milliseconds(now.msecsSinceReference());
}

WindowKeyboard::~WindowKeyboard()
{
    listen({}, {}, {});
}

void WindowKeyboard::listen(Handler handler, std::function<void()> before, std::function<void()> cut)
{
    m_handler = std::move(handler);
    m_before = std::move(before);
    m_cut = std::move(cut);
    if (!qApp)
        return;
    if (m_handler)
        qApp->installEventFilter(this);
    else
        qApp->removeEventFilter(this);
}

/// The widget that receives a key: an open menu or list comes before the field behind it.
QWidget *WindowKeyboard::receiver() const
{
    if (QWidget *popup = QApplication::activePopupWidget())
        return popup->focusWidget() ? popup->focusWidget() : popup;
    auto *inWindow = m_window ? qobject_cast<QWidget *>(m_window->focusObject()) : nullptr;
    return inWindow ? inWindow : QApplication::focusWidget();
}

bool WindowKeyboard::eventFilter(QObject *watched, QEvent *event)
{
    if (m_releasing)
        return false;
    if (isOtherInput(*watched, *event))
        m_before();
    if (watched->isWindowType() && (event->type() == QEvent::WindowBlocked || event->type() == QEvent::FocusOut))
        m_cut();
    // The native window receives a key first and only once; widgets may receive it several times.
    if (event->type() != QEvent::KeyPress || !watched->isWindowType())
        return false;
    const auto &key = static_cast<const QKeyEvent &>(*event);
    if (onlyModifies(key))
        return false;
    m_window = static_cast<QWindow *>(watched);
    switch (m_handler(pressOf(key, m_timeOf(key)))) {
    case KeyVerdict::deliver:
        return false;
    case KeyVerdict::hold:
        m_held.append({receiver(), std::shared_ptr<QKeyEvent>(key.clone())});
        return true;
    case KeyVerdict::swallow:
        return true;
    }
    return false;
}

bool WindowKeyboard::inTextField() const
{
    return isEditable(receiver());
}

FieldState WindowKeyboard::fieldState() const
{
    return stateOf(receiver());
}

FieldState WindowKeyboard::stateNow(const FieldState &earlier) const
{
    return stateOf(qobject_cast<QWidget *>(earlier.field));
}

void WindowKeyboard::restore(const FieldState &state)
{
    auto *field = qobject_cast<QWidget *>(state.field);
    if (!isEditable(field))
        return;
    if (textOf(field) != state.text)
        replaceText(field, state.text);
    if (QLineEdit *line = lineIn(field)) {
        line->setCursorPosition(int(state.cursor));
        if (state.anchor != state.cursor)
            line->setSelection(int(state.anchor), int(state.cursor - state.anchor));
        return;
    }
    withText(field, [&](auto &text) {
        QTextCursor cursor = text.textCursor();
        cursor.setPosition(int(state.anchor));
        cursor.setPosition(int(state.cursor), QTextCursor::KeepAnchor);
        text.setTextCursor(cursor);
    });
}

FieldState WindowKeyboard::releaseHeld()
{
    const Held held = m_held.takeFirst();
    if (!held.target)
        return {};
    FieldState before = stateOf(held.target);
    m_releasing = true;
    QCoreApplication::sendEvent(held.target, held.key.get());
    if (held.target) {
        QKeyEvent up(QEvent::KeyRelease, held.key->key(), held.key->modifiers(), held.key->text());
        QCoreApplication::sendEvent(held.target, &up); // a button acts when its key is released
    }
    m_releasing = false;
    return before;
}

} // namespace parcelory

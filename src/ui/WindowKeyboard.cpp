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
#include <memory>
#include <optional>
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

/// Replaces part of the text like an edit by the clerk: the field emits its edit signals, and Undo works.
void replaceIn(QWidget *widget, int position, int length, const QString &with)
{
    if (QLineEdit *line = lineIn(widget)) {
        line->setSelection(position, length);
        if (with.isEmpty())
            line->del();
        else
            line->insert(with);
        return;
    }
    withText(widget, [&](auto &text) {
        QTextCursor cursor = text.textCursor();
        cursor.setPosition(position);
        cursor.setPosition(position + length, QTextCursor::KeepAnchor);
        cursor.insertText(with);
        text.setTextCursor(cursor);
    });
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
    listen({});
}

void WindowKeyboard::listen(Handler handler)
{
    m_handler = std::move(handler);
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
    // The native window receives a key first and only once; widgets may receive it several times.
    if (event->type() != QEvent::KeyPress || !watched->isWindowType() || m_releasing)
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

QString WindowKeyboard::fieldText() const
{
    return textOf(receiver());
}

void WindowKeyboard::replaceInField(qsizetype position, qsizetype length, const QString &text)
{
    replaceIn(receiver(), int(position), int(length), text);
}

void WindowKeyboard::markField()
{
    QWidget *field = receiver();
    m_mark.reset();
    if (!isEditable(field))
        return;
    Mark mark{.field = field, .text = textOf(field)};
    if (const QLineEdit *line = lineIn(field)) {
        mark.cursor = line->cursorPosition();
        mark.anchor = mark.cursor;
        if (line->hasSelectedText()) // the end of the selection that the cursor is not at
            mark.anchor = line->selectionStart() == mark.cursor ? line->selectionEnd() : line->selectionStart();
    } else {
        withText(field, [&](auto &text) {
            mark.cursor = text.textCursor().position();
            mark.anchor = text.textCursor().anchor();
        });
    }
    m_mark = mark;
}

void WindowKeyboard::restoreField()
{
    const std::optional<Mark> mark = std::exchange(m_mark, std::nullopt);
    if (!mark || !mark->field)
        return;
    const QString now = textOf(mark->field);
    if (now != mark->text)
        replaceIn(mark->field, 0, int(now.size()), mark->text);
    if (QLineEdit *line = lineIn(mark->field)) {
        line->setCursorPosition(mark->cursor);
        if (mark->anchor != mark->cursor)
            line->setSelection(mark->anchor, mark->cursor - mark->anchor);
        return;
    }
    withText(mark->field, [&](auto &text) {
        QTextCursor cursor = text.textCursor();
        cursor.setPosition(mark->anchor);
        cursor.setPosition(mark->cursor, QTextCursor::KeepAnchor);
        text.setTextCursor(cursor);
    });
}

void WindowKeyboard::releaseHeld()
{
    m_releasing = true;
    for (const Held &held : std::exchange(m_held, {})) {
        if (!held.target)
            continue;
        QCoreApplication::sendEvent(held.target, held.key.get());
        QKeyEvent up(QEvent::KeyRelease, held.key->key(), held.key->modifiers(), held.key->text());
        QCoreApplication::sendEvent(held.target, &up); // a button acts when its key is released
    }
    m_releasing = false;
}

} // namespace parcelory

#include "ui/parts/LineEdit.h"

#include "ui/parts/TextLabel.h"
#include "ui/theme/Icons.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QDropEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QMimeData>
#include <QMouseEvent>
#include <QRegularExpression>

namespace parcelory {
using namespace Qt::StringLiterals;

LineEdit::LineEdit(const QString &name, int width, QWidget *parent) : QLineEdit(parent)
{
    const Theme &theme = Theme::current();
    setAccessibleName(name);
    setFixedHeight(theme.scaled(Theme::fieldHeight));
    setTextMargins(6, 0, 2, 0);
    if (width > 0)
        setFixedWidth(theme.scaled(width));
    connect(this, &QLineEdit::textEdited, this, [this] { setFault({}); });
}

void LineEdit::setFault(const QString &reason)
{
    const bool faulty = !reason.isEmpty();
    if (!faulty && !hasFault())
        return;
    if (faulty && !m_mark && width() > 60)
        m_mark = addAction(themeIcon(QStringLiteral("ui_error"), &Tokens::bad), QLineEdit::TrailingPosition);
    if (!faulty) {
        delete m_mark;
        m_mark = nullptr;
    }
    setProperty("fault", faulty);
    setToolTip(plainToolTip(reason));
    setAccessibleDescription(reason);
    update();
}

QSize LineEdit::minimumSizeHint() const
{
    return {40, height()};
}

void LineEdit::keyPressEvent(QKeyEvent *event)
{
    if (event->matches(QKeySequence::Paste) && !isReadOnly())
        pasteText(QApplication::clipboard()->text());
    else if (!event->matches(QKeySequence::Undo) || !takeUndo || !takeUndo())
        QLineEdit::keyPressEvent(event);
}

void LineEdit::pasteText(QString text)
{
    constexpr QChar breakOpportunity(0x200B); // invisible; web pages and our own labels have it inside long words
    const bool isSecret = echoMode() != Normal;
    if (!isSecret)
        text.remove(breakOpportunity);
    if (takePaste && takePaste(text))
        return;
    if (!isSecret) { // a blank may be part of a password
        static const QRegularExpression breaks(u"\\s*[\\r\\n\\x{2028}\\x{2029}]+\\s*"_s);
        text = text.trimmed().replace(breaks, u" "_s);
    }
    insert(text);
}

void LineEdit::focusOutEvent(QFocusEvent *event)
{
    QLineEdit::focusOutEvent(event);
    const Qt::FocusReason reason = event->reason();
    const bool returns =
        reason == Qt::PopupFocusReason || reason == Qt::MenuBarFocusReason || reason == Qt::ActiveWindowFocusReason;
    if (!returns)
        setCursorPosition(0); // the beginning of a long text tells more than its end
}

void LineEdit::contextMenuEvent(QContextMenuEvent *event)
{
    QMenu *menu = createStandardContextMenu();
    menu->setAttribute(Qt::WA_DeleteOnClose);
    for (QAction *action : menu->actions()) {
        if (!action->text().startsWith(QLineEdit::tr("&Paste")))
            continue;
        disconnect(action, nullptr, this, nullptr);
        connect(action, &QAction::triggered, this, [this] { pasteText(QApplication::clipboard()->text()); });
    }
    menu->popup(event->globalPos());
}

/// On Linux, the middle button pastes what is selected, in whichever window.
void LineEdit::mouseReleaseEvent(QMouseEvent *event)
{
    const QClipboard *clipboard = QApplication::clipboard();
    if (event->button() != Qt::MiddleButton || !clipboard->supportsSelection() || isReadOnly()) {
        QLineEdit::mouseReleaseEvent(event);
        return;
    }
    deselect();
    pasteText(clipboard->text(QClipboard::Selection));
}

void LineEdit::dropEvent(QDropEvent *event)
{
    if (event->source() == this || !event->mimeData()->hasText() || isReadOnly()) { // the text moves within the field
        QLineEdit::dropEvent(event);
        return;
    }
    setCursorPosition(cursorPositionAt(event->position().toPoint()));
    event->acceptProposedAction();
    pasteText(event->mimeData()->text());
}

} // namespace parcelory

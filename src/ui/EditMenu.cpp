#include "ui/EditMenu.h"

#include "ui/parts/LineEdit.h"

#include <QApplication>
#include <QClipboard>
#include <QKeyEvent>
#include <QLabel>
#include <QMenuBar>
#include <QPointer>
#include <QShortcut>

#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

/// Text fields and lists handle these keys themselves; a menu entry sends them to the focused widget.
class EditMenu : public QObject {
public:
    EditMenu(QMenu *menu, UndoElsewhere elsewhere);

private:
    void add(const QString &text, QKeySequence::StandardKey keys);
    void remember(QWidget *focus);
    bool press(QEvent::Type type, const QAction &entry) const;
    bool wouldAct(QKeySequence::StandardKey keys) const;
    bool isForTarget(const QAction &entry) const;
    bool isElsewhere(const QAction &entry) const;
    void refresh();

    QMenu *m_menu;
    UndoElsewhere m_elsewhere;
    QPointer<QWidget> m_target; ///< the focused widget before the menu opened
};

EditMenu::EditMenu(QMenu *menu, UndoElsewhere elsewhere)
    : QObject(menu), m_menu(menu), m_elsewhere(std::move(elsewhere))
{
    add(u"Undo"_s, QKeySequence::Undo);
    // Only for a focused widget that leaves the keys alone.
    auto *keys = new QShortcut(QKeySequence::Undo, menu->parentWidget()->window());
    connect(keys, &QShortcut::activated, this, [this] {
        if (m_elsewhere.isOffered())
            m_elsewhere.run();
    });
    add(u"Redo"_s, QKeySequence::Redo);
    menu->addSeparator();
    add(u"Cut"_s, QKeySequence::Cut);
    add(u"Copy"_s, QKeySequence::Copy);
    add(u"Paste"_s, QKeySequence::Paste);
    menu->addSeparator();
    add(u"Select All"_s, QKeySequence::SelectAll);
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget *, QWidget *now) { remember(now); });
    connect(menu, &QMenu::aboutToShow, this, &EditMenu::refresh);
}

void EditMenu::add(const QString &text, QKeySequence::StandardKey keys)
{
    QAction *entry = m_menu->addAction(text);
    entry->setShortcut(QKeySequence(keys));
    entry->setData(int(keys));
    entry->setShortcutContext(Qt::WidgetShortcut); // the field handles the keys; the menu only shows them
    entry->setMenuRole(QAction::NoRole);
    connect(entry, &QAction::triggered, this, [this, entry] {
        if (isElsewhere(*entry)) {
            m_elsewhere.run();
            return;
        }
        press(QEvent::KeyPress, *entry);
        press(QEvent::KeyRelease, *entry);
    });
}

void EditMenu::remember(QWidget *focus)
{
    if (focus && !qobject_cast<QMenuBar *>(focus) && !qobject_cast<QMenu *>(focus))
        m_target = focus;
}

/// True if the target accepts the keys.
bool EditMenu::press(QEvent::Type type, const QAction &entry) const
{
    if (!m_target || entry.shortcut().isEmpty())
        return false;
    const QKeyCombination keys = entry.shortcut()[0];
    QKeyEvent event(type, keys.key(), keys.keyboardModifiers());
    event.ignore();
    QCoreApplication::sendEvent(m_target, &event);
    return event.isAccepted();
}

/// False if the target would take the keys and do nothing.
bool EditMenu::wouldAct(QKeySequence::StandardKey keys) const
{
    if (const auto *label = qobject_cast<QLabel *>(m_target.data()))
        return keys != QKeySequence::Copy || label->hasSelectedText();
    const auto *field = qobject_cast<QLineEdit *>(m_target.data());
    if (!field)
        return true;
    const auto *own = dynamic_cast<const LineEdit *>(field);
    const bool isReadable = field->echoMode() == QLineEdit::Normal;
    switch (keys) {
    case QKeySequence::Undo:
        return field->isUndoAvailable() || (own && own->offersUndo && own->offersUndo());
    case QKeySequence::Redo:
        return field->isRedoAvailable();
    case QKeySequence::Cut:
        return isReadable && field->hasSelectedText() && !field->isReadOnly();
    case QKeySequence::Copy:
        return isReadable && field->hasSelectedText();
    case QKeySequence::Paste:
        return !field->isReadOnly() && !QGuiApplication::clipboard()->text().isEmpty();
    default:
        return !field->text().isEmpty();
    }
}

/// A widget accepts the ShortcutOverride event of keys that it handles.
void EditMenu::refresh()
{
    for (QAction *entry : m_menu->actions())
        entry->setEnabled(entry->isSeparator() || isForTarget(*entry) || isElsewhere(*entry));
}

bool EditMenu::isForTarget(const QAction &entry) const
{
    return press(QEvent::ShortcutOverride, entry) && wouldAct(QKeySequence::StandardKey(entry.data().toInt()));
}

bool EditMenu::isElsewhere(const QAction &entry) const
{
    return entry.data().toInt() == QKeySequence::Undo && m_elsewhere.isOffered() && !isForTarget(entry);
}

} // namespace

void addEditMenu(QMenuBar *bar, UndoElsewhere elsewhere)
{
    new EditMenu(bar->addMenu(u"&Edit"_s), std::move(elsewhere)); // the menu owns it
}

} // namespace parcelory

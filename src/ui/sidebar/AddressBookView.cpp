#include "ui/sidebar/AddressBookView.h"

#include "app/AppState.h"
#include "app/addressbook/AddressBook.h"
#include "core/StatusKind.h"
#include "core/Task.h"
#include "core/Text.h"
#include "ui/parts/Accessibility.h"
#include "ui/parts/Binding.h"
#include "ui/parts/BusyBar.h"
#include "ui/parts/Button.h"
#include "ui/parts/EmptyState.h"
#include "ui/parts/SearchField.h"
#include "ui/parts/TabOrder.h"
#include "ui/parts/TextLabel.h"
#include "ui/sidebar/AddressEditSheet.h"
#include "ui/sidebar/AddressList.h"
#include "ui/sidebar/InvoiceCards.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QMenu>
#include <QPointer>
#include <QStackedWidget>
#include <QVBoxLayout>

#include <optional>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

const QString hint =
    u"Import your address book once — it then lives in Parcelory, like Endicia's did. macOS will ask for "
    "Contacts permission only if you import from Apple Contacts."_s;

/// A source of addresses: its menu entry, and a shorter text for a button.
struct Source {
    QString entry, button;
    Task<> (AddressBook::*import)();
};

QList<Source> sources(const AddressBook &book)
{
    QList<Source> all = {
        {u"From Endicia (importedAddresses.plist)…"_s, u"From Endicia…"_s, &AddressBook::importEndicia},
        {u"From vCard File (.vcf)…"_s, u"From vCard File…"_s, &AddressBook::importVCard}};
    if (book.hasContacts())
        all.append({u"From Apple Contacts…"_s, u"From Apple Contacts…"_s, &AddressBook::importContacts});
    return all;
}

/// Runs an import when the menu entry or the button is triggered. The book outlives every view.
template <class Trigger, class Signal>
void offer(Trigger *trigger, Signal signal, AddressBook &book, const Source &source)
{
    QObject::connect(trigger, signal, &book,
                     [&book, import = source.import] { spawn([&book, import] { return (book.*import)(); }); });
}

EmptyState *makeEmpty(AddressBook &book)
{
    auto *empty = new EmptyState(u"ui_book"_s, u"No addresses yet"_s);
    for (const Source &source : sources(book)) {
        auto *button = new Button(source.button, Button::Kind::standard, u"ui_import"_s);
        button->setAccessibleName(source.entry);
        button->setToolTip(source.entry);
        offer(button, &QPushButton::clicked, book, source);
        empty->append(button);
    }
    auto *words = new TextLabel(hint, FontRole::caption, &Tokens::muted);
    words->setWordWrap(true);
    words->setAlignment(Qt::AlignHCenter);
    empty->append(words, {});
    return empty;
}

/// In place of the list while the book could never be read, so that it does not look empty.
EmptyState *makeUnreadable(AddressBook &book)
{
    auto *state = new EmptyState(u"ui_error"_s, {});
    auto *again = new Button(u"Read Again"_s, Button::Kind::standard, u"ui_refresh"_s);
    QObject::connect(again, &QPushButton::clicked, &book, [&book] { spawn([&book] { return book.reload(); }); });
    state->append(again);
    return state;
}

Button *makeTool(const QString &icon, const QString &name)
{
    auto *tool = new Button({}, Button::Kind::icon, icon);
    tool->describe(name);
    return tool;
}

} // namespace

AddressBookView::AddressBookView(AppState &app, AddressBook &book, QWidget *parent)
    : QWidget(parent), m_app(app), m_book(book), m_pane(app, book),
      m_search(new SearchField(u"Search name, company, place"_s)), m_list(new AddressList(m_pane)),
      m_empty(makeEmpty(book)), m_nothing(new EmptyState(u"ui_search"_s, {})), m_unreadable(makeUnreadable(book)),
      m_pages(new QStackedWidget), m_message(new TextLabel({}, FontRole::caption)),
      m_cancel(new Button(u"Cancel"_s, Button::Kind::link)), m_undo(new Button(u"Undo"_s, Button::Kind::link)),
      m_bar(new BusyBar), m_fill(new Button(u"Fill Label"_s)), m_add(makeTool(u"ui_plus"_s, u"New address"_s)),
      m_edit(makeTool(u"ui_edit"_s, u"Edit the selected address"_s)),
      m_delete(makeTool(u"ui_trash"_s, u"Delete the selected address"_s)),
      m_import(makeTool(u"ui_import"_s, u"Import Address Book"_s)),
      m_export(makeTool(u"ui_export"_s, u"Export Address Book"_s)),
      m_count(new TextLabel({}, FontRole::caption, &Tokens::muted)), m_refresh([this] { refresh(); })
{
    for (QWidget *page : {static_cast<QWidget *>(m_list), static_cast<QWidget *>(m_empty),
                          static_cast<QWidget *>(m_nothing), static_cast<QWidget *>(m_unreadable)})
        m_pages->addWidget(page);
    auto *rows = new QVBoxLayout(this);
    rows->setContentsMargins(11, 8, 12, 10);
    rows->setSpacing(8);
    rows->addWidget(m_search);
    rows->addWidget(m_pages, 1);
    addFoot(rows);
    orderTabsByLayout(this);
    bindText(m_search, m_pane.query);
    connectList();
    m_refresh.follow(m_pane);
    refreshList();
}

void AddressBookView::addFoot(QVBoxLayout *rows)
{
    auto *foot = new QVBoxLayout;
    foot->setSpacing(4);
    foot->addLayout(makeNews());
    foot->addWidget(m_bar);
    foot->addWidget(m_fill);
    foot->addSpacing(4);
    foot->addLayout(makeTools());
    m_fill->setSizePolicy(QSizePolicy::Minimum, QSizePolicy::Fixed);
    rows->addLayout(foot);
}

QLayout *AddressBookView::makeNews()
{
    m_message->setWordWrap(true);
    setAccessibleRole(m_message, QAccessible::Notification);
    m_message->hide();
    auto *row = new QHBoxLayout;
    row->setSpacing(4);
    row->addWidget(m_message, 1);
    row->addWidget(m_cancel);
    row->addWidget(m_undo);
    m_undo->setToolTip(QKeySequence(Qt::CTRL | Qt::Key_Z).toString(QKeySequence::NativeText));
    connect(m_cancel, &QPushButton::clicked, &m_book, &AddressBook::cancelImport);
    connect(m_undo, &QPushButton::clicked, this, &AddressBookView::undo);
    return row;
}

QLayout *AddressBookView::makeTools()
{
    auto *menu = new QMenu(m_import);
    for (const Source &source : sources(m_book))
        offer(menu->addAction(source.entry), &QAction::triggered, m_book, source);
    m_import->setMenu(menu);
    menu = new QMenu(m_export);
    for (const auto &[entry, format] : {std::pair(u"To vCard File (.vcf)…"_s, AddressBook::Format::vCard),
                                        std::pair(u"To CSV File (.csv)…"_s, AddressBook::Format::csv)}) {
        connect(menu->addAction(entry), &QAction::triggered, &m_book,
                [&book = m_book, format = format] { spawn([&book, format] { return book.exportTo(format); }); });
    }
    m_export->setMenu(menu);
    connect(m_fill, &QPushButton::clicked, this, &AddressBookView::fill);
    connect(m_add, &QPushButton::clicked, this, &AddressBookView::addNew);
    connect(m_edit, &QPushButton::clicked, this, &AddressBookView::editSelected);
    connect(m_delete, &QPushButton::clicked, this, [this] { removeSelected(&AddressBook::remove); });
    auto *row = new QHBoxLayout;
    row->setSpacing(2);
    for (QWidget *tool : {m_add, m_edit, m_delete, m_import, m_export})
        row->addWidget(tool);
    row->addStretch(1);
    row->addWidget(m_count);
    return row;
}

void AddressBookView::connectList()
{
    connect(&m_pane, &AddressBookPane::filteredChanged, this, &AddressBookView::refreshList);
    connect(m_search, &SearchField::listRequested, m_list, &AddressList::enter);
    connect(m_list, &AddressList::searchRequested, this, &AddressBookView::focusSearch);
    connect(m_list, &QListView::doubleClicked, this, &AddressBookView::fill);
    // The key may be meant for the search; a click on the button is meant.
    connect(m_list, &AddressList::removeRequested, this, [this] { removeSelected(&AddressBook::askAndRemove); });
    connect(m_list, &AddressList::undoRequested, m_undo, &QPushButton::click); // undo() checks for a deletion
}

/// Return fills the label from here; it must not reach the form, which would take its next step.
void AddressBookView::keyPressEvent(QKeyEvent *event)
{
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    const bool plain = (event->modifiers() & ~Qt::KeypadModifier) == 0; // excludes the Buy shortcut
    if (!isReturn || !plain)
        QWidget::keyPressEvent(event);
    else if (!event->isAutoRepeat())
        fillByReturn();
}

/// From the search, fills only an unambiguous address: the chosen address, or the only match.
void AddressBookView::fillByReturn()
{
    const bool searching = m_search->hasFocus();
    if (!searching && !m_list->hasFocus())
        return;
    const QList<int> &found = m_pane.filtered();
    if (searching && !m_pane.selected()) {
        if (found.size() != 1) {
            m_list->enter();
            return;
        }
        m_pane.selection = m_book.contacts()[found.first()].id;
    }
    fill();
    if (searching)
        m_search->selectAll(); // the next key begins another search
}

void AddressBookView::fill()
{
    const std::optional<PostalContact> contact = m_pane.selected();
    if (!contact)
        return;
    m_pane.choose(*contact);
    emit filled();
}

void AddressBookView::addNew()
{
    openSheet(AddressEditSheet::Purpose::create, {});
}

void AddressBookView::editSelected()
{
    if (const std::optional<PostalContact> contact = m_pane.selected())
        openSheet(AddressEditSheet::Purpose::edit, *contact);
}

void AddressBookView::openSheet(AddressEditSheet::Purpose purpose, const PostalContact &contact)
{
    auto *sheet = new AddressEditSheet(m_app.platform.clock, m_book, purpose, contact, window());
    connect(sheet, &QDialog::accepted, this, [this, id = contact.id] { choose(id); });
    sheet->open();
}

/// Chooses an address of the book; clears a search that does not match it.
void AddressBookView::choose(const QUuid &id)
{
    m_pane.selection = id;
    if (!m_pane.selected())
        m_pane.query = QString();
    m_pane.selection = id;
}

void AddressBookView::removeSelected(Task<> (AddressBook::*removal)(PostalContact))
{
    const std::optional<PostalContact> contact = m_pane.selected();
    if (contact && !m_book.importing)
        spawn([&book = m_book, contact, removal] { return (book.*removal)(*contact); });
}

void AddressBookView::undo()
{
    if (!m_book.canUndo())
        return;
    const QUuid former = m_book.changes.value().last().former.id;
    spawn([self = QPointer(this), &book = m_book, former]() -> Task<> { // its window may be closed meanwhile
        co_await book.undo();
        if (self)
            self->choose(former);
    });
}

void AddressBookView::refreshList()
{
    m_list->refresh();
    refresh();
}

void AddressBookView::refresh()
{
    m_list->refreshSelection();
    showPage();
    refreshButtons();
    refreshMessage();
}

void AddressBookView::refreshButtons()
{
    const bool idle = !m_book.importing, chosen = m_pane.selected().has_value();
    enable(m_fill, chosen, m_search);
    enable(m_add, idle, m_search);
    enable(m_edit, idle && chosen, m_search);
    enable(m_delete, idle && chosen, m_search);
    enable(m_import, idle, m_search);
    enable(m_export, !m_book.exporting && !m_book.contacts().isEmpty(), m_search);
    for (Button *button : m_empty->findChildren<Button *>())
        enable(button, idle, m_search);
    m_bar->setBusy(!idle || m_book.exporting);
    for (const auto &[link, shown] : {std::pair(m_cancel, !idle), std::pair(m_undo, m_book.canUndo())}) {
        if (!shown && link->hasFocus())
            m_search->setFocus();
        link->setVisible(shown);
    }
}

void AddressBookView::showPage()
{
    const bool loaded = m_book.loaded;
    const bool empty = loaded && m_book.contacts().isEmpty(), nothing = loaded && m_pane.filtered().isEmpty();
    m_nothing->set(u"ui_search"_s, breakable(u"No address matches “%1”"_s.arg(trimBlanks(m_pane.query)), FontRole::body,
                                             narrowestText));
    m_unreadable->set(u"ui_error"_s, breakable(m_book.unreadable, FontRole::body, narrowestText));
    const bool failed = !loaded && !m_book.unreadable.value().isEmpty();
    if ((nothing || failed) && m_list->hasFocus())
        m_search->setFocus();
    m_pages->setCurrentWidget(failed    ? m_unreadable
                              : empty   ? m_empty
                              : nothing ? static_cast<QWidget *>(m_nothing)
                                        : m_list);
    const qsizetype count = m_book.contacts().size();
    const QString all = QString::number(count) + (count == 1 ? u" address"_s : u" addresses"_s);
    const bool isSearching = !trimBlanks(m_pane.query).isEmpty();
    m_count->setText(!loaded       ? QString()
                     : isSearching ? u"%1 of %2"_s.arg(QString::number(m_pane.filtered().size()), all)
                                   : all);
}

/// Omits a status that is only the number of addresses, which is shown beside the tools.
void AddressBookView::refreshMessage()
{
    const QString message = m_book.statusKind == StatusKind::none ? QString() : m_book.status.value();
    if (message == m_message->accessibleName())
        return;
    m_message->setText(breakable(message, FontRole::caption, narrowestText));
    m_message->setAccessibleName(message);
    m_message->setVisible(!message.isEmpty());
    if (!message.isEmpty() && isVisible() && !m_book.importing) // do not announce every step of an import
        announce(m_message);
}

} // namespace parcelory

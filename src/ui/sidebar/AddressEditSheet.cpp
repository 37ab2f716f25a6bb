#include "ui/sidebar/AddressEditSheet.h"

#include "app/addressbook/AddressBook.h"
#include "core/PostalContact.h"
#include "core/Task.h"
#include "core/Text.h"
#include "core/ports/Clock.h"
#include "ui/parts/Accessibility.h"
#include "ui/parts/Button.h"
#include "ui/parts/Dialog.h"
#include "ui/parts/FormSection.h"
#include "ui/parts/Notice.h"
#include "ui/theme/Tokens.h"

#include <QPointer>
#include <QVBoxLayout>

namespace parcelory {
using namespace Qt::StringLiterals;

AddressEditSheet::AddressEditSheet(Clock &clock, AddressBook &book, Purpose purpose, const PostalContact &contact,
                                   QWidget *parent)
    : Dialog(clock, purpose == Purpose::edit ? u"Edit Address"_s : u"New Address"_s, u"ui_contacts"_s,
             &Tokens::accentText, 600, parent),
      m_book(book), m_contact(contact), m_failure(new Notice(u"ui_warning"_s, &Tokens::warn))
{
    body()->addLayout(makeRows());
    body()->addWidget(m_failure);
    addButton(u"Cancel"_s, Rejected, Button::Kind::standard);
    m_save = addButton(u"Save"_s, Accepted, Button::Kind::solid);
    refresh();
    m_first->setFocus();
}

QLayout *AddressEditSheet::makeRows()
{
    using C = PostalContact;
    auto *rows = new QVBoxLayout;
    rows->setSpacing(5);
    const auto addRow = [rows](const QString &label) {
        auto *row = new FormRow(label);
        rows->addWidget(row);
        return row;
    };
    m_first = field(u"Name"_s, &C::name);
    addRow(u"Name"_s)->add(m_first, 1);
    addRow(u"Company"_s)->add(field(u"Company"_s, &C::company), 1);
    addRow(u"Street"_s)
        ->add(field(u"Street"_s, &C::street1), 5)
        ->say(u"Apt / Suite"_s)
        ->add(field(u"Apt / Suite"_s, &C::street2), 3);
    addRow(u"City"_s)
        ->add(field(u"City"_s, &C::city), 1)
        ->say(u"State"_s)
        ->add(field(u"State"_s, &C::state, 60))
        ->say(u"ZIP"_s)
        ->add(field(u"ZIP"_s, &C::zip, 92));
    LineEdit *country = field(u"Country"_s, &C::country, 160);
    country->setPlaceholderText(u"US"_s);
    addRow(u"Country"_s)->add(country)->say(u"Label (home/work)"_s)->add(field(u"Label (home/work)"_s, &C::label), 1);
    addRow(u"Phone"_s)->add(field(u"Phone"_s, &C::phone, 160))->say(u"Email"_s)->add(field(u"Email"_s, &C::email), 1);
    return rows;
}

LineEdit *AddressEditSheet::field(const QString &name, QString PostalContact::*member, int width)
{
    auto *made = new LineEdit(name, width);
    made->setText(m_contact.*member);
    made->setCursorPosition(0);
    connect(made, &QLineEdit::textEdited, this, [this, member](const QString &typed) {
        m_contact.*member = trimBlanks(typed);
        refresh();
    });
    return made;
}

void AddressEditSheet::refresh()
{
    const bool filled = !(m_contact.name + m_contact.company + m_contact.street1).isEmpty();
    enable(m_save, filled && !m_saving, m_first);
    for (LineEdit *field : findChildren<LineEdit *>())
        field->setReadOnly(m_saving);
}

void AddressEditSheet::done(int result)
{
    if (m_saving) // the save may fail, and the sheet holds the only copy of what was typed
        return;
    if (result != Accepted)
        Dialog::done(result);
    else
        save();
}

void AddressEditSheet::save()
{
    m_saving = true;
    m_failure->setText({});
    refresh();
    spawn([self = QPointer(this), &book = m_book, contact = m_contact]() -> Task<> {
        const bool saved = co_await book.save(contact);
        if (self)
            self->finishSaving(saved);
    });
}

void AddressEditSheet::finishSaving(bool saved)
{
    m_saving = false;
    if (saved) {
        Dialog::done(Accepted);
        return;
    }
    m_failure->setText(m_book.status);
    announce(m_failure);
    refresh();
    fitHeight();
}

} // namespace parcelory

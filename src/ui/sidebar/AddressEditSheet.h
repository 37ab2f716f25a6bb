#pragma once

#include "app/addressbook/AddressBook.h"
#include "ui/parts/Button.h"
#include "ui/parts/Dialog.h"
#include "ui/parts/LineEdit.h"
#include "ui/parts/Notice.h"

namespace parcelory {

/// "Edit Address" or "New Address". Accepted once the book has stored the contact; if that fails, the sheet stays open
/// and shows why.
class AddressEditSheet : public Dialog {
    Q_OBJECT
public:
    enum class Purpose { edit, create };

    AddressEditSheet(Clock &clock, AddressBook &book, Purpose purpose, const PostalContact &contact, QWidget *parent);

    void done(int result) override;

private:
    QLayout *makeRows();
    LineEdit *field(const QString &name, QString PostalContact::*member, int width = 0);
    void refresh();
    void save();
    void finishSaving(bool saved);

    AddressBook &m_book;
    PostalContact m_contact; ///< as typed so far, trimmed
    LineEdit *m_first = nullptr;
    Notice *m_failure;
    Button *m_save = nullptr;
    bool m_saving = false;
};

} // namespace parcelory

#pragma once

#include "core/PostalContact.h"
#include "shell/ui/parts/Dialog.h"
#include "shell/ui/parts/Field.h"

namespace parcelory {

/// "Edit Address" or "New Address". Ends accepted when the contact is to be saved.
class AddressEditSheet : public Dialog {
    Q_OBJECT
public:
    enum class Purpose { edit, create };

    AddressEditSheet(Clock &clock, Purpose purpose, const PostalContact &contact, QWidget *parent);

    /// As typed so far, without the blanks around it.
    PostalContact contact() const { return m_contact; }

private:
    Field *field(const QString &name, QString PostalContact::*member, int width = 0);
    void refresh();

    PostalContact m_contact;
    Button *m_save;
};

} // namespace parcelory

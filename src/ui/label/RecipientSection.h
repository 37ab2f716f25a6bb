#pragma once

#include "app/addressbook/AddressBook.h"
#include "app/label/LabelScreen.h"
#include "ui/parts/Button.h"
#include "ui/parts/FormSection.h"
#include "ui/parts/LineEdit.h"
#include "ui/parts/Notice.h"
#include "ui/parts/RefreshScheduler.h"
#include "ui/parts/TextLabel.h"

#include <optional>

class QCheckBox;

namespace parcelory {

/// "To": the recipient, the carrier's verdict on the address, and saving the recipient to the address book.
class RecipientSection : public FormSection {
    Q_OBJECT
public:
    RecipientSection(AppState &app, AddressBook &book, LabelScreen &screen, QWidget *parent = nullptr);

    LineEdit *field(DraftField which) const; ///< null if the field is in another section

signals:
    void validateRequested();

private:
    void addKeeping();
    bool takePaste(const QString &text);
    void refresh();
    void refreshKeeping();

    AppState &m_app;
    AddressBook &m_book;
    LabelScreen &m_screen;
    LineEdit *m_name, *m_company, *m_street, *m_suite, *m_city, *m_state, *m_zip, *m_country, *m_phone, *m_email;
    Button *m_validate;
    TextLabel *m_status;
    FormRow *m_abroad;
    Notice *m_marker;
    QCheckBox *m_keep;
    Button *m_save;
    Notice *m_outcome;
    std::optional<KeptRecipient> m_shownKept;
    RefreshScheduler m_refresh;
};

} // namespace parcelory

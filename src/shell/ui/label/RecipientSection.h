#pragma once

#include "compose/LabelScreen.h"
#include "shell/ui/parts/Button.h"
#include "shell/ui/parts/Field.h"
#include "shell/ui/parts/Follower.h"
#include "shell/ui/parts/FormSection.h"
#include "shell/ui/parts/Notice.h"

namespace parcelory {

/// "To": the recipient, and what the carrier says of the address.
class RecipientSection : public FormSection {
    Q_OBJECT
public:
    RecipientSection(AppState &app, LabelScreen &screen, QWidget *parent = nullptr);

    Field *field(DraftField which) const; ///< null when it stands elsewhere

signals:
    void validateRequested();

private:
    void refresh();

    LabelScreen &m_screen;
    Field *m_name, *m_company, *m_street, *m_suite, *m_city, *m_state, *m_zip, *m_country, *m_phone, *m_email;
    Button *m_validate;
    TextLabel *m_status;
    FormRow *m_abroad;
    Notice *m_marker;
    Follower m_follower;
};

} // namespace parcelory

#pragma once

#include "compose/LabelScreen.h"
#include "shell/ui/parts/Field.h"
#include "shell/ui/parts/Follower.h"
#include "shell/ui/parts/FormSection.h"
#include "shell/ui/parts/Notice.h"

namespace parcelory {

/// "From": which of the desk's addresses the parcel leaves from.
class SenderSection : public FormSection {
    Q_OBJECT
public:
    SenderSection(AppState &app, LabelScreen &screen, QWidget *parent = nullptr);

private:
    void refresh();

    AppState &m_app;
    LabelScreen &m_screen;
    Choice *m_profile;
    ElidedLabel *m_address;
    FormRow *m_missing;
    Notice *m_hint;
    Follower m_follower;
};

} // namespace parcelory

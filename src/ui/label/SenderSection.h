#pragma once

#include "app/label/LabelScreen.h"
#include "ui/parts/Field.h"
#include "ui/parts/Follower.h"
#include "ui/parts/FormSection.h"
#include "ui/parts/Notice.h"

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

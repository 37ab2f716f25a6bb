#pragma once

#include "app/label/LabelScreen.h"
#include "ui/parts/ComboBox.h"
#include "ui/parts/FormSection.h"
#include "ui/parts/Notice.h"
#include "ui/parts/RefreshScheduler.h"
#include "ui/parts/TextLabel.h"

namespace parcelory {

/// "From": the sender profile whose address the parcel is sent from.
class SenderSection : public FormSection {
    Q_OBJECT
public:
    SenderSection(AppState &app, LabelScreen &screen, QWidget *parent = nullptr);

private:
    void refresh();

    AppState &m_app;
    LabelScreen &m_screen;
    ComboBox *m_profile;
    ElidedLabel *m_address;
    FormRow *m_missing;
    Notice *m_hint;
    RefreshScheduler m_refresh;
};

} // namespace parcelory

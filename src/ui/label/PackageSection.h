#pragma once

#include "app/label/LabelScreen.h"
#include "ui/label/MailpiecePicker.h"
#include "ui/parts/Button.h"
#include "ui/parts/FormSection.h"
#include "ui/parts/LineEdit.h"
#include "ui/parts/Notice.h"
#include "ui/parts/RefreshScheduler.h"
#include "ui/parts/SegmentedControl.h"
#include "ui/parts/TextLabel.h"

namespace parcelory {

/// "Package": carrier, packaging, weight and size.
class PackageSection : public FormSection {
    Q_OBJECT
public:
    PackageSection(AppState &app, LabelScreen &screen, QWidget *parent = nullptr);

    LineEdit *field(DraftField which) const; ///< null if the field is in another section

private:
    void refresh();
    void refreshScale();

    AppState &m_app;
    LabelScreen &m_screen;
    SegmentedControl *m_carrier;
    LineEdit *m_pounds, *m_ounces;
    LineEdit *m_length, *m_width, *m_height;
    FormRow *m_size;
    TextLabel *m_sizeHint;
    Button *m_weigh;
    TextLabel *m_reading, *m_settling;
    Notice *m_rule; ///< what the shipping rules say of weight and size
    RefreshScheduler m_refresh;
};

} // namespace parcelory

#pragma once

#include "app/label/LabelScreen.h"
#include "ui/label/MailpieceChoice.h"
#include "ui/parts/Button.h"
#include "ui/parts/FormSection.h"
#include "ui/parts/Segments.h"

namespace parcelory {

/// "Package": carrier, packaging, weight and size.
class PackageSection : public FormSection {
    Q_OBJECT
public:
    PackageSection(AppState &app, LabelScreen &screen, QWidget *parent = nullptr);

    Field *field(DraftField which) const; ///< null when it stands elsewhere

private:
    void refresh();
    void refreshScale();

    AppState &m_app;
    LabelScreen &m_screen;
    Segments *m_carrier;
    Field *m_pounds, *m_ounces;
    Field *m_length, *m_width, *m_height;
    FormRow *m_size;
    TextLabel *m_sizeHint;
    Button *m_weigh;
    TextLabel *m_reading, *m_settling;
    Follower m_follower;
    Follower m_scale;
};

} // namespace parcelory

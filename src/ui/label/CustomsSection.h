#pragma once

#include "app/label/LabelScreen.h"
#include "ui/parts/Field.h"
#include "ui/parts/Follower.h"
#include "ui/parts/FormSection.h"

namespace parcelory {

/// The customs declaration of a parcel that leaves the country.
class CustomsSection : public FormSection {
    Q_OBJECT
public:
    CustomsSection(AppState &app, LabelScreen &screen, QWidget *parent = nullptr);

    Field *field(DraftField which) const; ///< null when it stands elsewhere

private:
    void refresh();

    LabelScreen &m_screen;
    Choice *m_contents;
    Field *m_quantity, *m_value;
    TextLabel *m_hint;
    Follower m_follower;
};

} // namespace parcelory

#pragma once

#include "app/label/LabelScreen.h"
#include "ui/parts/Button.h"
#include "ui/parts/ComboBox.h"
#include "ui/parts/FormSection.h"
#include "ui/parts/LineEdit.h"
#include "ui/parts/RefreshScheduler.h"
#include "ui/parts/TextLabel.h"

namespace parcelory {

/// The customs declaration of a parcel that leaves the country.
class CustomsSection : public FormSection {
    Q_OBJECT
public:
    explicit CustomsSection(LabelScreen &screen, QWidget *parent = nullptr);

    LineEdit *field(DraftField which) const; ///< null if the field is in another section

private:
    void refresh();

    LabelScreen &m_screen;
    ComboBox *m_contents;
    LineEdit *m_quantity, *m_value;
    TextLabel *m_hint;
    Button *m_print;
    RefreshScheduler m_refresh;
};

} // namespace parcelory

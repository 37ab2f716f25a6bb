#pragma once

#include "app/label/LabelScreen.h"
#include "ui/parts/Button.h"
#include "ui/parts/ComboBox.h"
#include "ui/parts/DateField.h"
#include "ui/parts/FormSection.h"
#include "ui/parts/LineEdit.h"
#include "ui/parts/Notice.h"
#include "ui/parts/RefreshScheduler.h"
#include "ui/parts/TextLabel.h"

#include <QCheckBox>

namespace parcelory {

/// "Service": the class, the ship date and, for FedEx, the residential flag.
class ServiceSection : public FormSection {
    Q_OBJECT
public:
    ServiceSection(AppState &app, LabelScreen &screen, QWidget *parent = nullptr);

private:
    void refresh();

    AppState &m_app;
    LabelScreen &m_screen;
    ComboBox *m_class;
    DateField *m_date;
    FormRow *m_residentialRow;
    QCheckBox *m_residential;
    Notice *m_rule;
    RefreshScheduler m_refresh;
};

/// "Extras": service option, insurance, reference and description.
class ExtrasSection : public FormSection {
    Q_OBJECT
public:
    explicit ExtrasSection(LabelScreen &screen, QWidget *parent = nullptr);

    LineEdit *field(DraftField which) const
    {
        return which == DraftField::insurance ? m_insurance : which == DraftField::reference ? m_reference : nullptr;
    }

private:
    void refresh();

    LabelScreen &m_screen;
    ComboBox *m_option;
    LineEdit *m_insurance, *m_reference;
    FormRow *m_offerRow;
    Button *m_offer; ///< insures the parcel for its invoice
    TextLabel *m_covered;
    Notice *m_warning;
    RefreshScheduler m_refresh;
};

} // namespace parcelory

#pragma once

#include "app/settings/SettingsScreen.h"
#include "ui/parts/BusyBar.h"
#include "ui/parts/Button.h"
#include "ui/parts/ComboBox.h"
#include "ui/parts/FormSection.h"
#include "ui/parts/Notice.h"
#include "ui/parts/RefreshScheduler.h"
#include "ui/parts/TextLabel.h"
#include "ui/settings/SettingsPage.h"

namespace parcelory {

class LabelThumbnail;

/// The print queues for labels and for documents, and the scale.
class PrintersPage : public SettingsPage {
    Q_OBJECT
public:
    PrintersPage(AppState &app, SettingsScreen &settings, QWidget *parent = nullptr);

protected:
    void showEvent(QShowEvent *event) override;

private:
    void appendLabels();
    void appendDocuments();
    void appendScale();
    void refreshScale();
    void refresh();

    AppState &m_app;
    SettingsScreen &m_settings;
    BusyBar *m_busy;
    ComboBox *m_label, *m_document;
    Button *m_test, *m_refreshButton;
    Notice *m_noZebra, *m_outcome;
    Button *m_undo;
    LabelThumbnail *m_testLabel;
    FormRow *m_noZebraRow, *m_outcomeRow;
    TextLabel *m_scaleName, *m_scaleState, *m_weight;
    Notice *m_settling;
    RefreshScheduler m_refresh;
};

} // namespace parcelory

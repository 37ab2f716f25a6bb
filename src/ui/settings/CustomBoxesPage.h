#pragma once

#include "app/settings/SettingsScreen.h"
#include "ui/parts/PanelFrame.h"
#include "ui/parts/RefreshScheduler.h"
#include "ui/settings/RowList.h"
#include "ui/settings/SettingsPage.h"

namespace parcelory {

class BoxRow;

/// The cartons that the desk ships in.
class CustomBoxesPage : public SettingsPage {
    Q_OBJECT
public:
    CustomBoxesPage(AppState &app, SettingsScreen &settings, QWidget *parent = nullptr);

private:
    PanelFrame *makeCard();
    void refresh();
    void addBox();

    AppState &m_app;
    SettingsScreen &m_settings;
    PanelFrame *m_card;
    RowList<QUuid, BoxRow> m_rows;
    RefreshScheduler m_refresh;
};

} // namespace parcelory

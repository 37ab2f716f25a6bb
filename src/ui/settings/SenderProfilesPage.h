#pragma once

#include "ui/parts/RefreshScheduler.h"
#include "ui/settings/ProfileRow.h"
#include "ui/settings/RowList.h"
#include "ui/settings/SettingsPage.h"

namespace parcelory {

/// The desk's return addresses, and the fallbacks for their blank fields.
class SenderProfilesPage : public SettingsPage {
    Q_OBJECT
public:
    SenderProfilesPage(AppState &app, SettingsScreen &settings, QWidget *parent = nullptr);

private:
    void appendFallbacks();
    void refresh();
    void addProfile();

    AppState &m_app;
    SettingsScreen &m_settings;
    RowList<QUuid, ProfileRow> m_rows;
    RefreshScheduler m_refresh;
};

} // namespace parcelory

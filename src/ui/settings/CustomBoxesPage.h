#pragma once

#include "app/settings/SettingsScreen.h"
#include "ui/parts/Follower.h"
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
    Surface *makeCard();
    void refresh();
    void addBox();

    AppState &m_app;
    SettingsScreen &m_settings;
    Surface *m_card;
    RowList<QUuid, BoxRow> m_rows;
    Follower m_follower;
};

} // namespace parcelory

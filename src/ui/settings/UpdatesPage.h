#pragma once

#include "app/update/UpdateChecker.h"
#include "ui/parts/Button.h"
#include "ui/parts/RefreshScheduler.h"
#include "ui/parts/TextLabel.h"
#include "ui/settings/SettingsPage.h"

namespace parcelory {

/// Settings ▸ Updates: the installed version and the check for a newer version.
class UpdatesPage : public SettingsPage {
public:
    explicit UpdatesPage(UpdateChecker &updates, QWidget *parent = nullptr);

private:
    void refresh();

    UpdateChecker &m_updates;
    Button *m_check;
    TextLabel *m_status;
    RefreshScheduler m_refresh;
};

} // namespace parcelory

#pragma once

#include "app/AppState.h"
#include "ui/parts/Button.h"
#include "ui/parts/TextLabel.h"
#include "ui/settings/SettingsPage.h"

namespace parcelory {

/// Settings ▸ Contacts Diagnostics: tests the access to the system's contacts step by step.
class ContactsPage : public SettingsPage {
public:
    explicit ContactsPage(AppState &app, QWidget *parent = nullptr);

private:
    Task<> run();

    AppState &m_app;
    Button *m_run;
    TextLabel *m_report;
};

} // namespace parcelory

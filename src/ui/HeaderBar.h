#pragma once

#include "app/label/LabelScreen.h"
#include "app/settings/KeysScreen.h"
#include "ui/parts/Badge.h"
#include "ui/parts/PanelFrame.h"
#include "ui/parts/RefreshScheduler.h"
#include "ui/parts/Separator.h"
#include "ui/parts/TextLabel.h"

class QTabBar;

namespace parcelory {

class Button;

/// The window's head: name, tabs, mode, the day's SCAN form, who is signed in and the way out.
class HeaderBar : public PanelFrame {
    Q_OBJECT
public:
    HeaderBar(AppState &app, LabelScreen &label, KeysScreen &keys, QWidget *parent = nullptr);

    /// Asks for the form of the labels that the chosen return address has sent today.
    static void createScanForm(AppState &app, LabelScreen &label);

private:
    void refresh();

    AppState &m_app;
    LabelScreen &m_label;
    KeysScreen &m_keys;
    QTabBar *m_tabs;
    Badge *m_mode;
    ElidedLabel *m_scanStatus;
    Button *m_scanForm;
    Separator *m_userSeparator;
    ElidedLabel *m_user;
    QWidget *m_signOut;
    RefreshScheduler m_refresh;
};

} // namespace parcelory

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

/// The window's header: name, tabs, mode, today's SCAN form, the signed-in user and Sign Out.
class HeaderBar : public PanelFrame {
    Q_OBJECT
public:
    HeaderBar(AppState &app, LabelScreen &label, KeysScreen &keys, QWidget *parent = nullptr);

    /// Creates the SCAN form for today's labels of the chosen return address.
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

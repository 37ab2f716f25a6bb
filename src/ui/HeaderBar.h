#pragma once

#include "app/Screens.h"
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
    HeaderBar(AppState &app, Screens &screens, QWidget *parent = nullptr);

protected:
    void showEvent(QShowEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void refresh();
    void placeName();
    void showOpenItems(int count);

    AppState &m_app;
    Screens &m_screens;
    TextLabel *m_name;
    QTabBar *m_tabs;
    int m_openItems = 0; ///< as the tab shows it
    Badge *m_mode;
    ElidedLabel *m_scanStatus;
    Button *m_scanForm;
    Separator *m_userSeparator;
    ElidedLabel *m_user;
    QWidget *m_signOut;
    RefreshScheduler m_refresh;
};

} // namespace parcelory

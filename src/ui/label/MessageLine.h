#pragma once

#include "app/label/LabelScreen.h"
#include "ui/parts/Button.h"
#include "ui/parts/IconView.h"
#include "ui/parts/PanelFrame.h"
#include "ui/parts/RefreshScheduler.h"
#include "ui/parts/TextLabel.h"

namespace parcelory {

/// The line under the tabs: the banner or the next step. Always visible, so that the layout does not jump.
class MessageLine : public PanelFrame {
    Q_OBJECT
public:
    explicit MessageLine(LabelScreen &screen, QWidget *parent = nullptr);

    /// The state of the sidebar button.
    void setSidebarShown(bool shown) { m_sidebar->setChecked(shown); }

signals:
    void clearRequested();
    void sidebarToggled();
    void offerTaken();

private:
    void refresh();

    LabelScreen &m_screen;
    IconView *m_icon;
    TextLabel *m_text;
    Button *m_offer;
    Button *m_sidebar;
    QString m_said;
    RefreshScheduler m_refresh;
};

} // namespace parcelory

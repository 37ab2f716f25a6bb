#pragma once

#include "app/Screens.h"
#include "ui/parts/Badge.h"
#include "ui/parts/Button.h"
#include "ui/parts/IconView.h"
#include "ui/parts/PanelFrame.h"
#include "ui/parts/RefreshScheduler.h"
#include "ui/parts/TextLabel.h"

namespace parcelory {

/// The line at the bottom of the window: the last label or the printer's problem, the last scan, the last change that
/// can be taken back, and the active API key. Reading an invoice can be canceled here, on every tab.
class StatusStrip : public PanelFrame {
    Q_OBJECT
public:
    StatusStrip(AppState &app, Screens &screens, QWidget *parent = nullptr);

signals:
    /// The clerk clicked the message that no key is active.
    void keysRequested();

protected:
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    void refresh();
    void refreshPrinter();
    void refreshChange();

    AppState &m_app;
    Screens &m_screens;
    KeysScreen &m_keys;
    TextLabel *m_lastTitle;
    ElidedLabel *m_last, *m_scan, *m_change;
    Button *m_cancelScan, *m_undo;
    IconView *m_printerIcon;
    ElidedLabel *m_printer;
    IconView *m_scanIcon, *m_warning;
    Badge *m_mode;
    TextLabel *m_key;
    RefreshScheduler m_refresh;
};

} // namespace parcelory

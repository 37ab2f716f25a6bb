#pragma once

#include "app/AppState.h"
#include "app/settings/KeysScreen.h"
#include "ui/parts/Badge.h"
#include "ui/parts/IconView.h"
#include "ui/parts/PanelFrame.h"
#include "ui/parts/RefreshScheduler.h"
#include "ui/parts/TextLabel.h"

namespace parcelory {

/// The line at the window's foot: the last label or what holds it up in the printer, what the scanner heard, and which
/// key is active.
class StatusStrip : public PanelFrame {
    Q_OBJECT
public:
    StatusStrip(AppState &app, KeysScreen &keys, QWidget *parent = nullptr);

signals:
    /// The line that no key is active was clicked.
    void keysRequested();

protected:
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    void refresh();
    void refreshPrinter();

    AppState &m_app;
    KeysScreen &m_keys;
    TextLabel *m_lastTitle;
    ElidedLabel *m_last, *m_scan;
    IconView *m_printerIcon;
    ElidedLabel *m_printer;
    IconView *m_scanIcon, *m_warning;
    Badge *m_mode;
    TextLabel *m_key;
    RefreshScheduler m_refresh;
};

} // namespace parcelory

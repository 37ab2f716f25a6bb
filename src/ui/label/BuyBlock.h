#pragma once

#include "app/label/LabelScreen.h"
#include "app/settings/KeysScreen.h"
#include "app/settings/SettingsScreen.h"
#include "ui/parts/Badge.h"
#include "ui/parts/Button.h"
#include "ui/parts/Notice.h"
#include "ui/parts/PanelFrame.h"
#include "ui/parts/RefreshScheduler.h"
#include "ui/parts/TextLabel.h"

class QGridLayout;

namespace parcelory {

/// The summary of what is about to be bought, and the button that buys it.
class BuyBlock : public PanelFrame {
    Q_OBJECT
public:
    BuyBlock(LabelScreen &screen, KeysScreen &keys, SettingsScreen &settings, QWidget *parent = nullptr);

signals:
    void buyRequested();

private:
    TextLabel *addLine(const QString &name);
    void refresh();
    void refreshSecondLabel(bool hasRate);
    void refreshMode();
    QString printerText() const;

    LabelScreen &m_screen;
    KeysScreen &m_keys;
    SettingsScreen &m_settings;
    TextLabel *m_none;
    QWidget *m_summary;
    QGridLayout *m_lines;
    ElidedLabel *m_service;
    TextLabel *m_transit, *m_price;
    TextLabel *m_to, *m_package, *m_extras, *m_printer, *m_uninsured;
    Notice *m_cut;    ///< warns that a text is too long for the label
    Notice *m_second; ///< warns of a second label for the parcel, and asks what the spend guard asks
    Button *m_buy;
    Badge *m_mode;
    TextLabel *m_consequence;
    RefreshScheduler m_refresh;
    QPropertyNotifier m_busyNow; ///< disables the button in the same event that starts a purchase
};

} // namespace parcelory

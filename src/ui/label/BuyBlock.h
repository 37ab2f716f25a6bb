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

#include <utility>
#include <vector>

class QGridLayout;

namespace parcelory {

/// The summary of what is about to be bought, and the button that buys it.
class BuyBlock : public PanelFrame {
    Q_OBJECT
public:
    static constexpr int lineTotal = 4; ///< recipient, package, extras, printer

    BuyBlock(LabelScreen &screen, KeysScreen &keys, SettingsScreen &settings, QWidget *parent = nullptr);

    /// Shows only the first lines of the summary, from 1 (the recipient) to lineTotal; its tool tip has the others. The
    /// price, the warnings and the button always stay.
    void setLines(int shown);

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
    std::vector<std::pair<TextLabel *, TextLabel *>> m_named; ///< the lines and their names, from the top
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

#pragma once

#include "app/settings/KeysScreen.h"
#include "ui/parts/Badge.h"
#include "ui/parts/Button.h"
#include "ui/parts/IconView.h"
#include "ui/parts/LineEdit.h"
#include "ui/parts/Notice.h"
#include "ui/parts/PanelFrame.h"
#include "ui/parts/RefreshScheduler.h"
#include "ui/parts/TextLabel.h"
#include "ui/settings/RowList.h"
#include "ui/settings/SettingsPage.h"

#include <QButtonGroup>

namespace parcelory {

class KeyRowView;
class TrackingWatch;

/// The carrier's API keys: choose the active key, add and remove keys.
class ApiKeysPage : public SettingsPage {
    Q_OBJECT
public:
    explicit ApiKeysPage(KeysScreen &keys, TrackingWatch &tracking, QWidget *parent = nullptr);

private:
    void fillStatus();
    void appendEntry();
    void refresh();
    void refreshStatus();
    void refreshEntry();
    void offerRemoved();
    void add();
    void finishAdding();

    KeysScreen &m_keys;
    PanelFrame *m_status, *m_list;
    Badge *m_mode;
    IconView *m_warning;
    TextLabel *m_text;
    LineEdit *m_name, *m_token;
    Button *m_add;
    Notice *m_refusal;
    TextLabel *m_note;
    bool m_adding = false;
    QString m_offered; ///< the name that was last filled in for Undo
    QButtonGroup m_choice;
    RowList<QString, KeyRowView> m_rows;
    RefreshScheduler m_refresh;
};

} // namespace parcelory

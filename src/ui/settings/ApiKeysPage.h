#pragma once

#include "app/settings/KeysScreen.h"
#include "ui/parts/Badge.h"
#include "ui/parts/Button.h"
#include "ui/parts/Field.h"
#include "ui/parts/Follower.h"
#include "ui/parts/Notice.h"
#include "ui/settings/RowList.h"
#include "ui/settings/SettingsPage.h"

#include <QButtonGroup>

namespace parcelory {

class KeyRowView;

/// The carrier's API keys: which one is active, and adding and removing them.
class ApiKeysPage : public SettingsPage {
    Q_OBJECT
public:
    explicit ApiKeysPage(KeysScreen &keys, QWidget *parent = nullptr);

private:
    void fillStatus();
    void appendEntry();
    void refresh();
    void refreshStatus();
    void refreshEntry();
    void add();
    void finishAdding();

    KeysScreen &m_keys;
    Surface *m_status, *m_list;
    Badge *m_mode;
    IconView *m_warning;
    TextLabel *m_text;
    Field *m_name, *m_token;
    Button *m_add;
    Notice *m_refusal;
    TextLabel *m_note;
    bool m_adding = false;
    QButtonGroup m_choice;
    RowList<QString, KeyRowView> m_rows;
    Follower m_follower;
};

} // namespace parcelory

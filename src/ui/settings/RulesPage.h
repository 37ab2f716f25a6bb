#pragma once

#include "app/settings/RulesScreen.h"
#include "ui/parts/RefreshScheduler.h"
#include "ui/settings/SettingsPage.h"

class QCheckBox;

namespace parcelory {

class IconView;
class LineEdit;

/// Settings ▸ Shipping Rules: where the rules come from, each rule with its switch, and the spend guard.
class RulesPage : public SettingsPage {
    Q_OBJECT
public:
    explicit RulesPage(RulesScreen &screen, QWidget *parent = nullptr);

private:
    struct Row {
        Rule rule;
        QCheckBox *box;
        TextLabel *text;
        TextLabel *age;
    };

    void appendFile();
    void appendGuard();
    QWidget *makeRow(const Rule &rule);
    void fillList();
    void refresh();

    RulesScreen &m_screen;
    TextLabel *m_count;
    PanelFrame *m_file = nullptr;
    IconView *m_icon;
    TextLabel *m_title, *m_origin, *m_message;
    QVBoxLayout *m_list = nullptr;
    QList<Row> m_rows;
    QList<Rule> m_listed;
    LineEdit *m_above;
    QList<QWidget *> m_guardParts; ///< enabled while the spend guard is on
    RefreshScheduler m_refresh;
};

} // namespace parcelory

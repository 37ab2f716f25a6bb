#pragma once

#include "app/logs/MasterLogScreen.h"
#include "ui/parts/Button.h"
#include "ui/parts/DateField.h"
#include "ui/parts/EmptyState.h"
#include "ui/parts/IconView.h"
#include "ui/parts/RefreshScheduler.h"
#include "ui/parts/SearchField.h"
#include "ui/parts/TextLabel.h"

class QStackedWidget;

namespace parcelory {

class LogFoot;
class MasterLogTable;
class RowTable;
class Toolbar;

/// The Master Log tab: the range of days, the account's labels, and their sum.
class MasterLogView : public QWidget {
    Q_OBJECT
public:
    MasterLogView(AppState &app, MasterLogScreen &screen, QWidget *parent = nullptr);

    RowTable *table() const;
    void focusSearch() { m_search->focusAll(); }
    void load();

protected:
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void fillBars();
    void placeActions();
    QWidget *makeFoot();
    void connectList();
    void refresh();
    void refreshRange();
    void refreshList();
    void refreshFoot();

    AppState &m_app;
    MasterLogScreen &m_screen;
    SearchField *m_search;
    TextLabel *m_count;
    DateField *m_from;
    DateField *m_to;
    Button *m_usual;
    Button *m_refreshButton;
    Button *m_copy;
    Button *m_track;
    Button *m_export;
    Toolbar *m_rangeBar;
    Toolbar *m_searchBar;
    QWidget *m_actions;      ///< the buttons for labels: in the first bar, or in the second
    int m_widthOfOneBar = 0; ///< that the range and the actions need
    MasterLogTable *m_table;
    EmptyState *m_empty;
    QStackedWidget *m_pages; ///< the table, or why it is empty
    LogFoot *m_foot;
    TextLabel *m_summary;
    TextLabel *m_note;
    IconView *m_messageIcon;
    ElidedLabel *m_message;
    QList<MasterEntry> m_listed; ///< the entries in the table
    RefreshScheduler m_refresh;
};

} // namespace parcelory

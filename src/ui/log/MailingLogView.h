#pragma once

#include "app/logs/MailingLogScreen.h"
#include "app/openitems/OpenItemsScreen.h"
#include "ui/parts/Button.h"
#include "ui/parts/EmptyState.h"
#include "ui/parts/Notice.h"
#include "ui/parts/RefreshScheduler.h"
#include "ui/parts/SearchField.h"
#include "ui/parts/TextLabel.h"

class QSplitter;
class QStackedWidget;

namespace parcelory {

class LogFoot;
class OpenItemsList;
class RowTable;
class ProgressBar;
class SegmentedControl;
class ShipmentDetails;
class ShipmentTable;

/// The My Mailing Log tab: search, list, the chosen shipment, and the last operation's result.
class MailingLogView : public QWidget {
    Q_OBJECT
public:
    MailingLogView(AppState &app, MailingLogScreen &screen, OpenItemsScreen &items, QWidget *parent = nullptr);

    void focusSearch() { (m_items.isShown ? m_itemSearch : m_search)->focusAll(); }
    std::optional<ShipmentRecord> selectedRecord() const { return m_screen.selectedRecord(); }
    RowTable *table() const;

protected:
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    QWidget *makeToolbar();
    QWidget *makeFoot();
    void connectList();
    void restoreLayout();
    void refreshList();
    void refreshTexts();
    void refresh();
    void refreshMode();
    void refreshFoot();
    void refreshMessage();

    AppState &m_app;
    MailingLogScreen &m_screen;
    OpenItemsScreen &m_items;
    SegmentedControl *m_segments; ///< all labels, or the open items
    SearchField *m_search;
    SearchField *m_itemSearch;
    ElidedLabel *m_count; ///< gives way in a narrow window
    Button *m_import;
    Button *m_export;
    ShipmentTable *m_table;
    EmptyState *m_empty;
    OpenItemsList *m_openItems;
    QStackedWidget *m_list; ///< the table, why it is empty, or the open items
    ShipmentDetails *m_details;
    QSplitter *m_splitter;
    LogFoot *m_foot;
    Notice *m_message;
    Button *m_undo;
    ProgressBar *m_progress; ///< the progress of an export or import
    Button *m_cancel;
    QString m_listed; ///< the search whose results the table shows
    bool m_showsFailure = false;
    RefreshScheduler m_refresh;
};

} // namespace parcelory

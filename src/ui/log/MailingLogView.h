#pragma once

#include "app/logs/MailingLogScreen.h"
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
class RowTable;
class ProgressBar;
class ShipmentDetails;
class ShipmentTable;

/// The My Mailing Log tab: search, list, the chosen shipment, and the last operation's result.
class MailingLogView : public QWidget {
    Q_OBJECT
public:
    MailingLogView(AppState &app, MailingLogScreen &screen, QWidget *parent = nullptr);

    void focusSearch() { m_search->focusAll(); }
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
    void refreshFoot();

    AppState &m_app;
    MailingLogScreen &m_screen;
    SearchField *m_search;
    TextLabel *m_count;
    Button *m_import;
    Button *m_export;
    ShipmentTable *m_table;
    EmptyState *m_empty;
    QStackedWidget *m_list; ///< the table, or why it is empty
    ShipmentDetails *m_details;
    QSplitter *m_splitter;
    LogFoot *m_foot;
    Notice *m_message;
    ProgressBar *m_progress; ///< the progress of an export or import
    Button *m_cancel;
    QString m_listed; ///< the search whose results the table shows
    bool m_showsFailure = false;
    RefreshScheduler m_refresh;
};

} // namespace parcelory

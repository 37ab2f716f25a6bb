#pragma once

#include "records/MailingLogScreen.h"
#include "shell/ui/parts/Follower.h"
#include "shell/ui/parts/Notice.h"
#include "shell/ui/parts/SearchField.h"

class QSplitter;
class QStackedWidget;

namespace parcelory {

class ShipmentDetails;
class ShipmentTable;

/// The My Mailing Log tab: search, list, the chosen shipment, and what the last operation came to.
class MailingLogView : public QWidget {
    Q_OBJECT
public:
    MailingLogView(AppState &app, MailingLogScreen &screen, QWidget *parent = nullptr);

    void focusSearch() { m_search->focusAll(); }
    std::optional<ShipmentRecord> selectedRecord() const { return m_screen.selectedRecord(); }

protected:
    void hideEvent(QHideEvent *event) override;

private:
    QWidget *makeMessageLine();
    void connectList();
    void restoreLayout();
    void refreshList();
    void refresh();

    AppState &m_app;
    MailingLogScreen &m_screen;
    SearchField *m_search;
    TextLabel *m_count;
    ShipmentTable *m_table;
    EmptyState *m_empty;
    QStackedWidget *m_list; ///< the table, or why it is empty
    ShipmentDetails *m_details;
    QSplitter *m_splitter;
    BusyBar *m_bar;
    Notice *m_message;
    QString m_listed; ///< the search that the rows in sight belong to
    Follower m_follower;
};

} // namespace parcelory

#pragma once

#include "app/openitems/OpenItemsScreen.h"
#include "ui/parts/EmptyState.h"

#include <QStackedWidget>

namespace parcelory {

class OpenItemsTable;

/// The open items in the place of the mailing log's table, or why the list is empty.
class OpenItemsList : public QStackedWidget {
    Q_OBJECT
public:
    OpenItemsList(OpenItemsScreen &items, MailingLogScreen &log, QWidget *parent = nullptr);

    OpenItemsTable *table() const { return m_table; }
    void refresh();

private:
    void refreshItems();
    std::optional<OpenItem> chosen() const;
    /// Runs an operation of the screen on the chosen item.
    void run(Task<> (OpenItemsScreen::*operation)(OpenItem item));

    OpenItemsScreen &m_items;
    MailingLogScreen &m_log;
    OpenItemsTable *m_table;
    EmptyState *m_empty;
};

} // namespace parcelory

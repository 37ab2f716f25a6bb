#pragma once

#include "ui/parts/BusyBar.h"
#include "ui/parts/Button.h"
#include "ui/parts/EmptyState.h"
#include "ui/parts/RefreshScheduler.h"
#include "ui/parts/SearchField.h"
#include "ui/parts/TextLabel.h"
#include "ui/sidebar/AddressEditSheet.h"
#include "ui/sidebar/AddressList.h"

class QStackedWidget;
class QVBoxLayout;

namespace parcelory {

/// The address book with its search and its tools: beside the label form, and in its own window.
class AddressBookView : public QWidget {
    Q_OBJECT
public:
    AddressBookView(AppState &app, AddressBook &book, QWidget *parent = nullptr);

    AddressBookPane &pane() { return m_pane; }
    void focusSearch() { m_search->focusAll(); }
    void addNew();
    void editSelected();

signals:
    void filled(); ///< the label's recipient was filled from here

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    void addFoot(QVBoxLayout *rows);
    QLayout *makeNews();
    QLayout *makeTools();
    void connectList();
    void openSheet(AddressEditSheet::Purpose purpose, const PostalContact &contact);
    void choose(const QUuid &id);
    void fill();
    void fillByReturn();
    void removeSelected(Task<> (AddressBook::*removal)(PostalContact));
    void undo();
    void refreshList();
    void refresh();
    void showPage();
    void refreshButtons();
    void refreshMessage();

    AppState &m_app;
    AddressBook &m_book;
    AddressBookPane m_pane;
    SearchField *m_search;
    AddressList *m_list;
    EmptyState *m_empty, *m_nothing, *m_unreadable;
    QStackedWidget *m_pages;
    TextLabel *m_message; ///< the last operation's result
    Button *m_cancel, *m_undo;
    BusyBar *m_bar;
    Button *m_fill, *m_add, *m_edit, *m_delete, *m_import, *m_export;
    TextLabel *m_count;
    RefreshScheduler m_refresh;
};

} // namespace parcelory

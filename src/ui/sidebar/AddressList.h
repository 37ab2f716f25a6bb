#pragma once

#include "ui/sidebar/AddressListModel.h"

#include <QListView>

namespace parcelory {

/// The list of a pane's addresses. The chosen address is the pane's selection.
class AddressList : public QListView {
    Q_OBJECT
public:
    explicit AddressList(AddressBookPane &pane, QWidget *parent = nullptr);

    /// Shows the pane's matches. Scrolls to the top after another search; otherwise keeps the scroll position.
    void refresh();
    /// Shows the pane's selection.
    void refreshSelection();
    /// Takes the focus; chooses a row if no row is chosen.
    void enter();
    int rowCount() const { return m_model->rowCount(); }

signals:
    void removeRequested();
    void undoRequested();
    void searchRequested(); ///< Up from the first row

protected:
    bool event(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void selectionChanged(const QItemSelection &selected, const QItemSelection &deselected) override;

private:
    AddressBookPane &m_pane;
    AddressListModel *m_model;
    QString m_query; ///< the query whose matches are shown
};

} // namespace parcelory

#pragma once

#include "ui/sidebar/AddressListModel.h"

#include <QListView>

namespace parcelory {

/// The list of a pane's addresses. The chosen one is the pane's selection.
class AddressList : public QListView {
    Q_OBJECT
public:
    explicit AddressList(AddressBookPane &pane, QWidget *parent = nullptr);

    /// Shows what the pane has found: from the start after another search, else where it stood.
    void refresh();
    /// Shows the pane's selection.
    void refreshSelection();
    /// Takes the keyboard, and chooses a row if none is.
    void enter();
    int rowCount() const { return m_model->rowCount(); }

signals:
    void removeRequested();
    void undoRequested();
    void searchRequested(); ///< the way back up

protected:
    bool event(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void selectionChanged(const QItemSelection &selected, const QItemSelection &deselected) override;

private:
    AddressBookPane &m_pane;
    AddressListModel *m_model;
    QString m_query; ///< the one whose rows are shown
};

} // namespace parcelory

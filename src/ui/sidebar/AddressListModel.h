#pragma once

#include "app/addressbook/AddressBook.h"

#include <QAbstractListModel>

namespace parcelory {

/// The addresses that match a pane's search as rows of two lines.
class AddressListModel : public QAbstractListModel {
    Q_OBJECT
public:
    enum Role { detailRole = Qt::UserRole }; ///< the second line; the first one is the display's text

    using QAbstractListModel::QAbstractListModel;

    /// Takes what the pane has found.
    void show(AddressBookPane &pane);

    QUuid idAt(int row) const { return contact(row).id; }
    int rowOf(const QUuid &id) const; ///< -1 when it is not among them

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;

private:
    const PostalContact &contact(int row) const { return m_contacts[m_rows[row]]; }

    // They share the book's memory, and stay as they are until the view is told of other ones.
    QList<PostalContact> m_contacts;
    QList<int> m_rows;
};

} // namespace parcelory

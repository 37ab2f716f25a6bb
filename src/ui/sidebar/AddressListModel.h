#pragma once

#include "app/addressbook/AddressBook.h"

#include <QAbstractListModel>

namespace parcelory {

/// The addresses that match a pane's search as rows of two lines.
class AddressListModel : public QAbstractListModel {
    Q_OBJECT
public:
    enum Role { detailRole = Qt::UserRole }; ///< the second line; the first line is Qt::DisplayRole

    using QAbstractListModel::QAbstractListModel;

    /// Takes over the pane's matches.
    void show(AddressBookPane &pane);

    QUuid idAt(int row) const { return contact(row).id; }
    int rowOf(const QUuid &id) const; ///< -1 if it is not a match

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;

private:
    const PostalContact &contact(int row) const { return m_contacts[m_rows[row]]; }

    // Implicitly shared with the book; they change only in show(), which resets the model.
    QList<PostalContact> m_contacts;
    QList<int> m_rows;
};

} // namespace parcelory

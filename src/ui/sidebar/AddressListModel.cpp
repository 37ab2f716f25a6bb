#include "ui/sidebar/AddressListModel.h"

#include "app/addressbook/AddressBook.h"

#include <algorithm>

namespace parcelory {
using namespace Qt::StringLiterals;

void AddressListModel::show(AddressBookPane &pane)
{
    beginResetModel();
    m_contacts = pane.book().contacts();
    m_rows = pane.filtered();
    endResetModel();
}

int AddressListModel::rowOf(const QUuid &id) const
{
    const auto found = std::ranges::find_if(m_rows, [&](int at) { return m_contacts[at].id == id; });
    return found == m_rows.end() ? -1 : int(found - m_rows.begin());
}

int AddressListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_rows.size());
}

QVariant AddressListModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    const PostalContact &shown = contact(index.row());
    QStringList texts = {shown.name, shown.company, shown.addressSummary().simplified()};
    texts.removeAll(QString()); // without a name, the company is the first line
    switch (role) {
    case Qt::DisplayRole:
        return texts.value(0);
    case detailRole:
        return texts.mid(1).join(u" · "_s);
    case Qt::AccessibleTextRole:
        return texts.join(u", "_s);
    default:
        return {};
    }
}

} // namespace parcelory

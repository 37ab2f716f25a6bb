#include "ui/log/LogModel.h"

#include "ui/parts/RowTable.h"
#include "ui/theme/Theme.h"

#include <QCollator>

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <vector>

namespace parcelory {
using namespace Qt::StringLiterals;

int widthOf(const QList<RowBadge> &badges, FontRole role, int gap)
{
    int width = 0;
    for (const RowBadge &badge : badges)
        width += badgeWidth(badge.word, role) + gap;
    return width;
}

QList<RowBadge> fitting(QList<RowBadge> badges, int room, FontRole role, int gap)
{
    if (widthOf(badges, role, gap) <= room)
        return badges;
    for (RowBadge &badge : badges)
        badge.word = badge.brief.isEmpty() ? badge.word : badge.brief;
    while (badges.size() > 1 && widthOf(badges, role, gap) > room)
        badges.removeLast();
    return badges;
}

QString wordsOf(const QList<RowBadge> &badges)
{
    QStringList words;
    for (const RowBadge &badge : badges)
        words += badge.word;
    return words.join(u", "_s);
}

LogModel::LogModel(QObject *parent) : QAbstractTableModel(parent), m_numberFont(Theme::current().font(FontRole::mono))
{
}

int LogModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_order.size());
}

/// The cell, and then the rest of its row: only whole rows are chosen, wherever the focus is in them.
QVariant LogModel::accessibleText(qsizetype record, int column) const
{
    QStringList words;
    const auto add = [&](int each) {
        words += text(record, each);
        for (const RowBadge &badge : badges(record, each))
            words += badge.word;
    };
    add(column);
    for (int other = 0; other < columnCount(); ++other) {
        if (other != column)
            add(other);
    }
    words.removeAll(QString());
    return words.join(u", "_s);
}

QVariant LogModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    const qsizetype record = recordAt(index.row());
    const ColumnKind kind = look(index.column()).kind;
    switch (role) {
    case Qt::DisplayRole:
        return text(record, index.column());
    case Qt::AccessibleTextRole:
        return accessibleText(record, index.column());
    case Qt::TextAlignmentRole:
        return int((kind == ColumnKind::number ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter);
    case Qt::FontRole:
        return kind == ColumnKind::tracking ? QVariant(m_numberFont) : QVariant();
    case RowTable::idRole:
        return recordId(record);
    case badgesRole:
        return QVariant::fromValue(badges(record, index.column()));
    default:
        return {};
    }
}

QVariant LogModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal)
        return {};
    const ColumnLook &column = look(section);
    switch (role) {
    case Qt::DisplayRole:
        return column.title;
    case Qt::AccessibleTextRole:
        if (section != m_sortColumn)
            return column.title;
        return column.title + (m_sortOrder == Qt::AscendingOrder ? u", sorted ascending"_s : u", sorted descending"_s);
    case Qt::TextAlignmentRole:
        return int((column.kind == ColumnKind::number ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter);
    case Qt::InitialSortOrderRole:
        return int(column.kind == ColumnKind::date ? Qt::DescendingOrder : Qt::AscendingOrder);
    default:
        return {};
    }
}

void LogModel::sort(int column, Qt::SortOrder order)
{
    if (column < 0 || column >= columnCount())
        return;
    beginResetModel();
    m_sortColumn = column;
    m_sortOrder = order;
    sortRows();
    endResetModel();
}

void LogModel::sortRows()
{
    m_order.resize(size_t(recordCount()));
    std::iota(m_order.begin(), m_order.end(), qsizetype(0));
    const auto sortBy = [this](const auto &keys) {
        const bool falling = m_sortOrder == Qt::DescendingOrder;
        std::ranges::sort(m_order, [&](qsizetype left, qsizetype right) {
            const auto &one = keys[size_t(left)], &other = keys[size_t(right)];
            if (one < other || other < one)
                return falling ? other < one : one < other;
            return left < right; // keeps the records' order
        });
    };
    if (sortsByNumber(m_sortColumn)) {
        std::vector<double> keys;
        keys.reserve(size_t(m_order.size()));
        for (const qsizetype record : m_order)
            keys.push_back(number(record, m_sortColumn));
        sortBy(keys);
        return;
    }
    // A fixed language, because the computer may have no language, and then all texts compare equal.
    QCollator collator(QLocale(QLocale::English, QLocale::UnitedStates));
    collator.setNumericMode(true); // 9 comes before 10
    std::vector<QCollatorSortKey> keys;
    keys.reserve(size_t(m_order.size()));
    for (const qsizetype record : m_order)
        keys.push_back(collator.sortKey(text(record, m_sortColumn)));
    sortBy(keys);
}

} // namespace parcelory

#include "shell/ui/log/ShipmentTable.h"

#include "core/Text.h"
#include "shell/ui/log/ShipmentTexts.h"

#include <QHeaderView>
#include <QPainter>

#include <algorithm>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

struct ColumnInfo {
    QString title;
    int width; ///< logical pixels; Services has no width of its own
    bool isNumber = false;
};

const ColumnInfo &columnInfo(int column)
{
    static const ColumnInfo table[ShipmentModel::columnTotal] = {
        {u"Date/Time"_s, 136},    {u"Postage"_s, 72, true}, {u"Recipient"_s, 220},
        {u"Services"_s, 0},       {u"Tracking ID"_s, 214},  {u"Weight"_s, 86, true},
        {u"Balance"_s, 62, true}, {u"Description"_s, 106},  {u"Ref #"_s, 64}};
    return table[column];
}

constexpr int narrowestServices = 100, narrowestRecipient = 150;
constexpr int badgeHeight = 18, badgeGap = 5;

const ShipmentRecord &recordAt(const QModelIndex &index)
{
    return static_cast<const ShipmentModel *>(index.model())->at(index.row());
}

class ShipmentDelegate : public RowDelegate {
public:
    using RowDelegate::RowDelegate;

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        RowDelegate::paint(painter, option, index);
        if (index.column() != ShipmentModel::recipient)
            return;
        const int height = Theme::current().scaled(badgeHeight);
        QRect place(0, option.rect.center().y() - height / 2 + 1, 0, height);
        place.moveRight(option.rect.right() + badgeGap - padding);
        const QList<ShipmentBadge> badges = badgesOf(recordAt(index));
        for (auto badge = badges.rbegin(); badge != badges.rend(); ++badge) {
            const int width = badgeWidth(badge->word, FontRole::tableBadge);
            place.setLeft(place.left() - badgeGap - width);
            place.setWidth(width);
            paintBadge(*painter, place, badge->word, badge->kind, FontRole::tableBadge);
        }
    }

protected:
    int reserved(const QModelIndex &index) const override
    {
        int width = 0;
        if (index.column() == ShipmentModel::recipient) {
            for (const ShipmentBadge &badge : badgesOf(recordAt(index)))
                width += badgeWidth(badge.word, FontRole::tableBadge) + badgeGap;
        }
        return width;
    }
};

} // namespace

ShipmentModel::ShipmentModel(QObject *parent)
    : QAbstractTableModel(parent), m_numberFont(Theme::current().font(FontRole::mono))
{
}

void ShipmentModel::setRecords(const QList<ShipmentRecord> &records)
{
    beginResetModel();
    m_records = records;
    endResetModel();
}

int ShipmentModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_records.size());
}

int ShipmentModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : columnTotal;
}

QString ShipmentModel::text(const ShipmentRecord &record, int column) const
{
    switch (column) {
    case time:
        return timeText(record);
    case postage:
        return postageText(record);
    case recipient:
        return recipientName(record);
    case services:
        return record.services;
    case tracking:
        return groupsOfFour(record.tracking);
    case weight:
        return record.weight;
    case balance:
        return record.balance;
    case description:
        return record.descriptionText;
    default:
        return record.reference;
    }
}

QVariant ShipmentModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    const ShipmentRecord &record = m_records[index.row()];
    switch (role) {
    case Qt::DisplayRole:
        return text(record, index.column());
    case Qt::AccessibleTextRole: {
        QStringList words = {text(record, index.column())};
        if (index.column() == recipient) {
            for (const ShipmentBadge &badge : badgesOf(record))
                words += badge.word;
        }
        return words.join(u", "_s);
    }
    case Qt::TextAlignmentRole:
        return int((columnInfo(index.column()).isNumber ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter);
    case Qt::FontRole:
        return index.column() == tracking ? QVariant(m_numberFont) : QVariant();
    case RowTable::idRole:
        return record.id;
    default:
        return {};
    }
}

QVariant ShipmentModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Horizontal && role == Qt::DisplayRole)
        return columnInfo(section).title;
    if (orientation == Qt::Horizontal && role == Qt::TextAlignmentRole && columnInfo(section).isNumber)
        return int(Qt::AlignRight | Qt::AlignVCenter);
    return {};
}

ShipmentTable::ShipmentTable(QWidget *parent) : RowTable(u"Mailing log"_s, parent), m_model(new ShipmentModel(this))
{
    setItemDelegate(new ShipmentDelegate(this));
    setModel(m_model);
    horizontalHeader()->setSectionResizeMode(ShipmentModel::services, QHeaderView::Stretch);
    connect(selectionModel(), &QItemSelectionModel::selectionChanged, this, &RowTable::chosenChanged);
    connect(horizontalHeader(), &QHeaderView::sectionResized, this, &ShipmentTable::keepTrackingWhole);
}

void ShipmentTable::setRecords(const QList<ShipmentRecord> &records)
{
    replaceRows([&] { m_model->setRecords(records); });
    const auto longest =
        std::ranges::max_element(records, {}, [](const ShipmentRecord &record) { return record.tracking.size(); });
    m_longestTracking =
        longest == records.end()
            ? 0
            : QFontMetrics(Theme::current().font(FontRole::mono)).horizontalAdvance(groupsOfFour(longest->tracking));
    keepTrackingWhole();
}

/// A tracking number that is cut looks like a whole one.
void ShipmentTable::keepTrackingWhole()
{
    constexpr int margins = 17;
    if (columnWidth(ShipmentModel::tracking) < m_longestTracking + margins)
        setColumnWidth(ShipmentModel::tracking, m_longestTracking + margins);
}

QByteArray ShipmentTable::columnState() const
{
    return horizontalHeader()->saveState();
}

void ShipmentTable::restoreColumns(const QByteArray &state)
{
    m_hasWidths = horizontalHeader()->restoreState(state);
}

void ShipmentTable::showEvent(QShowEvent *event)
{
    RowTable::showEvent(event);
    if (std::exchange(m_hasWidths, true))
        return;
    const Theme &theme = Theme::current();
    int left = viewport()->width() - theme.scaled(narrowestServices);
    for (int column = 0; column < ShipmentModel::columnTotal; ++column) {
        if (column != ShipmentModel::services)
            setColumnWidth(column, theme.scaled(columnInfo(column).width));
        left -= theme.scaled(columnInfo(column).width);
    }
    if (left < 0) // names are the first to give way
        setColumnWidth(ShipmentModel::recipient,
                       std::max(theme.scaled(narrowestRecipient), columnWidth(ShipmentModel::recipient) + left));
}

} // namespace parcelory

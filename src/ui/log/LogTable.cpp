#include "ui/log/LogTable.h"

#include "ui/log/LogModel.h"
#include "ui/parts/Badge.h"
#include "ui/parts/RowTable.h"
#include "ui/theme/Theme.h"

#include <QHeaderView>
#include <QPainter>

#include <algorithm>
#include <utility>

namespace parcelory {

namespace {

constexpr int badgeHeight = 18, badgeGap = 5;

QList<RowBadge> badgesAt(const QModelIndex &index)
{
    return index.data(LogModel::badgesRole).value<QList<RowBadge>>();
}

class LogDelegate : public RowDelegate {
public:
    using RowDelegate::RowDelegate;

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        RowDelegate::paint(painter, option, index);
        const int height = Theme::current().scaled(badgeHeight);
        QRect place(0, option.rect.center().y() - height / 2 + 1, 0, height);
        place.moveRight(option.rect.right() + badgeGap - padding);
        const QList<RowBadge> badges = badgesAt(index);
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
        for (const RowBadge &badge : badgesAt(index))
            width += badgeWidth(badge.word, FontRole::tableBadge) + badgeGap;
        return width;
    }
};

} // namespace

LogTable::LogTable(const QString &name, LogModel *model, QWidget *parent) : RowTable(name, parent), m_model(model)
{
    model->setParent(this);
    setItemDelegate(new LogDelegate(this));
    setModel(model);
    for (int column = 0; column < model->columnCount(); ++column) {
        if (model->look(column).width == 0)
            horizontalHeader()->setSectionResizeMode(column, QHeaderView::Stretch);
        if (model->look(column).kind == ColumnKind::tracking)
            m_tracking = column;
    }
    horizontalHeader()->setSortIndicator(0, Qt::DescendingOrder); // the model's initial order
    makeSortable();
    connect(selectionModel(), &QItemSelectionModel::selectionChanged, this, &RowTable::chosenChanged);
    connect(horizontalHeader(), &QHeaderView::sectionResized, this, &LogTable::keepTrackingWhole);
    connect(model, &QAbstractItemModel::modelReset, this, &LogTable::measureTracking);
}

void LogTable::measureTracking()
{
    QString longest;
    for (int row = 0; row < m_model->rowCount(); ++row) {
        const QString number = m_model->index(row, m_tracking).data().toString();
        if (number.size() > longest.size())
            longest = number;
    }
    m_longestTracking = QFontMetrics(Theme::current().font(FontRole::mono)).horizontalAdvance(longest);
    const int before = columnWidth(m_tracking);
    keepTrackingWhole();
    if (m_hasWidths && columnWidth(m_tracking) > before)
        giveWay();
}

/// An elided tracking number can be mistaken for a whole number.
void LogTable::keepTrackingWhole()
{
    constexpr int margins = 17;
    if (columnWidth(m_tracking) < m_longestTracking + margins)
        setColumnWidth(m_tracking, m_longestTracking + margins);
}

/// If the window is too narrow for all columns, shrinks them from the left, so the names first.
void LogTable::giveWay()
{
    const Theme &theme = Theme::current();
    int missing = -viewport()->width();
    for (int column = 0; column < m_model->columnCount(); ++column) {
        const ColumnLook &look = m_model->look(column);
        missing += look.width ? columnWidth(column) : theme.scaled(look.least);
    }
    for (int column = 0; column < m_model->columnCount(); ++column) {
        const ColumnLook &look = m_model->look(column);
        if (look.width == 0 || look.least == 0)
            continue;
        const int less = std::clamp(missing, 0, std::max(0, columnWidth(column) - theme.scaled(look.least)));
        missing -= less;
        setColumnWidth(column, columnWidth(column) - less);
    }
}

QByteArray LogTable::columnState() const
{
    return horizontalHeader()->saveState();
}

void LogTable::restoreColumns(const QByteArray &state)
{
    m_hasWidths = horizontalHeader()->restoreState(state);
    // A layout saved by an earlier version contains no sorting.
    horizontalHeader()->setSectionsClickable(true);
    horizontalHeader()->setSortIndicatorShown(true);
}

void LogTable::showEvent(QShowEvent *event)
{
    RowTable::showEvent(event);
    if (std::exchange(m_hasWidths, true))
        return;
    for (int column = 0; column < m_model->columnCount(); ++column) {
        if (const int width = m_model->look(column).width)
            setColumnWidth(column, Theme::current().scaled(width));
    }
    giveWay();
}

} // namespace parcelory

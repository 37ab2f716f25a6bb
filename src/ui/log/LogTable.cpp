#include "ui/log/LogTable.h"

#include "ui/log/LogModel.h"
#include "ui/parts/Badge.h"
#include "ui/parts/RowTable.h"
#include "ui/theme/Theme.h"

#include <QHeaderView>
#include <QPainter>

#include <algorithm>
#include <cstddef>
#include <utility>

namespace parcelory {

namespace {

constexpr int badgeHeight = 18, badgeGap = 5;
constexpr int leastText = 56; ///< beside badges, or the whole text if it is shorter

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
        const QList<RowBadge> badges = shown(index, option.rect.width());
        for (auto badge = badges.rbegin(); badge != badges.rend(); ++badge) {
            const int width = badgeWidth(badge->word, FontRole::tableBadge);
            place.setLeft(place.left() - badgeGap - width);
            place.setWidth(width);
            paintBadge(*painter, place, badge->word, badge->kind, FontRole::tableBadge);
        }
    }

protected:
    int reserved(const QModelIndex &index, int width) const override
    {
        return widthOf(shown(index, width), FontRole::tableBadge, badgeGap);
    }
    QString leftOut(const QModelIndex &index, int width) const override
    {
        const QList<RowBadge> all = badgesAt(index);
        return shown(index, width) == all ? QString() : wordsOf(all);
    }

private:
    static QList<RowBadge> shown(const QModelIndex &index, int width)
    {
        const QList<RowBadge> all = badgesAt(index);
        if (all.isEmpty())
            return all;
        const Theme &theme = Theme::current();
        const int text = QFontMetrics(theme.font(FontRole::body)).horizontalAdvance(index.data().toString());
        const int room = width - 2 * padding - std::min(text, theme.scaled(leastText));
        return fitting(all, room, FontRole::tableBadge, badgeGap);
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
    }
    m_needed.resize(std::size_t(model->columnCount()));
    horizontalHeader()->setSortIndicator(0, Qt::DescendingOrder); // the model's initial order
    makeSortable();
    connect(selectionModel(), &QItemSelectionModel::selectionChanged, this, &RowTable::chosenChanged);
    connect(horizontalHeader(), &QHeaderView::sectionResized, this, &LogTable::widen);
    connect(model, &QAbstractItemModel::modelReset, this, &LogTable::measure);
}

/// An elided tracking number or time can be mistaken for a whole one.
void LogTable::measure()
{
    constexpr int margins = 17;
    for (int column = 0; column < m_model->columnCount(); ++column) {
        const ColumnKind kind = m_model->look(column).kind;
        if (kind != ColumnKind::tracking && kind != ColumnKind::date)
            continue;
        const FontRole role = kind == ColumnKind::tracking ? FontRole::mono : FontRole::body;
        const QFontMetrics metrics(Theme::current().font(role));
        int longest = 0;
        for (int row = 0; row < m_model->rowCount(); ++row)
            longest = std::max(longest, metrics.horizontalAdvance(m_model->index(row, column).data().toString()));
        m_needed[std::size_t(column)] = longest > 0 ? longest + margins : 0;
    }
    if (m_isLaidOut && widen())
        giveWay();
}

/// True if a column was too narrow.
bool LogTable::widen()
{
    bool isWidened = false;
    for (int column = 0; column < m_model->columnCount(); ++column) {
        const int needed = m_needed[std::size_t(column)];
        if (columnWidth(column) >= needed)
            continue;
        setColumnWidth(column, needed);
        isWidened = true;
    }
    return isWidened;
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
    return m_isLaidOut ? horizontalHeader()->saveState() : QByteArray();
}

void LogTable::restoreColumns(const QByteArray &state)
{
    m_isRestored = horizontalHeader()->restoreState(state);
    // A layout saved by an earlier version contains no sorting.
    horizontalHeader()->setSectionsClickable(true);
    horizontalHeader()->setSortIndicatorShown(true);
}

void LogTable::showEvent(QShowEvent *event)
{
    RowTable::showEvent(event);
    if (std::exchange(m_isLaidOut, true))
        return;
    for (int column = 0; column < m_model->columnCount() && !m_isRestored; ++column) {
        if (const int width = m_model->look(column).width)
            setColumnWidth(column, Theme::current().scaled(width));
    }
    if (widen() || !m_isRestored)
        giveWay();
}

} // namespace parcelory

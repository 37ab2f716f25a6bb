#include "ui/parts/RowTable.h"

#include "core/Text.h"
#include "ui/parts/TextLabel.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QHeaderView>
#include <QHelpEvent>
#include <QPainter>
#include <QScrollBar>
#include <QToolTip>

#include <algorithm>
#include <functional>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr int iconSize = 16, iconGap = 5; ///< of a cell

/// Draws the sort arrow as part of the column's title: the style's own arrow would hide the title of a narrow column.
class RowHead : public QHeaderView {
public:
    using QHeaderView::QHeaderView;

protected:
    void initStyleOptionForIndex(QStyleOptionHeader *option, int column) const override
    {
        QHeaderView::initStyleOptionForIndex(option, column);
        if (option->sortIndicator == QStyleOptionHeader::None)
            return;
        option->sortIndicator = QStyleOptionHeader::None;
        const QString arrow = sortIndicatorOrder() == Qt::AscendingOrder ? u"▴"_s : u"▾"_s;
        const bool right = option->textAlignment & Qt::AlignRight;
        option->text = right ? arrow + u' ' + option->text : option->text + u' ' + arrow;
    }
};

} // namespace

RowTable::RowTable(const QString &name, QWidget *parent)
    : QTableView(parent), m_heights([this] { resizeRowsToContents(); })
{
    const Theme &theme = Theme::current();
    setAccessibleName(name);
    setHorizontalHeader(new RowHead(Qt::Horizontal, this));
    setFrameShape(QFrame::NoFrame);
    setShowGrid(false);
    setAlternatingRowColors(true);
    setSelectionBehavior(SelectRows);
    setSelectionMode(SingleSelection);
    setEditTriggers(NoEditTriggers);
    setHorizontalScrollMode(ScrollPerPixel);
    setVerticalScrollMode(ScrollPerPixel);
    setTabKeyNavigation(false); // Tab leaves the table
    setWordWrap(false);
    setCornerButtonEnabled(false);
    verticalHeader()->hide();
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    verticalHeader()->setMinimumSectionSize(1);
    verticalHeader()->setDefaultSectionSize(theme.scaled(rowPixels));
    horizontalHeader()->setFixedHeight(theme.scaled(headPixels));
    horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    horizontalHeader()->setHighlightSections(false);
    horizontalHeader()->setSectionsClickable(false);
    horizontalHeader()->setMinimumSectionSize(theme.scaled(56));
}

void RowTable::wrapTexts()
{
    setWordWrap(true);
    connect(horizontalHeader(), &QHeaderView::sectionResized, this, [this] { m_heights.touch(); });
}

void RowTable::makeSortable()
{
    horizontalHeader()->setSectionsClickable(true);
    horizontalHeader()->setSortIndicatorShown(true);
    connect(horizontalHeader(), &QHeaderView::sortIndicatorChanged, this, &RowTable::sortAsMarked);
}

void RowTable::sortBy(int column)
{
    const QVariant first = model()->headerData(column, Qt::Horizontal, Qt::InitialSortOrderRole);
    Qt::SortOrder order = first.isValid() ? Qt::SortOrder(first.toInt()) : Qt::AscendingOrder;
    if (column == horizontalHeader()->sortIndicatorSection())
        order =
            horizontalHeader()->sortIndicatorOrder() == Qt::AscendingOrder ? Qt::DescendingOrder : Qt::AscendingOrder;
    horizontalHeader()->setSortIndicator(column, order);
}

void RowTable::sortAsMarked()
{
    replaceRows([this] {
        model()->sort(horizontalHeader()->sortIndicatorSection(), horizontalHeader()->sortIndicatorOrder());
    });
    showStart();
}

QVariant RowTable::chosen() const
{
    const QModelIndexList rows = selectionModel() ? selectionModel()->selectedRows() : QModelIndexList();
    return rows.isEmpty() ? QVariant() : rows.first().data(idRole);
}

int RowTable::rowOf(const QVariant &id) const
{
    for (int row = 0; id.isValid() && row < model()->rowCount(); ++row) {
        if (model()->index(row, 0).data(idRole) == id)
            return row;
    }
    return -1;
}

void RowTable::choose(const QVariant &id)
{
    if (chosen() == id)
        return;
    if (const int row = rowOf(id); row >= 0)
        selectRow(row); // also makes it the current row, which scrolls it into view
    else
        clearSelection();
}

void RowTable::replaceRows(const std::function<void()> &change)
{
    const QVariant kept = chosen();
    const int top = rowAt(0);
    const QVariant topId = model()->index(top, 0).data(idRole);
    const int offset = rowViewportPosition(top);
    const bool atTop = verticalScrollBar()->value() == 0; // at the top, new rows are shown
    change();
    if (wordWrap())
        resizeRowsToContents();
    choose(kept);
    executeDelayedItemsLayout();
    if (const int row = rowOf(topId); row >= 0 && !atTop)
        verticalScrollBar()->setValue(verticalHeader()->sectionPosition(row) - offset);
    else
        scrollToTop();
}

void RowTable::showStart()
{
    if (chosen().isValid())
        scrollTo(currentIndex(), PositionAtCenter);
    else
        scrollToTop();
}

/// Accepts the Copy keys, so that the Edit menu enables its entry.
bool RowTable::event(QEvent *event)
{
    if (event->type() == QEvent::ShortcutOverride && static_cast<QKeyEvent *>(event)->matches(QKeySequence::Copy) &&
        chosen().isValid()) {
        event->accept();
        return true;
    }
    return QTableView::event(event);
}

void RowTable::keyPressEvent(QKeyEvent *event)
{
    if (event->matches(QKeySequence::Copy))
        emit copyRequested();
    else if (event->key() == Qt::Key_Space && chosen().isValid() && !event->isAutoRepeat())
        emit viewRequested();
    else
        QTableView::keyPressEvent(event);
}

void RowTable::focusInEvent(QFocusEvent *event)
{
    QTableView::focusInEvent(event);
    if (event->reason() != Qt::MouseFocusReason && currentIndex().isValid() && !chosen().isValid())
        selectRow(currentIndex().row());
}

void RowTable::paintEvent(QPaintEvent *event)
{
    QTableView::paintEvent(event);
    if (!hasFocus() || !currentIndex().isValid())
        return;
    QPainter painter(viewport());
    const QRect cell = visualRect(currentIndex());
    Theme::current().drawFocusRing(painter, QRect(0, cell.top(), viewport()->width(), cell.height()), 2);
}

/// A cell's icon, if it has an icon, stands before the text.
QRect RowDelegate::textPlace(const QRect &cell, const QModelIndex &index) const
{
    const bool hasIcon = index.data(Qt::DecorationRole).isValid();
    return cell.adjusted(padding + (hasIcon ? iconSize + iconGap : 0), 0, -padding - reserved(index, cell.width()), 0);
}

void RowDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    const Tokens &t = Theme::current().tokens();
    QStyleOptionViewItem cell = option;
    initStyleOption(&cell, index);
    painter->save();
    if (cell.state & QStyle::State_Selected) {
        painter->fillRect(cell.rect, t.rowSel);
        if (index.column() == 0)
            painter->fillRect(QRect(cell.rect.left(), cell.rect.top(), 3, cell.rect.height()), t.accent);
    }
    const QRect place = textPlace(cell.rect, index);
    const bool wraps = cell.features & QStyleOptionViewItem::WrapText;
    if (!cell.icon.isNull())
        cell.icon.paint(
            painter, QRect(cell.rect.left() + padding, cell.rect.center().y() - iconSize / 2 + 1, iconSize, iconSize));
    painter->setFont(cell.font);
    const QVariant ink = index.data(Qt::ForegroundRole);
    painter->setPen(ink.isValid() ? ink.value<QColor>() : t.text);
    painter->drawText(place, int(cell.displayAlignment) | (wraps ? Qt::TextWordWrap : Qt::TextSingleLine),
                      wraps ? cell.text : cell.fontMetrics.elidedText(cell.text, Qt::ElideRight, place.width()));
    painter->restore();
}

QSize RowDelegate::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    const int height = Theme::current().scaled(RowTable::rowPixels);
    const QString text = index.data().toString();
    if (!(option.features & QStyleOptionViewItem::WrapText))
        return {option.fontMetrics.horizontalAdvance(text) + 2 * padding + reserved(index, QWIDGETSIZE_MAX), height};
    const QRect place(0, 0, textPlace(option.rect, index).width(), QWIDGETSIZE_MAX);
    if (!text.contains(u'\n') && option.fontMetrics.horizontalAdvance(text) <= place.width())
        return {option.rect.width(), height}; // true for most cells, and ten times as fast
    const int air = height - option.fontMetrics.height();
    return {option.rect.width(),
            std::max(height, option.fontMetrics.boundingRect(place, Qt::TextWordWrap, text).height() + air)};
}

bool RowDelegate::helpEvent(QHelpEvent *event, QAbstractItemView *view, const QStyleOptionViewItem &option,
                            const QModelIndex &index)
{
    if (event->type() != QEvent::ToolTip)
        return QStyledItemDelegate::helpEvent(event, view, option, index);
    QStyleOptionViewItem cell = option;
    initStyleOption(&cell, index);
    const bool cut = !(cell.features & QStyleOptionViewItem::WrapText) &&
                     cell.fontMetrics.horizontalAdvance(cell.text) > textPlace(cell.rect, index).width();
    const QString whole = joinPresent({cut ? cell.text : QString(), leftOut(index, cell.rect.width())}, u"\n"_s);
    QToolTip::showText(event->globalPos(), whole.isEmpty() ? QString() : plainToolTip(whole), view);
    return true;
}

} // namespace parcelory

#include "ui/log/OpenItemsTable.h"

#include "app/openitems/OpenItemTexts.h"
#include "core/Task.h"
#include "ui/log/OpenItemCells.h"
#include "ui/theme/Icons.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QContextMenuEvent>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QPointer>

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

namespace parcelory {
using namespace Qt::StringLiterals;
using namespace OpenItemCells;

namespace {

constexpr int itemHeight = 42, buttonHeight = 28, glyph = 16, markSize = 20;
constexpr int secondRole = RowTable::idRole + 1; ///< a cell's second line
constexpr int iconRole = RowTable::idRole + 2, urgentRole = RowTable::idRole + 3;

struct Look {
    QString title;
    int width; ///< 0 takes the rest
};

const Look looks[columnTotal] = {{u""_s, 40},           {u"What is open"_s, 0},
                                 {u"Recipient"_s, 250}, {u"Tracking ID"_s, 250},
                                 {u"Age"_s, 118},       {u"Next step"_s, 166}};

} // namespace

/// Texts are made for the rows that are seen: the list may have thousands.
class OpenItemsTable::Model : public QAbstractTableModel {
public:
    using QAbstractTableModel::QAbstractTableModel;

    void setItems(const QList<OpenItem> &items, const std::vector<qsizetype> &order)
    {
        beginResetModel();
        m_items = items;
        m_order = order;
        endResetModel();
    }
    int rowCount(const QModelIndex &parent = {}) const override { return parent.isValid() ? 0 : int(m_items.size()); }
    int columnCount(const QModelIndex &parent = {}) const override { return parent.isValid() ? 0 : columnTotal; }
    QVariant data(const QModelIndex &index, int role) const override
    {
        if (!index.isValid())
            return {};
        const OpenItem &item = m_items[m_order.empty() ? index.row() : m_order[std::size_t(index.row())]];
        switch (role) {
        case Qt::DisplayRole:
            return firstLine(item, index.column());
        case secondRole:
            return secondLine(item, index.column());
        case iconRole:
            return index.column() == step ? iconOf(stepOf(item.reason)) : iconOf(item.reason);
        case urgentRole:
            return OpenItemTexts::isUrgent(item.reason);
        case Qt::AccessibleTextRole:
            return OpenItemTexts::spoken(item);
        case Qt::TextAlignmentRole:
            return int((index.column() == age ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter);
        case RowTable::idRole:
            return item.id();
        default:
            return {};
        }
    }
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override
    {
        if (orientation != Qt::Horizontal)
            return {};
        if (role == Qt::TextAlignmentRole)
            return int((section == age ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter);
        if (role == Qt::AccessibleTextRole && section == mark)
            return u"Kind"_s;
        return role == Qt::DisplayRole ? QVariant(looks[section].title) : QVariant();
    }

private:
    QList<OpenItem> m_items;        ///< oldest first
    std::vector<qsizetype> m_order; ///< empty: as they come
};

class OpenItemsTable::Delegate : public RowDelegate {
public:
    using RowDelegate::RowDelegate;

    bool isBusy = false;

    static QRect buttonPlace(const QRect &cell)
    {
        const int high = Theme::current().scaled(buttonHeight);
        return {cell.left() + 11, cell.center().y() - high / 2 + 1, cell.width() - 11 - 16, high};
    }

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        const Theme &theme = Theme::current();
        const Tokens &t = theme.tokens();
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        if (option.state & QStyle::State_Selected) {
            painter->fillRect(option.rect, t.rowSel);
            if (index.column() == mark)
                painter->fillRect(QRect(option.rect.left(), option.rect.top(), 3, option.rect.height()), t.accent);
        }
        if (index.column() == mark)
            paintMark(*painter, option.rect, index);
        else if (index.column() == step)
            paintButton(*painter, buttonPlace(option.rect), index);
        else
            paintLines(*painter, option.rect.adjusted(padding, 0, -padding, 0), index);
        painter->restore();
    }

private:
    static void paintMark(QPainter &painter, const QRect &cell, const QModelIndex &index)
    {
        const Tokens &t = Theme::current().tokens();
        const int size = Theme::current().scaled(markSize);
        paintIcon(painter, index.data(iconRole).toString(),
                  {cell.left() + 14, cell.center().y() - size / 2 + 1, size, size},
                  index.data(urgentRole).toBool() ? t.bad : t.warn);
    }
    static void paintLines(QPainter &painter, const QRect &place, const QModelIndex &index)
    {
        const Theme &theme = Theme::current();
        const Tokens &t = theme.tokens();
        const QString second = index.data(secondRole).toString();
        const int side = index.column() == age ? Qt::AlignRight : Qt::AlignLeft;
        const FontRole role = index.column() == what       ? FontRole::strong
                              : index.column() == tracking ? FontRole::mono
                                                           : FontRole::body;
        const auto line = [&](const QString &text, FontRole font, const QColor &ink, const QRect &where) {
            painter.setFont(theme.font(font));
            painter.setPen(ink);
            painter.drawText(where, side | Qt::AlignVCenter | Qt::TextSingleLine,
                             painter.fontMetrics().elidedText(text, Qt::ElideRight, where.width()));
        };
        const bool isRed = index.column() == what && index.data(iconRole).toString() == u"ui_error"_s;
        const int middle = place.center().y();
        QRect upper = place;
        if (!second.isEmpty()) {
            upper.setBottom(middle + 2);
            upper.setTop(place.top() + 2);
            line(second, FontRole::caption, t.muted,
                 QRect(place.left(), middle + 1, place.width(), place.bottom() - middle - 2));
        }
        line(index.data().toString(), role, isRed ? t.bad : t.text, upper);
    }
    void paintButton(QPainter &painter, const QRect &place, const QModelIndex &index) const
    {
        const Theme &theme = Theme::current();
        const Tokens &t = theme.tokens();
        const QColor ink = isBusy ? t.disabledText : t.text;
        painter.setPen(QPen(isBusy ? t.line : t.button, 1));
        painter.setBrush(isBusy ? t.disabledFill : t.sheet);
        painter.drawRoundedRect(QRectF(place).adjusted(0.5, 0.5, -0.5, -0.5), Theme::radius, Theme::radius);
        painter.setFont(theme.font(FontRole::button));
        const QString text = index.data().toString();
        const int words = painter.fontMetrics().horizontalAdvance(text), gap = 6;
        const int x = place.left() + (place.width() - words - glyph - gap) / 2;
        paintIcon(painter, index.data(iconRole).toString(), {x, place.center().y() - glyph / 2 + 1, glyph, glyph}, ink);
        painter.setPen(ink);
        painter.drawText(QRect(x + glyph + gap, place.top(), words + 2, place.height()),
                         Qt::AlignLeft | Qt::AlignVCenter, text);
    }
};

OpenItemsTable::OpenItemsTable(QWidget *parent)
    : RowTable(u"Open items"_s, parent), m_model(new Model(this)), m_delegate(new Delegate(this))
{
    setItemDelegate(m_delegate);
    setModel(m_model);
    verticalHeader()->setDefaultSectionSize(Theme::current().scaled(itemHeight));
    horizontalHeader()->setMinimumSectionSize(Theme::current().scaled(40));
    horizontalHeader()->setSectionResizeMode(what, QHeaderView::Stretch);
    horizontalHeader()->setSortIndicator(age, Qt::DescendingOrder);
    makeSortable();
    connect(horizontalHeader(), &QHeaderView::sortIndicatorChanged, this,
            [this] { spawn([this] { return arrange(true); }); });
    connect(selectionModel(), &QItemSelectionModel::selectionChanged, this, &RowTable::chosenChanged);
    connect(this, &RowTable::viewRequested, this, &OpenItemsTable::stepRequested);
}

void OpenItemsTable::setItems(const QList<OpenItem> &items)
{
    m_items = items;
    spawn([this] { return arrange(false); });
}

/// Thousands of texts are compared on the thread pool; until then, the rows stay as they are.
Task<> OpenItemsTable::arrange(bool showsStart)
{
    const int arrangement = ++m_arrangements;
    const int column = horizontalHeader()->sortIndicatorSection();
    const bool isFalling = horizontalHeader()->sortIndicatorOrder() == Qt::DescendingOrder;
    std::vector<qsizetype> order;
    if (column == age) {
        order = orderOf(m_items, column, isFalling);
    } else {
        const QPointer alive(this);
        order = co_await onPool([items = m_items, column, isFalling] { return orderOf(items, column, isFalling); });
        if (!alive || arrangement != m_arrangements)
            co_return;
    }
    replaceRows([&] { m_model->setItems(m_items, order); });
    if (showsStart)
        showStart();
}

void OpenItemsTable::setBusy(bool busy)
{
    if (std::exchange(m_delegate->isBusy, busy) != busy)
        viewport()->update();
}

void OpenItemsTable::showEvent(QShowEvent *event)
{
    RowTable::showEvent(event);
    for (int column = 0; column < columnTotal; ++column) {
        if (const int width = Theme::current().scaled(looks[column].width))
            setColumnWidth(column, width);
    }
    fitName();
}

void OpenItemsTable::resizeEvent(QResizeEvent *event)
{
    RowTable::resizeEvent(event);
    if (columnWidth(recipient) == m_fitted)
        fitName();
}

/// The name gives way in a narrow window.
void OpenItemsTable::fitName()
{
    const Theme &theme = Theme::current();
    const int width = theme.scaled(looks[recipient].width), least = width - theme.scaled(90);
    m_fitted = std::clamp(width - theme.scaled(1100) + viewport()->width(), least, width);
    setColumnWidth(recipient, m_fitted);
}

void OpenItemsTable::keyPressEvent(QKeyEvent *event)
{
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (isReturn && chosen().isValid())
        emit showRequested();
    else if (event->key() == Qt::Key_Delete && chosen().isValid())
        emit takeOffRequested();
    else
        RowTable::keyPressEvent(event);
}

/// The item whose button is there.
std::optional<qint64> OpenItemsTable::buttonAt(const QPoint &place) const
{
    const QModelIndex index = indexAt(place);
    if (index.column() != step || !Delegate::buttonPlace(visualRect(index)).contains(place))
        return std::nullopt;
    return index.siblingAtColumn(0).data(idRole).toLongLong();
}

void OpenItemsTable::mousePressEvent(QMouseEvent *event)
{
    RowTable::mousePressEvent(event);
    m_pressed = event->button() == Qt::LeftButton ? buttonAt(event->pos()) : std::nullopt;
}

void OpenItemsTable::mouseReleaseEvent(QMouseEvent *event)
{
    RowTable::mouseReleaseEvent(event);
    // Not a place in the list: the list may be built anew between press and release.
    const std::optional<qint64> pressed = std::exchange(m_pressed, std::nullopt);
    if (pressed && pressed == buttonAt(event->pos()) && chosen().toLongLong() == *pressed && !m_delegate->isBusy)
        emit stepRequested();
}

void OpenItemsTable::mouseDoubleClickEvent(QMouseEvent *event)
{
    RowTable::mouseDoubleClickEvent(event);
    if (event->button() == Qt::LeftButton && indexAt(event->pos()).isValid() && !buttonAt(event->pos()))
        emit showRequested();
}

void OpenItemsTable::contextMenuEvent(QContextMenuEvent *event)
{
    if (!chosen().isValid())
        return;
    auto *menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->addAction(u"Nothing to Do"_s, this, &OpenItemsTable::takeOffRequested);
    menu->popup(event->globalPos());
}

} // namespace parcelory

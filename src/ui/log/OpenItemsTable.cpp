#include "ui/log/OpenItemsTable.h"

#include "app/openitems/OpenItemTexts.h"
#include "core/Text.h"
#include "ui/theme/Icons.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QContextMenuEvent>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <utility>
#include <vector>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

enum Column { mark, what, recipient, tracking, age, step, columnTotal };

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

QString iconOf(OpenReason reason)
{
    switch (reason) {
    case OpenReason::refundRejected:
    case OpenReason::refundUndecided:
        return u"ui_refund"_s;
    case OpenReason::refundUrgent:
        return u"ui_error"_s;
    case OpenReason::returned:
        return u"ui_home"_s;
    case OpenReason::otherZip:
        return u"ui_flag"_s;
    case OpenReason::customsPapers:
        return u"ui_document"_s;
    case OpenReason::labelUnchecked:
        return u"ui_qr"_s;
    case OpenReason::noMovement:
        return u"service_usps_tracking"_s;
    case OpenReason::lateCopy:
        return u"ui_shield"_s;
    default:
        return u"ui_status"_s;
    }
}

QString iconOf(OpenStep step)
{
    switch (step) {
    case OpenStep::track:
        return u"ui_external"_s;
    case OpenStep::refund:
        return u"ui_refund"_s;
    case OpenStep::checkStatus:
        return u"ui_status"_s;
    case OpenStep::fillLabel:
        return u"ui_edit"_s;
    case OpenStep::customsDocs:
        return u"ui_document"_s;
    case OpenStep::reprint:
        return u"ui_printer"_s;
    case OpenStep::copyNow:
        return u"ui_copy"_s;
    }
    return {};
}

QString firstLine(const OpenItem &item, int column)
{
    switch (column) {
    case what:
        return OpenItemTexts::title(item);
    case recipient:
        return item.label.recipientName();
    case tracking:
        return groupsOfFour(item.label.tracking);
    case age:
        return OpenItemTexts::age(item);
    case step:
        return OpenItemTexts::step(stepOf(item.reason));
    default:
        return {};
    }
}

QString secondLine(const OpenItem &item, int column)
{
    switch (column) {
    case what:
        return OpenItemTexts::detail(item);
    case recipient:
        return OpenItemTexts::place(item.label);
    case age:
        return item.label.createdAt.toString(u"MM/dd/yy"_s);
    default:
        return {};
    }
}

} // namespace

/// Texts are made for the rows that are seen: the list may have thousands.
class OpenItemsTable::Model : public QAbstractTableModel {
public:
    using QAbstractTableModel::QAbstractTableModel;

    void setItems(const QList<OpenItem> &items)
    {
        beginResetModel();
        m_items = items;
        sortRows();
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
    /// Falling age is the order in which the items come.
    void sort(int column, Qt::SortOrder order) override
    {
        beginResetModel();
        m_column = column;
        m_sortOrder = order;
        sortRows();
        endResetModel();
    }

private:
    void sortRows()
    {
        m_order.clear();
        const bool isFalling = m_sortOrder == Qt::DescendingOrder;
        if (m_column == age && isFalling)
            return;
        m_order.resize(std::size_t(m_items.size()));
        std::iota(m_order.begin(), m_order.end(), qsizetype(0));
        if (m_column == age) {
            std::ranges::reverse(m_order);
            return;
        }
        std::vector<QString> keys;
        keys.reserve(m_order.size());
        for (const OpenItem &item : m_items)
            keys.push_back(m_column == mark ? QString(QChar(u'a' + int(item.reason)))
                                            : firstLine(item, m_column).toCaseFolded());
        std::ranges::sort(m_order, [&](qsizetype left, qsizetype right) {
            const QString &one = keys[std::size_t(left)], &other = keys[std::size_t(right)];
            if (one == other)
                return left < right;
            return isFalling ? other < one : one < other;
        });
    }

    QList<OpenItem> m_items;        ///< oldest first
    std::vector<qsizetype> m_order; ///< empty: as they come
    int m_column = age;
    Qt::SortOrder m_sortOrder = Qt::DescendingOrder;
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
    connect(selectionModel(), &QItemSelectionModel::selectionChanged, this, &RowTable::chosenChanged);
    connect(this, &RowTable::viewRequested, this, &OpenItemsTable::stepRequested);
}

void OpenItemsTable::setItems(const QList<OpenItem> &items)
{
    replaceRows([&] { m_model->setItems(items); });
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

bool OpenItemsTable::isOnButton(const QPoint &place) const
{
    const QModelIndex index = indexAt(place);
    return index.column() == step && Delegate::buttonPlace(visualRect(index)).contains(place);
}

void OpenItemsTable::mousePressEvent(QMouseEvent *event)
{
    RowTable::mousePressEvent(event);
    m_pressed = event->button() == Qt::LeftButton && isOnButton(event->pos()) ? indexAt(event->pos()) : QModelIndex();
}

void OpenItemsTable::mouseReleaseEvent(QMouseEvent *event)
{
    RowTable::mouseReleaseEvent(event);
    const QPersistentModelIndex pressed = std::exchange(m_pressed, QPersistentModelIndex());
    if (pressed.isValid() && pressed == indexAt(event->pos()) && isOnButton(event->pos()) && !m_delegate->isBusy)
        emit stepRequested();
}

void OpenItemsTable::mouseDoubleClickEvent(QMouseEvent *event)
{
    RowTable::mouseDoubleClickEvent(event);
    if (event->button() == Qt::LeftButton && indexAt(event->pos()).isValid() && !isOnButton(event->pos()))
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

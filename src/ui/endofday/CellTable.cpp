#include "ui/endofday/CellTable.h"

#include "ui/parts/TextLabel.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QAbstractTableModel>
#include <QHeaderView>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QToolTip>

#include <algorithm>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr int secondRole = RowTable::idRole + 1, numberRole = secondRole + 1;

} // namespace

class CellTable::Model : public QAbstractTableModel {
public:
    Model(const QList<TableColumn> &columns, QObject *parent) : QAbstractTableModel(parent), m_columns(columns) {}

    QList<TableRow> rows;

    int rowCount(const QModelIndex &parent = {}) const override { return parent.isValid() ? 0 : int(rows.size()); }
    int columnCount(const QModelIndex &parent = {}) const override
    {
        return parent.isValid() ? 0 : int(m_columns.size());
    }
    QVariant data(const QModelIndex &index, int role) const override
    {
        if (!index.isValid())
            return {};
        const TableRow &row = rows[index.row()];
        const TableCell cell = row.cells.value(index.column());
        switch (role) {
        case Qt::DisplayRole:
            return cell.text;
        case secondRole:
            return cell.second;
        case numberRole:
            return m_columns[index.column()].kind == TableColumn::Kind::tracking;
        case idRole:
            return row.id;
        case Qt::AccessibleTextRole:
            return row.name;
        case Qt::TextAlignmentRole:
            return alignment(index.column());
        case Qt::FontRole:
            return Theme::current().font(cell.isStrong ? FontRole::strong
                                         : m_columns[index.column()].kind == TableColumn::Kind::tracking
                                             ? FontRole::mono
                                             : FontRole::body);
        default:
            return {};
        }
    }
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override
    {
        if (orientation != Qt::Horizontal)
            return {};
        if (role == Qt::TextAlignmentRole)
            return alignment(section);
        return role == Qt::DisplayRole ? QVariant(m_columns[section].title) : QVariant();
    }
    void replace(const QList<TableRow> &next)
    {
        beginResetModel();
        rows = next;
        endResetModel();
    }

private:
    int alignment(int column) const
    {
        const bool isNumber = m_columns[column].kind == TableColumn::Kind::number;
        return int((isNumber ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter);
    }

    const QList<TableColumn> m_columns;
};

class CellTable::Delegate : public RowDelegate {
public:
    using RowDelegate::RowDelegate;

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        RowDelegate::paint(painter, option, index); // its text is empty if there are two lines
        const QString second = index.data(secondRole).toString();
        if (second.isEmpty())
            return;
        const Theme &theme = Theme::current();
        const QRect place = placeOf(option.rect, index);
        const int middle = option.rect.center().y() + 1;
        const int align = index.data(Qt::TextAlignmentRole).toInt() & int(Qt::AlignHorizontal_Mask);
        const auto draw = [&](const QString &text, const QFont &font, const QColor &ink, int lift) {
            const QFontMetrics metrics(font);
            painter->setFont(font);
            painter->setPen(ink);
            painter->drawText(QRect(place.left(), middle - lift, place.width(), metrics.height()),
                              align | Qt::AlignVCenter, metrics.elidedText(text, Qt::ElideRight, place.width()));
        };
        painter->save();
        const QFont first = index.data(Qt::FontRole).value<QFont>();
        draw(index.data().toString(), first, theme.color(&Tokens::text), QFontMetrics(first).height());
        const bool isNumber = index.data(numberRole).toBool(); // a long number goes on in the second line
        draw(second, isNumber ? first : theme.font(FontRole::caption),
             theme.color(isNumber ? &Tokens::text : &Tokens::muted), 0);
        painter->restore();
    }

    bool helpEvent(QHelpEvent *event, QAbstractItemView *view, const QStyleOptionViewItem &option,
                   const QModelIndex &index) override
    {
        const QString second = index.data(secondRole).toString();
        if (second.isEmpty() || event->type() != QEvent::ToolTip)
            return RowDelegate::helpEvent(event, view, option, index);
        const QString first = index.data().toString();
        const int room = placeOf(option.rect, index).width();
        const bool isCut = QFontMetrics(index.data(Qt::FontRole).value<QFont>()).horizontalAdvance(first) > room ||
                           QFontMetrics(Theme::current().font(FontRole::caption)).horizontalAdvance(second) > room;
        QToolTip::showText(event->globalPos(), isCut ? plainToolTip(first + u'\n' + second) : QString(), view);
        return true;
    }

protected:
    void initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const override
    {
        RowDelegate::initStyleOption(option, index);
        if (!index.data(secondRole).toString().isEmpty())
            option->text.clear();
    }

private:
    static QRect placeOf(const QRect &cell, const QModelIndex &index)
    {
        const bool isLeft = index.data(Qt::TextAlignmentRole).toInt() & int(Qt::AlignLeft);
        return cell.adjusted(padding, 0, isLeft ? -2 : -padding, 0);
    }
};

CellTable::CellTable(const QString &name, const QList<TableColumn> &columns, int rowPixels, QWidget *parent)
    : RowTable(name, parent), m_columns(columns), m_model(new Model(columns, this))
{
    setItemDelegate(new Delegate(this));
    setModel(m_model);
    verticalHeader()->setDefaultSectionSize(Theme::current().scaled(rowPixels));
    horizontalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Ignored); // scrolls before the window around it
    connect(selectionModel(), &QItemSelectionModel::selectionChanged, this, &RowTable::chosenChanged);
    connect(this, &QTableView::doubleClicked, this, &CellTable::opened);
}

void CellTable::setRows(const QList<TableRow> &rows)
{
    if (rows == m_model->rows)
        return;
    replaceRows([&] { m_model->replace(rows); });
    measure();
}

/// An elided tracking number can be mistaken for a whole one.
void CellTable::measure()
{
    constexpr int margins = 17;
    const Theme &theme = Theme::current();
    for (int column = 0; column < int(m_columns.size()); ++column) {
        int width = theme.scaled(m_columns[column].width);
        if (m_columns[column].kind == TableColumn::Kind::tracking) {
            const QFontMetrics metrics(theme.font(FontRole::mono));
            for (const TableRow &row : m_model->rows)
                width = std::max(width, metrics.horizontalAdvance(row.cells.value(column).text) + margins);
        }
        if (width > 0)
            setColumnWidth(column, width);
        else
            horizontalHeader()->setSectionResizeMode(column, QHeaderView::Stretch);
    }
}

int CellTable::fullHeight() const
{
    const int head = horizontalHeader()->isHidden() ? 0 : horizontalHeader()->height();
    return head + int(m_model->rows.size()) * verticalHeader()->defaultSectionSize();
}

void CellTable::keyPressEvent(QKeyEvent *event)
{
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (isReturn && chosen().isValid() && !event->isAutoRepeat())
        emit opened();
    else
        RowTable::keyPressEvent(event);
}

void CellTable::showEvent(QShowEvent *event)
{
    RowTable::showEvent(event);
    measure();
}

} // namespace parcelory

#include "ui/sidebar/AddressList.h"

#include "app/addressbook/AddressBook.h"
#include "ui/parts/TextLabel.h"
#include "ui/sidebar/AddressListModel.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QHelpEvent>
#include <QPainter>
#include <QScrollBar>
#include <QStyledItemDelegate>
#include <QToolTip>

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr int rowPixels = 42, padding = 8;

/// Draws a name and, below it, company and address. The tooltip of an elided row shows both lines in full.
class AddressRow : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem &, const QModelIndex &) const override
    {
        return {1, Theme::current().scaled(rowPixels)}; // as wide as the list
    }

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        const Tokens &t = Theme::current().tokens();
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        if (option.state & QStyle::State_Selected) {
            painter->setPen(Qt::NoPen);
            painter->setBrush(t.rowSel);
            painter->drawRoundedRect(option.rect, Theme::radius, Theme::radius);
        }
        const auto lines = linesOf(index);
        QRect place = option.rect.adjusted(padding, 0, -padding, 0);
        place.setTop(place.top() + (place.height() - lines[0].height() - lines[1].height()) / 2);
        for (const Line &line : lines) {
            painter->setFont(line.font);
            painter->setPen(t.*line.ink);
            painter->drawText(place, Qt::AlignTop | Qt::TextSingleLine,
                              QFontMetrics(line.font).elidedText(line.text, Qt::ElideRight, place.width()));
            place.setTop(place.top() + line.height());
        }
        painter->restore();
    }

    bool helpEvent(QHelpEvent *event, QAbstractItemView *view, const QStyleOptionViewItem &option,
                   const QModelIndex &index) override
    {
        if (event->type() != QEvent::ToolTip || !index.isValid())
            return QStyledItemDelegate::helpEvent(event, view, option, index);
        bool cut = false;
        QStringList texts;
        for (const Line &line : linesOf(index)) {
            cut |= QFontMetrics(line.font).horizontalAdvance(line.text) > option.rect.width() - 2 * padding;
            texts += line.text;
        }
        QToolTip::showText(event->globalPos(), cut ? plainToolTip(texts.join(u'\n')) : QString(), view);
        return true;
    }

private:
    struct Line {
        QString text;
        QFont font;
        Token ink;

        int height() const { return QFontMetrics(font).height(); }
    };

    static std::array<Line, 2> linesOf(const QModelIndex &index)
    {
        const Theme &theme = Theme::current();
        return {
            Line{index.data().toString(), theme.font(FontRole::strong), &Tokens::text},
            Line{index.data(AddressListModel::detailRole).toString(), theme.font(FontRole::caption), &Tokens::muted}};
    }
};

bool isDelete(const QKeyEvent &event)
{
#ifdef Q_OS_MACOS
    if (event.key() == Qt::Key_Backspace) // the key that is called "delete" there
        return true;
#endif
    return event.key() == Qt::Key_Delete;
}

} // namespace

AddressList::AddressList(AddressBookPane &pane, QWidget *parent)
    : QListView(parent), m_pane(pane), m_model(new AddressListModel(this))
{
    setAccessibleName(AddressBookPane::sourceName());
    setModel(m_model);
    setItemDelegate(new AddressRow(this));
    setUniformItemSizes(true); // a hundred thousand rows scroll as fast as ten
    setVerticalScrollMode(ScrollPerPixel);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setEditTriggers(NoEditTriggers);
    setFrameShape(NoFrame);
    viewport()->setBackgroundRole(QPalette::Window);
    refresh();
}

void AddressList::refresh()
{
    const bool sameSearch = std::exchange(m_query, m_pane.query.value()) == m_query;
    const int place = verticalScrollBar()->value(), row = currentIndex().row();
    m_model->show(m_pane);
    executeDelayedItemsLayout();
    verticalScrollBar()->setValue(sameSearch ? place : 0);
    refreshSelection();
    // The arrow keys continue from the place of a deleted address.
    if (sameSearch && row >= 0 && !currentIndex().isValid())
        selectionModel()->setCurrentIndex(m_model->index(std::min(row, rowCount() - 1)), QItemSelectionModel::NoUpdate);
}

void AddressList::refreshSelection()
{
    const std::optional<QUuid> id = m_pane.selection;
    const int row = id ? m_model->rowOf(*id) : -1;
    if (row < 0)
        clearSelection();
    else if (!selectionModel()->isSelected(m_model->index(row)))
        setCurrentIndex(m_model->index(row));
}

void AddressList::enter()
{
    if (rowCount() == 0)
        return;
    setFocus(Qt::TabFocusReason);
    if (!selectionModel()->hasSelection())
        setCurrentIndex(currentIndex().isValid() ? currentIndex() : m_model->index(0));
}

/// Accepts the Undo keys, so that the Edit menu enables its entry.
bool AddressList::event(QEvent *event)
{
    if (event->type() == QEvent::ShortcutOverride && static_cast<QKeyEvent *>(event)->matches(QKeySequence::Undo)) {
        event->accept();
        return true;
    }
    return QListView::event(event);
}

void AddressList::keyPressEvent(QKeyEvent *event)
{
    const int key = event->key();
    if (event->matches(QKeySequence::Undo))
        emit undoRequested();
    else if (isDelete(*event) && !event->isAutoRepeat()) // a key held down must not empty the book
        emit removeRequested();
    else if (key == Qt::Key_Up && currentIndex().row() <= 0)
        emit searchRequested();
    else if (key == Qt::Key_Down && !selectionModel()->hasSelection())
        enter();
    else
        QListView::keyPressEvent(event);
}

void AddressList::paintEvent(QPaintEvent *event)
{
    QListView::paintEvent(event);
    if (!hasFocus() || !currentIndex().isValid())
        return;
    QPainter painter(viewport());
    Theme::current().drawFocusRing(painter, visualRect(currentIndex()), Theme::radius);
}

void AddressList::selectionChanged(const QItemSelection &selected, const QItemSelection &deselected)
{
    QListView::selectionChanged(selected, deselected);
    const QModelIndexList chosen = selectedIndexes();
    m_pane.selection = chosen.isEmpty() ? std::nullopt : std::optional(m_model->idAt(chosen.first().row()));
}

} // namespace parcelory

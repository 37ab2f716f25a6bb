#include "ui/label/RateList.h"

#include "app/label/LabelScreen.h"
#include "app/label/LabelTexts.h"
#include "carrier/ShippoRecords.h"
#include "ui/parts/TextLabel.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QKeyEvent>
#include <QPainter>
#include <QStyledItemDelegate>

#include <algorithm>
#include <iterator>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr int idRole = Qt::UserRole, secondLineRole = Qt::UserRole + 1, priceRole = Qt::UserRole + 2;
constexpr int rowHeight = 46, gap = 6;

/// "12 dollars 35", for screen readers.
QString spokenPrice(const QString &amount)
{
    const QStringList parts = amount.split(u'.');
    return parts.first() + u" dollars "_s + parts.value(1);
}

class RateDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem &, const QModelIndex &) const override
    {
        return {200, Theme::current().scaled(rowHeight) + gap};
    }

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        const Theme &theme = Theme::current();
        const Tokens &t = theme.tokens();
        const bool chosen = option.state & QStyle::State_Selected;
        const QRect card = option.rect.adjusted(0, 0, 0, -gap);
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        const qreal edge = chosen ? 2 : 1;
        painter->setPen(QPen(chosen ? t.accent : t.line, edge));
        painter->setBrush(chosen ? t.accentTint : t.sheet);
        painter->drawRoundedRect(QRectF(card).adjusted(edge / 2, edge / 2, -edge / 2, -edge / 2), Theme::cardRadius,
                                 Theme::cardRadius);
        QStyleOptionButton mark;
        const int size = theme.scaled(16);
        mark.rect = QRect(card.left() + 12, card.center().y() - size / 2 + 1, size, size);
        mark.state = QStyle::State_Enabled | (chosen ? QStyle::State_On : QStyle::State_Off);
        theme.drawPrimitive(QStyle::PE_IndicatorRadioButton, &mark, painter, nullptr);

        painter->setPen(t.text);
        painter->setFont(theme.font(FontRole::h2));
        const QString price = index.data(priceRole).toString();
        const int priceWidth = painter->fontMetrics().horizontalAdvance(price);
        const QRect inner = card.adjusted(38, 6, -14, -6);
        painter->drawText(inner, int(Qt::AlignRight | Qt::AlignVCenter), price);
        const QRect words = inner.adjusted(0, 0, -priceWidth - 8, 0);
        const auto line = [&](FontRole role, const QColor &ink, const QString &text, Qt::Alignment place) {
            painter->setFont(theme.font(role));
            painter->setPen(ink);
            painter->drawText(words, place, painter->fontMetrics().elidedText(text, Qt::ElideRight, words.width()));
        };
        line(FontRole::strong, t.text, index.data().toString(), Qt::AlignTop);
        line(FontRole::caption, t.muted, index.data(secondLineRole).toString(), Qt::AlignBottom);
        if (option.state & QStyle::State_HasFocus)
            theme.drawFocusRing(*painter, card.adjusted(2, 2, -2, -2), 4);
        painter->restore();
    }
};

} // namespace

RateList::RateList(LabelScreen &screen, QWidget *parent)
    : QListView(parent), m_screen(screen), m_refresh([this] { refresh(); })
{
    setAccessibleName(u"Rates"_s);
    setModel(&m_rows);
    setItemDelegate(new RateDelegate(this));
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollMode(ScrollPerPixel);
    setEditTriggers(NoEditTriggers);
    viewport()->setAutoFillBackground(false);
    connect(selectionModel(), &QItemSelectionModel::selectionChanged, this, [this](const QItemSelection &now) {
        if (!now.isEmpty())
            m_screen.selectedRateID = now.indexes().first().data(idRole).toString();
    });
    m_refresh.follow(screen);
    refresh();
}

QSize RateList::minimumSizeHint() const
{
    return {0, Theme::current().scaled(rowHeight) + gap};
}

/// Keeps the chosen rate visible when the Buy block below grows with its address.
void RateList::resizeEvent(QResizeEvent *event)
{
    QListView::resizeEvent(event);
    if (selectionModel()->hasSelection())
        scrollTo(currentIndex());
}

/// The first key of the arrows chooses the first rate: with the focus alone, no rate is chosen.
void RateList::keyPressEvent(QKeyEvent *event)
{
    constexpr int moves[] = {Qt::Key_Up, Qt::Key_Down, Qt::Key_Home, Qt::Key_End, Qt::Key_PageUp, Qt::Key_PageDown};
    if (!selectionModel()->hasSelection() && std::ranges::find(moves, event->key()) != std::end(moves))
        setCurrentIndex(m_rows.index(0, 0));
    else
        QListView::keyPressEvent(event);
}

void RateList::refresh()
{
    if (m_listed != m_screen.rates.value())
        refill();
    showChosen();
}

void RateList::refill()
{
    m_listed = m_screen.rates;
    m_rows.clear();
    for (const ShippoRate &rate : m_listed) {
        auto *row = new QStandardItem(serviceName(rate.servicelevel));
        const QString details = LabelTexts::rateDetails(rate, m_listed);
        row->setData(rate.objectId, idRole);
        row->setData(details, secondLineRole);
        row->setToolTip(plainToolTip(row->text() + u'\n' + details));
        row->setData(u'$' + rate.amount, priceRole);
        row->setData(
            QStringList{row->text(), QString(details).replace(u" · "_s, u", "_s), spokenPrice(rate.amount)}.join(
                u", "_s),
            Qt::AccessibleTextRole);
        m_rows.appendRow(row);
    }
}

void RateList::showChosen()
{
    const auto found = std::ranges::find(m_listed, m_screen.selectedRateID.value(), &ShippoRate::objectId);
    if (found == m_listed.end()) {
        clearSelection();
        return;
    }
    const QModelIndex index = m_rows.index(int(found - m_listed.begin()), 0);
    if (selectionModel()->isSelected(index))
        return;
    setCurrentIndex(index);
    scrollTo(index);
}

} // namespace parcelory

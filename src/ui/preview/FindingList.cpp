#include "ui/preview/FindingList.h"

#include "app/purchase/LabelVerdictTexts.h"
#include "ui/theme/Icons.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QKeyEvent>
#include <QPainter>
#include <QStyledItemDelegate>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr int rowHeight = 42, margin = 16, matchRole = Qt::UserRole, textRole = Qt::UserRole + 1;

QString titleOf(LabelItem item)
{
    const QString name = LabelVerdictTexts::nameOf(item);
    return item == LabelItem::trackingCode ? u"Bar code"_s : name.left(1).toUpper() + name.mid(1);
}

/// What the label says; the parcel's text only where it differs.
QStringList textsOf(const LabelFinding &finding)
{
    switch (finding.match) {
    case LabelMatch::same:
        return {finding.onLabel.isEmpty() ? u"not on the label"_s : finding.onLabel};
    case LabelMatch::different:
        return {u"Label: "_s + (finding.onLabel.isEmpty() ? u"(missing)"_s : finding.onLabel),
                u"Parcel: "_s + (finding.onParcel.isEmpty() ? u"—"_s : finding.onParcel)};
    case LabelMatch::notFound:
        return {u"—"_s};
    case LabelMatch::unchecked:
        break;
    }
    return {u"cannot be checked"_s};
}

QString spokenMatch(LabelMatch match)
{
    switch (match) {
    case LabelMatch::same:
        return u"same"_s;
    case LabelMatch::different:
        return u"different"_s;
    case LabelMatch::notFound:
        return u"not found on the label"_s;
    case LabelMatch::unchecked:
        break;
    }
    return u"not checked"_s;
}

class FindingDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem &, const QModelIndex &index) const override
    {
        const Theme &theme = Theme::current();
        const int more = int(index.data(textRole).toStringList().size()) - 1;
        return {0, theme.scaled(rowHeight) + more * QFontMetrics(theme.font(FontRole::caption)).height()};
    }
    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        const Theme &theme = Theme::current();
        const auto match = LabelMatch(index.data(matchRole).toInt());
        const bool differs = match == LabelMatch::different;
        painter->save();
        if (option.state & QStyle::State_Selected) {
            painter->fillRect(option.rect, theme.color(&Tokens::rowSel));
            painter->fillRect(QRect(option.rect.left(), option.rect.top(), 3, option.rect.height()),
                              theme.color(&Tokens::accent));
        }
        const int size = theme.scaled(16);
        QRect place = option.rect.adjusted(margin, 4, -margin - size - 6, 0);
        drawLine(*painter, place, FontRole::strong, differs ? &Tokens::warn : &Tokens::text, index.data().toString());
        for (const QString &text : index.data(textRole).toStringList())
            drawLine(*painter, place, FontRole::caption, differs ? &Tokens::warn : &Tokens::muted, text);
        const QRect sign(option.rect.right() - margin - size, option.rect.center().y() - size / 2, size, size);
        if (match == LabelMatch::same)
            paintIcon(*painter, u"ui_check"_s, sign, theme.color(&Tokens::ok));
        else if (differs)
            paintIcon(*painter, u"ui_warning"_s, sign, theme.color(&Tokens::warn));
        painter->restore();
    }

private:
    static void drawLine(QPainter &painter, QRect &place, FontRole role, Token ink, const QString &text)
    {
        painter.setFont(Theme::current().font(role));
        painter.setPen(Theme::current().color(ink));
        const QFontMetrics metrics = painter.fontMetrics();
        painter.drawText(place, Qt::AlignLeft | Qt::AlignTop | Qt::TextSingleLine,
                         metrics.elidedText(text, Qt::ElideRight, place.width()));
        place.setTop(place.top() + metrics.height());
    }
};

} // namespace

FindingList::FindingList(QWidget *parent) : QListWidget(parent)
{
    setAccessibleName(u"Read from the label"_s);
    setFrameShape(QFrame::NoFrame);
    setItemDelegate(new FindingDelegate(this));
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollMode(ScrollPerPixel);
    connect(this, &QListWidget::itemSelectionChanged, this, &FindingList::findingChosen);
}

void FindingList::setFindings(const QList<LabelFinding> &findings)
{
    if (findings == m_findings)
        return;
    m_findings = findings;
    clear();
    for (const LabelFinding &finding : findings) {
        const QStringList texts = textsOf(finding);
        auto *item = new QListWidgetItem(titleOf(finding.item), this);
        item->setData(matchRole, int(finding.match));
        item->setData(textRole, texts);
        item->setData(Qt::AccessibleTextRole,
                      u"%1, %2, %3"_s.arg(item->text(), texts.join(u", "_s), spokenMatch(finding.match)));
        item->setToolTip(QString(texts.join(u'\n')).toHtmlEscaped());
    }
    emit findingChosen();
}

std::optional<LabelFinding> FindingList::chosen() const
{
    const QModelIndexList rows = selectionModel()->selectedRows();
    return rows.isEmpty() ? std::nullopt : std::optional(m_findings.value(rows.first().row()));
}

void FindingList::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Space)
        emit closeRequested();
    else
        QListWidget::keyPressEvent(event);
}

} // namespace parcelory

#include "ui/label/MailpiecePicker.h"

#include "app/AppState.h"
#include "app/label/LabelScreen.h"
#include "app/label/LabelTexts.h"
#include "compose/Mailpieces.h"
#include "ui/parts/ComboBox.h"
#include "ui/theme/Icons.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QAbstractItemView>
#include <QPainter>
#include <QSignalBlocker>
#include <QStandardItemModel>
#include <QStyledItemDelegate>

#include <algorithm>
#include <optional>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr int numberRole = Qt::UserRole, iconRole = Qt::UserRole + 1, subtitleRole = Qt::UserRole + 2;
constexpr int rowHeight = 44, headHeight = 32;

bool isHead(const QModelIndex &index)
{
    return !index.data(numberRole).isValid();
}

class MailpieceDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem &, const QModelIndex &index) const override
    {
        return {320, Theme::current().scaled(isHead(index) ? headHeight : rowHeight)};
    }

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        const Theme &theme = Theme::current();
        const Tokens &t = theme.tokens();
        const QRect r = option.rect;
        painter->fillRect(r, t.sheet);
        if (isHead(index)) {
            if (index.row() > 0)
                painter->fillRect(r.left(), r.top(), r.width(), 1, t.line);
            painter->setFont(theme.font(FontRole::captionStrong));
            painter->setPen(t.muted);
            painter->drawText(r.adjusted(10, 4, 0, 0), Qt::AlignVCenter, index.data().toString());
            return;
        }
        if (option.state & QStyle::State_Selected) {
            painter->setRenderHint(QPainter::Antialiasing);
            painter->setPen(Qt::NoPen);
            painter->setBrush(t.rowSel);
            painter->drawRoundedRect(r.adjusted(2, 0, -2, 0), 5, 5);
        }
        paintIcon(*painter, index.data(iconRole).toString(), {r.left() + 10, r.center().y() - 11, 24, 24}, t.text);
        const QRect text = r.adjusted(46, 4, -8, -4);
        painter->setFont(theme.font(FontRole::strong));
        painter->setPen(t.text);
        painter->drawText(text, Qt::AlignTop, index.data().toString());
        painter->setFont(theme.font(FontRole::caption));
        painter->setPen(t.muted);
        painter->drawText(text, Qt::AlignBottom, index.data(subtitleRole).toString());
    }
};

} // namespace

MailpiecePicker::MailpiecePicker(AppState &app, LabelScreen &screen, QWidget *parent)
    : ComboBox(u"Mailpiece"_s, parent), m_app(app), m_screen(screen), m_refresh([this] { refresh(); })
{
    setObjectName(u"mailpieces"_s);
    setItemDelegate(new MailpieceDelegate(this));
    setMaxVisibleItems(14);
    connect(this, &QComboBox::activated, this, [this](int row) {
        const QVariant number = itemData(row, numberRole);
        if (number.isValid())
            m_screen.mailpiece = m_selections[number.toInt()];
    });
    m_refresh.follow(screen);
    refresh();
}

void MailpiecePicker::refresh()
{
    QList<MailpieceGroup> menu = mailpieceMenu(m_screen.carrier, m_app.boxes.profiles);
    const std::optional<MailpieceSelection> usual = m_screen.usualMailpiece();
    if (usual && *usual != m_screen.mailpiece.value()) {
        for (const MailpieceGroup &group : QList(menu)) {
            const auto entry = std::ranges::find(group.entries, *usual, &MailpieceEntry::selection);
            if (entry != group.entries.end())
                menu.prepend({u"Last Used for This Weight"_s, {*entry}});
        }
    }
    if (menu != m_listed)
        refill(menu);
    showCurrent();
}

void MailpiecePicker::refill(const QList<MailpieceGroup> &menu)
{
    const QSignalBlocker quiet(this);
    auto *rows = new QStandardItemModel(this);
    m_listed = menu;
    m_selections.clear();
    for (const MailpieceGroup &group : menu) {
        auto *head = new QStandardItem(group.title);
        head->setFlags(Qt::NoItemFlags);
        rows->appendRow(head);
        for (const MailpieceEntry &entry : group.entries) {
            auto *row = new QStandardItem(entry.title);
            row->setData(int(m_selections.size()), numberRole);
            row->setData(entry.icon, iconRole);
            row->setData(entry.subtitle, subtitleRole);
            row->setData(u"%1, %2"_s.arg(entry.title, entry.subtitle), Qt::AccessibleTextRole);
            rows->appendRow(row);
            m_selections.append(entry.selection);
        }
    }
    setModel(rows); // deletes the previous model
}

void MailpiecePicker::showCurrent()
{
    const QSignalBlocker quiet(this);
    setCurrentIndex(findData(int(m_selections.indexOf(m_screen.mailpiece.value())), numberRole));
    setFace(LabelTexts::mailpieceName(m_screen), themeIcon(LabelTexts::mailpieceIcon(m_screen)));
    setAccessibleDescription(LabelTexts::mailpieceName(m_screen));
}

} // namespace parcelory

#include "ui/sidebar/InvoiceCards.h"

#include "backoffice/DesklineInvoice.h"
#include "core/CountryCode.h"
#include "core/ShippoAddress.h"
#include "core/Text.h"
#include "ui/parts/IconView.h"
#include "ui/parts/PanelFrame.h"
#include "ui/parts/Separator.h"
#include "ui/parts/TextLabel.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

#include <algorithm>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

TextLabel *paragraph(const QString &text, FontRole role = FontRole::caption, Token ink = &Tokens::text)
{
    auto *label = new TextLabel(breakable(text, role, narrowestText), role, ink);
    label->setWordWrap(true);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}

/// A text that takes the remaining width of its row, elided if necessary.
ElidedLabel *remainder(const QString &text, FontRole role, Token ink = &Tokens::text)
{
    auto *label = new ElidedLabel({}, role, ink);
    label->setFullText(text);
    label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    return label;
}

ElidedLabel *atRight(const QString &text, Token ink = &Tokens::text)
{
    auto *label = new ElidedLabel({}, FontRole::caption, ink);
    label->setFullText(text);
    label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    if (text.isEmpty())
        label->hide(); // not setVisible(): to show a label without a parent would open a window
    return label;
}

QVBoxLayout *rowsOf(PanelFrame *card)
{
    auto *rows = new QVBoxLayout(card);
    rows->setContentsMargins(11, 10, 11, 10);
    rows->setSpacing(4);
    return rows;
}

/// A separator with a little more space than between rows.
void addRule(QVBoxLayout *rows)
{
    rows->addSpacing(3);
    rows->addWidget(new Separator);
    rows->addSpacing(3);
}

PanelFrame *warningCard(const QString &icon, const QString &text)
{
    auto *card = PanelFrame::card();
    card->setFill(&Tokens::warnTint);
    card->setEdge(&Tokens::warnEdge);
    auto *row = new QHBoxLayout(card);
    row->setContentsMargins(11, 9, 11, 9);
    row->setSpacing(8);
    row->addWidget(new IconView(icon, 16, &Tokens::warn), 0, Qt::AlignTop);
    row->addWidget(paragraph(text), 1);
    return card;
}

/// Company, street, city and, abroad, the country: a line each.
QStringList addressLines(const ShippoAddress &address)
{
    const QString state = joinPresent({address.state, address.zip}, u" "_s);
    QStringList lines = {address.company, joinPresent({address.street1, address.street2}, u" "_s),
                         joinPresent({address.city, state}, u", "_s)};
    if (CountryCode::alpha2(address.country) != u"US")
        lines += CountryCode::displayName(address.country);
    lines.removeAll(QString());
    return lines;
}

constexpr qsizetype mostItems = 20; ///< a longer list would delay the display without helping the clerk

QLayout *itemRow(const DesklineInvoiceItem &item)
{
    auto *row = new QHBoxLayout;
    row->setSpacing(6);
    row->addWidget(remainder(item.title, FontRole::caption), 1);
    row->addWidget(atRight(item.qty.isEmpty() ? QString() : u"× "_s + item.qty, &Tokens::muted));
    row->addWidget(atRight(item.total));
    return row;
}

/// "Paid:   $421.95"; nothing without a value.
void addSum(QVBoxLayout *rows, const QString &name, const QString &how, const QString &amount)
{
    if (how.isEmpty() && amount.isEmpty())
        return;
    auto *row = new QHBoxLayout;
    row->setSpacing(6);
    row->addWidget(new TextLabel(name, FontRole::caption, &Tokens::muted));
    auto *method = remainder(how, FontRole::caption);
    method->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    row->addWidget(method, 1);
    row->addWidget(atRight(amount));
    rows->addLayout(row);
}

PanelFrame *invoiceCard(const DesklineInvoice &invoice)
{
    auto *card = PanelFrame::card();
    QVBoxLayout *rows = rowsOf(card);
    rows->addWidget(paragraph(invoice.buyerName, FontRole::strong));
    rows->addWidget(paragraph(addressLines(invoice.address).join(u'\n')));
    addRule(rows);
    rows->addWidget(new TextLabel(invoice.itemCount(), FontRole::captionStrong, &Tokens::muted));
    for (const DesklineInvoiceItem &item : invoice.items.first(std::min(invoice.items.size(), mostItems)))
        rows->addLayout(itemRow(item));
    if (invoice.items.size() > mostItems)
        rows->addWidget(
            new TextLabel(u"and %1 more"_s.arg(invoice.items.size() - mostItems), FontRole::caption, &Tokens::muted));
    if (!joinPresent({invoice.shipMethod, invoice.shipCost, invoice.paidAmount}, {}).isEmpty())
        addRule(rows);
    addSum(rows, u"Deskline shipping:"_s, invoice.shipMethod, invoice.shipCost);
    addSum(rows, u"Paid:"_s, {}, invoice.paidAmount);
    return card;
}

PanelFrame *notesCard(const QList<DesklineInvoiceNote> &notes)
{
    auto *card = PanelFrame::card();
    QVBoxLayout *rows = rowsOf(card);
    auto *title = new QHBoxLayout;
    title->setSpacing(6);
    title->addWidget(new IconView(u"ui_note"_s, 16));
    title->addWidget(new TextLabel(u"Invoice Notes"_s, FontRole::strong), 1);
    rows->addLayout(title);
    for (const DesklineInvoiceNote &note : notes) {
        rows->addWidget(paragraph(note.text));
        const QString origin = joinPresent({note.by, note.date}, u" · "_s);
        if (!origin.isEmpty())
            rows->addWidget(paragraph(origin, FontRole::caption, &Tokens::muted));
    }
    return card;
}

} // namespace

QWidget *makeInvoiceCards(const DesklineInvoice &invoice)
{
    auto *cards = new QWidget;
    auto *column = new QVBoxLayout(cards);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(8);
    if (!invoice.codes.isEmpty())
        column->addWidget(warningCard(u"ui_flag"_s, u"Address flags: "_s + invoice.codes.join(u", "_s) +
                                                        u" — check the invoice's Address Change History"_s));
    if (!invoice.tracking.isEmpty())
        column->addWidget(warningCard(u"ui_warning"_s, u"Already has tracking: "_s + invoice.tracking));
    column->addWidget(invoiceCard(invoice));
    if (!invoice.notes.isEmpty())
        column->addWidget(notesCard(invoice.notes));
    return cards;
}

} // namespace parcelory

#include "backoffice/DesklineInvoice.h"

#include "compose/Customs.h"
#include "core/AppError.h"
#include "core/Text.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

/// "$1,860.00"
std::optional<double> money(QString text)
{
    return decimal(text.remove(u'$').remove(u','));
}

QString codeLine(const QString &code)
{
    const auto &table = DesklineInvoice::codeMeanings();
    const auto known = std::ranges::find(table, code, &DesklineCodeMeaning::code);
    if (known == table.end())
        return u"⚠️ "_s + code + u" — unrecognized address flag."_s;
    return u"⚠️ "_s + known->title + u" — "_s + known->detail;
}

QString noteLine(const DesklineInvoiceNote &note)
{
    const QString origin = joinPresent({note.by, note.date}, u", "_s);
    return u"— "_s + note.text + (origin.isEmpty() ? QString() : u" ("_s + origin + u')');
}

QString describeFailure(DesklineInvoiceError::Kind kind, const QString &text)
{
    using enum DesklineInvoiceError::Kind;
    switch (kind) {
    case badCode:
        return u'"' + text + u"\" doesn't look like an invoice QR code or number."_s;
    case timeout:
        return u"Deskline is responding slowly — invoice "_s + text +
               u" didn't load after 45 seconds. Try again in a moment."_s;
    case noBuyer:
        return u"Invoice "_s + text + u" loaded but no buyer details were found on the page."_s;
    case unreachable:
        return u"Can't reach deskline — connect to the VPN and try again."_s;
    case notSignedIn:
        return u"The deskline session has expired — sign out of Parcelory and sign back in."_s;
    }
    return {};
}

} // namespace

const QList<DesklineCodeMeaning> &DesklineInvoice::codeMeanings()
{
    static const QList<DesklineCodeMeaning> table = {
        {u"2AC14"_s, u"2 Address Changes in 14 Days"_s,
         u"The customer's address has been changed twice within a two-week span."_s},
        {u"ARC14"_s, u"Address Revision Check (14 Days)"_s,
         u"The shipping address was changed within 14 days before or after this invoice was generated."_s},
    };
    return table;
}

std::optional<CustomsItemType> DesklineInvoice::suggestedCustomsType() const
{
    QStringList titles;
    for (const DesklineInvoiceItem &item : items)
        titles += item.title.toLower();
    const QString goods = titles.join(u' ');
    if (goods.contains(u"gold"_s))
        return CustomsItemType::gold;
    if (goods.contains(u"note"_s) || goods.contains(u"currency"_s) || goods.contains(u"banknote"_s))
        return CustomsItemType::currency;
    if (goods.contains(u"silver"_s))
        return CustomsItemType::silver;
    return std::nullopt;
}

std::optional<double> DesklineInvoice::subtotal() const
{
    double cents = 0; // in whole cents, so that rounding errors do not add up
    for (const DesklineInvoiceItem &item : items) {
        const std::optional<double> total = money(item.total);
        if (!total)
            return std::nullopt; // a partial sum would be declared as the total
        cents += std::round(*total * 100);
    }
    return items.isEmpty() ? std::nullopt : std::optional(cents / 100);
}

QString DesklineInvoice::itemCount() const
{
    return QString::number(items.size()) + (items.size() == 1 ? u" item"_s : u" items"_s);
}

std::optional<InvoiceAttention> invoiceAttention(const DesklineInvoice &invoice)
{
    QStringList sections;
    for (const QString &code : invoice.codes)
        sections += codeLine(code);
    if (!invoice.codes.isEmpty())
        sections += u"Open this invoice in deskline and review the Address Change History (the flag appears next to "
                    "the logged IP / username) before printing a label."_s;
    if (invoice.streetCut)
        sections += u"⚠️ The street is longer than a label's two lines and was cut. Compare it with the invoice."_s;
    if (!invoice.notes.isEmpty()) {
        QStringList lines = {invoice.notes.size() == 1 ? u"📝 Invoice note:"_s : u"📝 Invoice notes:"_s};
        for (const DesklineInvoiceNote &note : invoice.notes)
            lines += noteLine(note);
        sections += lines.join(u'\n');
    }
    if (sections.isEmpty())
        return std::nullopt;
    const bool check = !invoice.codes.isEmpty() || invoice.streetCut;
    return InvoiceAttention{check ? u"Check Invoice "_s + invoice.invoiceID
                                  : u"Invoice "_s + invoice.invoiceID + u" Has Notes"_s,
                            sections.join(u"\n\n"_s)};
}

DesklineInvoiceError::DesklineInvoiceError(Kind kind, const QString &text)
    : AppError(describeFailure(kind, text)), m_kind(kind)
{
}

} // namespace parcelory

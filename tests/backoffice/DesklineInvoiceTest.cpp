#include "backoffice/DesklineInvoice.h"
#include "backoffice/DesklineInvoiceFetcher.h"
#include "backoffice/DesklinePage.h"
#include "compose/Customs.h"
#include "support/Table.h"

namespace parcelory::test {
namespace {

DesklineInvoice invoiceOf(const QStringList &titles, const QStringList &totals = {})
{
    DesklineInvoice invoice{.invoiceID = u"48213"_s};
    for (qsizetype at = 0; at < titles.size(); ++at)
        invoice.items.append({.title = titles[at], .qty = u"1"_s, .total = totals.value(at)});
    return invoice;
}

} // namespace

TEST(DesklineInvoice, FindsTheNumberInScannedOrTypedText)
{
    for (const Json &row : table(u"invoices"_s, "numbers"))
        EXPECT_EQ(DesklineInvoiceFetcher::invoiceID(text(row[0]), u"crvl.example"_s), optionalText(row[1])) << row;
}

TEST(DesklineInvoice, ReadsCityContentsAndAmounts)
{
    for (const Json &row : table(u"invoices"_s, "cities"))
        EXPECT_EQ(splitCityState(text(row[0])), (std::pair{text(row[1]), text(row[2])})) << row;
    for (const Json &row : table(u"invoices"_s, "contents"))
        EXPECT_EQ(invoiceOf(texts(row[0])).suggestedCustomsType(), customsItemTypeFrom(text(row[1]))) << row;
    for (const Json &row : table(u"invoices"_s, "sums"))
        EXPECT_EQ(invoiceOf(texts(row[0]), texts(row[0])).subtotal(), optional<double>(row[1])) << row;
}

TEST(DesklineInvoice, ReportsEveryFlagAndNote)
{
    for (const Json &row : table(u"invoices"_s, "attention")) { // flags, notes, whether the street is cut, title, text
        DesklineInvoice invoice{.invoiceID = u"48213"_s, .codes = texts(row[0]), .streetCut = row[2]};
        for (const Json &note : row[1])
            invoice.notes.append({.text = text(note[0]), .by = text(note[1]), .date = text(note[2])});
        const InvoiceAttention attention = invoiceAttention(invoice).value_or(InvoiceAttention());
        EXPECT_EQ(attention.title, text(row[3]));
        EXPECT_EQ(attention.text, texts(row[4]).join(u"\n\n"_s));
    }
}

} // namespace parcelory::test

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
    DesklineInvoice invoice{.invoiceID = u"48213"_s};
    EXPECT_FALSE(invoiceAttention(invoice));
    invoice.notes = {{.text = u"Ring twice."_s, .by = u"r.odell"_s, .date = u"11/19/26"_s}};
    EXPECT_EQ(invoiceAttention(invoice)->title, u"Invoice 48213 Has Notes"_s);
    EXPECT_EQ(invoiceAttention(invoice)->text, u"📝 Invoice note:\n— Ring twice. (r.odell, 11/19/26)"_s);

    invoice.codes = {u"2AC14"_s, u"QQ1"_s};
    invoice.notes.append({.text = u"Second."_s});
    EXPECT_EQ(invoiceAttention(invoice)->title, u"Check Invoice 48213"_s);
    EXPECT_EQ(invoiceAttention(invoice)->text,
              u"⚠️ 2 Address Changes in 14 Days — The customer's address has been changed twice within a two-week "
              "span.\n\n⚠️ QQ1 — unrecognized address flag.\n\nOpen this invoice in deskline and review the Address "
              "Change History (the flag appears next to the logged IP / username) before printing a label.\n\n"
              "📝 Invoice notes:\n— Ring twice. (r.odell, 11/19/26)\n— Second."_s);

    const auto cut = invoiceAttention({.invoiceID = u"7"_s, .codes = {u"ARC14"_s}, .streetCut = true});
    EXPECT_TRUE(cut->text.startsWith(u"⚠️ Address Revision Check (14 Days) — "_s));
    EXPECT_TRUE(cut->text.endsWith(u"was cut. Compare it with the invoice."_s));
    EXPECT_EQ(invoiceAttention({.invoiceID = u"7"_s, .streetCut = true})->title, u"Check Invoice 7"_s);
}

} // namespace parcelory::test

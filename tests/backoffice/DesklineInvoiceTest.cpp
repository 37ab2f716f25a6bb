#include "backoffice/DesklineInvoice.h"
#include "backoffice/DesklineInvoiceFetcher.h"
#include "backoffice/DesklinePage.h"
#include "compose/Customs.h"
#include "support/Test.h"

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
    const std::pair<QString, std::optional<QString>> rows[] = {
        {u"i1234"_s, u"1234"_s},
        {u" \t1234 "_s, u"1234"_s},
        {u"\u00a01234"_s, u"1234"_s},
        {u"1234\r\n"_s, u"1234"_s},
        {u"1234 5"_s, std::nullopt},
        {u"1234\n5678"_s, std::nullopt},
        {u"123"_s, std::nullopt},
        {u"i123"_s, std::nullopt},
        {u"12345x"_s, std::nullopt},
        {u"٤٨٢١٣"_s, std::nullopt}, // Arabic digits are not used in page addresses
        {{}, std::nullopt},
        {u"see https://CRVL.example/I5678?x=1"_s, u"5678"_s},
        {u"crvl.example/i5"_s, u"5"_s},
        {u"crvlXexample/i5678"_s, std::nullopt},
    };
    for (const auto &[text, id] : rows)
        EXPECT_EQ(DesklineInvoiceFetcher::invoiceID(text, u"crvl.example"_s), id) << text.toStdString();
}

TEST(DesklineInvoice, SplitsCityAndState)
{
    const std::tuple<QString, QString, QString> rows[] = {
        {u"Asheville, NC"_s, u"Asheville"_s, u"NC"_s},
        {u"Portland ,  oregon"_s, u"Portland"_s, u"OR"_s},
        {u"Washington, District of Columbia"_s, u"Washington"_s, u"DC"_s},
        {u"Springfield, Lot 4, il"_s, u"Springfield, Lot 4"_s, u"IL"_s},
        {u"Toronto, Ontario"_s, u"Toronto"_s, u"Ontario"_s},
        {u"London"_s, u"London"_s, {}},
        {u"Reno,"_s, u"Reno"_s, {}},
        {{}, {}, {}},
    };
    for (const auto &[text, city, state] : rows)
        EXPECT_EQ(splitCityState(text), (std::pair{city, state})) << text.toStdString();
}

TEST(DesklineInvoice, SuggestsTheCustomsContents)
{
    using enum CustomsItemType;
    const std::pair<QStringList, std::optional<CustomsItemType>> rows[] = {
        {{u"1881-S Morgan Silver Dollar"_s}, silver},
        {{u"1928 Federal Reserve Note"_s}, currency},
        {{u"Confederate CURRENCY"_s, u"silver spoon"_s}, currency},
        {{u"Silver and Gold Set"_s}, gold},
        {{u"Note"_s, u"Gold Eagle"_s}, gold},
        {{u"Coin supplies"_s}, std::nullopt},
        {{}, std::nullopt},
    };
    for (const auto &[titles, type] : rows)
        EXPECT_EQ(invoiceOf(titles).suggestedCustomsType(), type) << titles.join(u'|').toStdString();
}

TEST(DesklineInvoice, SumsOnlyReadableAmounts)
{
    const std::pair<QStringList, std::optional<double>> rows[] = {
        {{u"$338.00"_s, u"74"_s}, 412},
        {{u"0.29"_s}, 0.29},
        {{u"$1,860.10"_s, u"$0.20"_s}, 1860.3},
        {{u"$338.00"_s, u"see note"_s}, std::nullopt},
        {{}, std::nullopt},
    };
    for (const auto &[totals, sum] : rows)
        EXPECT_EQ(invoiceOf(totals, totals).subtotal(), sum) << totals.join(u'|').toStdString();
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

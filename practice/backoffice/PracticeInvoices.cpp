#include "practice/backoffice/PracticeInvoices.h"

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

QList<PracticeInvoice> domesticInvoices()
{
    return {{.number = 48213,
             .about = u"flag, note, has tracking"_s,
             .shipTo = {.name = u"Eleanor Whitfield"_s,
                        .email = u"eleanor.whitfield@example.com"_s,
                        .street = {u"418 Montford Ave"_s, u"Apt 3B"_s},
                        .city = u"Asheville, NC"_s,
                        .zip = u"28801"_s,
                        .country = u"United States"_s,
                        .phone = u"828 555 0142"_s,
                        .company = u"Whitfield Coins"_s,
                        .codes = u"2AC14"_s},
             .items = {{u"1881-S Morgan Silver Dollar MS64"_s, u"2"_s, u"$338.00"_s},
                       {u"1923 Peace Dollar AU"_s, u"1"_s, u"$74.00"_s}},
             .notes = {{u"Ship to the apartment, not the shop. Customer is home after 4 pm."_s, u"r.odell"_s,
                        u"11/19/26"_s}},
             .tracking = u"9405511899560417228011"_s,
             .paid = u"$421.95"_s,
             .customer = 771,
             .customerCompany = u"Whitfield Rare Coins"_s},
            {.number = 48214,
             .about = u"nothing special"_s,
             .shipTo = {.name = u"Walter Brandt"_s,
                        .email = u"w.brandt@example.com"_s,
                        .street = {u"77 Larkspur Ln"_s},
                        .city = u"Boise, ID"_s,
                        .zip = u"83702"_s,
                        .country = u"United States"_s,
                        .phone = u"208 555 0177"_s},
             .items = {{u"1909 VDB Lincoln Cent MS63 RB"_s, u"1"_s, u"$42.00"_s}},
             .paid = u"$51.95"_s,
             .customer = 802},
            {.number = 48220,
             .about = u"three flags, two notes"_s,
             .shipTo = {.name = u"Marcus Delgado"_s,
                        .email = u"mdelgado@example.com"_s,
                        .street = {u"2205 Juniper St"_s},
                        .city = u"Tucson, AZ"_s,
                        .zip = u"85719-2204"_s,
                        .country = u"USA"_s,
                        .phone = u"(520) 555-0119"_s,
                        .codes = u"2ac14, arc14/QQ1"_s},
             .items = {{u"1964 Kennedy Half Dollar Roll"_s, u"3"_s, u"$525.00"_s}},
             .notes = {{u"Paid by wire."_s, u"d.marsh"_s, u"11/17/26"_s},
                       {u"Hold until Friday, then ship with 48214."_s, u"r.odell"_s, u"11/18/26"_s}},
             .tracking = u"--"_s,
             .paid = u"$534.95"_s,
             .customer = 640,
             .customerCompany = u"Delgado & Sons Numismatics"_s}};
}

QList<PracticeInvoice> foreignInvoices()
{
    return {{.number = 48377,
             .about = u"London, gold"_s,
             .shipTo = {.name = u"Harriet Ashcombe"_s,
                        .email = u"h.ashcombe@example.co.uk"_s,
                        .street = {u"14 Chandos Place"_s, u"Second floor"_s},
                        .city = u"London"_s,
                        .zip = u"WC2N 4HS"_s,
                        .country = u"United Kingdom"_s,
                        .phone = u"+44 20 7946 0123"_s},
             .items = {{u"1911 Gold Sovereign"_s, u"1"_s, u"$310.00"_s}},
             .shipping = u"USPS Priority International"_s,
             .shippingCost = u"$48.50"_s,
             .paid = u"$358.50"_s,
             .customer = 913},
            {.number = 48160,
             .about = u"Tokyo, bank notes"_s,
             .shipTo = {.name = u"Kenji Yamada"_s,
                        .email = u"k.yamada@example.jp"_s,
                        .street = {u"2-8-1 Nishi-Shinjuku"_s},
                        .city = u"Tokyo"_s,
                        .zip = u"163-8001"_s,
                        .country = u"Japan"_s,
                        .phone = u"+81 3 5555 0188"_s,
                        .company = u"Yamada Banknotes"_s},
             .items = {{u"Bank of Japan 10 Yen Note"_s, u"12"_s, u"$1,860.00"_s}},
             .shipping = u"FedEx International Priority"_s,
             .shippingCost = u"$62.00"_s,
             .paid = u"$1,922.00"_s,
             .customer = 377,
             .customerCompany = u"Yamada Banknotes"_s},
            {.number = 48304,
             .about = u"Hebrew"_s,
             .shipTo = {.name = u"נועה לוי"_s,
                        .email = u"noa.levi@example.co.il"_s,
                        .street = {u"רחוב דיזנגוף 50"_s, u"דירה 7"_s},
                        .city = u"תל אביב-יפו"_s,
                        .zip = u"6433222"_s,
                        .country = u"Israel"_s,
                        .phone = u"+972 3 555 0142"_s,
                        .company = u"מטבעות לוי בע\"מ"_s},
             .items = {{u"1967 Israel 10 Lirot Victory"_s, u"1"_s, u"$95.00"_s}},
             .notes = {{u"נא להתקשר לפני המשלוח (call first)"_s, u"d.marsh"_s, u"11/20/26"_s}},
             .shipping = u"USPS Priority International"_s,
             .shippingCost = u"$51.00"_s,
             .paid = u"$146.00"_s,
             .customer = 915,
             .customerCompany = u"מטבעות לוי בע\"מ"_s}};
}

PracticeInvoice longInvoice()
{
    constexpr qsizetype longLine = 120;
    constexpr qsizetype longNote = 4000;
    constexpr int manyItems = 60;
    PracticeInvoice invoice = {
        .number = 48301,
        .about = u"very long"_s,
        .shipTo = {.name = u"Maximiliana-Theodora "_s.repeated(6).left(longLine),
                   .email = u"max@example.com"_s,
                   .street = {u"12345 Old Plank Road North-West "_s.repeated(4).left(longLine)},
                   .city = u"Llanfairpwllgwyngyll Township, PA"_s,
                   .zip = u"19104"_s,
                   .country = u"United States"_s,
                   .phone = u"215 555 0100"_s},
        .notes = {{u"Wrap every coin on its own. "_s.repeated(143).left(longNote), u"r.odell"_s, u"11/20/26"_s}},
        .paid = u"$609.95"_s,
        .customer = 844};
    for (int item = 1; item <= manyItems; ++item)
        invoice.items.append({u"Wheat Cent, date %1"_s.arg(1908 + item % 50), u"1"_s, u"$10.00"_s});
    return invoice;
}

PracticeInvoice hostileInvoice()
{
    const auto hostile = [](const QString &field) {
        return u"%1 <script>document.title=\"broken\"</script><img src=x onerror=\"document.title='broken'\">"
               "\"' </td></tr></table> &amp; &lt;b> {{7*7}} ${7*7} %2 \\"_s.arg(field);
    };
    return {.number = 48302,
            .about = u"markup in every field"_s,
            .shipTo = {.name = hostile(u"name"_s),
                       .email = hostile(u"email"_s),
                       .street = {hostile(u"street"_s), hostile(u"second line"_s)},
                       .city = hostile(u"city"_s),
                       .zip = hostile(u"zip"_s),
                       .country = hostile(u"country"_s),
                       .phone = hostile(u"phone"_s),
                       .company = hostile(u"company"_s),
                       .codes = hostile(u"codes"_s)},
            .items = {{hostile(u"title"_s), hostile(u"quantity"_s), hostile(u"total"_s)}},
            .notes = {{hostile(u"note"_s), hostile(u"author"_s), hostile(u"date"_s)}},
            .tracking = hostile(u"tracking"_s),
            .shipping = hostile(u"shipping"_s),
            .shippingCost = hostile(u"cost"_s),
            .paid = hostile(u"paid"_s),
            .customer = 666,
            .customerCompany = hostile(u"customer's company"_s)};
}

QList<PracticeInvoice> oddInvoices()
{
    return {{.number = 48300, .about = u"no buyer"_s, .tracking = u"--"_s},
            longInvoice(),
            hostileInvoice(),
            {.number = 48303,
             .about = u"billing address, too"_s,
             .shipTo = {.name = u"Ingrid Halvorsen"_s,
                        .email = u"ingrid@example.com"_s,
                        .street = {u"901 SE Alder St"_s},
                        .city = u"Portland, Oregon"_s,
                        .zip = u"97214"_s,
                        .phone = u"503 555 0133"_s},
             .billTo = {{.name = u"Halvorsen Estate"_s,
                         .email = u"billing@example.com"_s,
                         .street = {u"PO Box 40"_s},
                         .city = u"Seattle, WA"_s,
                         .zip = u"98101"_s,
                         .country = u"Canada"_s,
                         .phone = u"206 555 0199"_s,
                         .company = u"Billing Company LLC"_s,
                         .codes = u"BILL1"_s}},
             .items = {{u"1936 Oregon Trail Half Dollar"_s, u"1"_s, u"$165.00"_s}},
             .paid = u"$174.95"_s,
             .customer = 859},
            {.number = 48305,
             .about = u"hardly anything"_s,
             .shipTo = {.name = u"Otis Pemberton"_s, .street = {u"3 Ferry Rd"_s}},
             .hasOnlyAddress = true}};
}

} // namespace

QList<PracticeInvoice> practiceInvoices()
{
    return domesticInvoices() + foreignInvoices() + oddInvoices();
}

} // namespace parcelory

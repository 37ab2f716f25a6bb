#include "practice/backoffice/BackOfficePages.h"

#include "practice/backoffice/BackOfficeScenario.h"
#include "practice/backoffice/PracticeInvoices.h"

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

// A text may hold a "%1" itself, so never chain arg() here.

constexpr QLatin1StringView pageFrame(R"HTML(<!DOCTYPE html>
<html><head><meta charset="utf-8"><title>Deskline - %1</title>
<style>body{font:13px Verdana,sans-serif;margin:16px}table{border-collapse:collapse;margin-bottom:12px}
td,th{border:1px solid #bbb;padding:3px 8px;text-align:left}h1{font-size:18px}.menu{background:#dde6ee}</style></head>
<body>
%2</body></html>
)HTML");

constexpr QLatin1StringView signInFields(R"HTML(<p>User: <input type="text" name="user" id="user"></p>
<p>Password: <input type="password" name="password" id="password"></p>
)HTML");

// A page without a form sends its fields through a temporary form.
constexpr QLatin1StringView formlessSignIn(R"HTML(<p><button type="button" onclick="signIn()">Sign In</button></p>
<script>
function signIn() {
    var form = document.createElement("form");
    form.method = "post";
    form.action = "login.php";
    ["user", "password"].forEach(function (name) {
        var field = document.createElement("input");
        field.type = "hidden";
        field.name = name;
        field.value = document.getElementById(name).value;
        form.appendChild(field);
    });
    document.body.appendChild(form);
    form.submit();
}
</script>
)HTML");

constexpr QLatin1StringView menu(R"HTML(<table class="menu"><tr><td><a href="dashboard.php">Dashboard</a></td>
<td><a href="logout.php">Sign Out</a></td></tr></table>
)HTML");

QString page(const QString &title, const QString &body)
{
    return pageFrame.arg(title, body);
}

QString pageWithMenu(const QString &title, const QString &body)
{
    return page(title, menu + body);
}

QString row(const QStringList &cells)
{
    return u"<tr>"_s + cells.join(QString()) + u"</tr>\n"_s;
}

QString cell(const QString &html)
{
    return u"<td>"_s + html + u"</td>"_s;
}

QString headings(const QStringList &titles)
{
    return u"<tr><th>"_s + titles.join(u"</th><th>"_s) + u"</th></tr>\n"_s;
}

QString table(const QString &rows)
{
    return u"<table>\n"_s + rows + u"</table>\n"_s;
}

QString escaped(const QString &text)
{
    return text.toHtmlEscaped();
}

/// A labeled cell. As on the real page, some labels are followed by a non-breaking space.
enum class Space { plain, unbreakable };
QString labeled(const QString &label, const QString &html, Space space = Space::plain)
{
    return cell(u"<b>%1:</b>%2%3"_s.arg(label, space == Space::plain ? u" "_s : u"&nbsp;"_s, html));
}

QString streetOf(const PracticeInvoice::Buyer &buyer)
{
    return escaped(buyer.street.join(u'\n')).replace(u'\n', u"<br>"_s);
}

QString buyerTable(const QString &heading, const PracticeInvoice::Buyer &buyer)
{
    return u"<h2>%1</h2>\n"_s.arg(heading) +
           table(row({labeled(u"Name"_s, escaped(buyer.name)),
                      labeled(u"Email"_s, escaped(buyer.email), Space::unbreakable)}) +
                 row({labeled(u"Address"_s, streetOf(buyer)), labeled(u"City"_s, escaped(buyer.city))}) +
                 row({labeled(u"Zip"_s, escaped(buyer.zip), Space::unbreakable),
                      labeled(u"Country"_s, escaped(buyer.country))}) +
                 row({labeled(u"Phone"_s, escaped(buyer.phone), Space::unbreakable),
                      labeled(u"Company Name"_s, escaped(buyer.company))}) +
                 row({labeled(u"Codes"_s, escaped(buyer.codes), Space::unbreakable), cell(QString())}));
}

QString paymentTable(const PracticeInvoice &invoice)
{
    const QString shipping = u"<span onclick=\"show_shipping_form(%1)\">%2</span>"_s.arg(
        QString::number(invoice.number), escaped(invoice.shipping));
    return table(row({cell(u"Shipping Method"_s), cell(shipping), cell(escaped(invoice.shippingCost))})) +
           table(row({cell(u"Shipment Tracking No"_s), cell(escaped(invoice.tracking))}) +
                 row({cell(u"Paid amount"_s), cell(escaped(invoice.paid))}));
}

QString itemTable(const PracticeInvoice &invoice)
{
    QString rows = headings(
        {u"Invoice ID"_s, u"Stock No"_s, u"Title"_s, u"Location"_s, u"Qty"_s, u"Price List"_s, u"Taxed"_s, u"Total"_s});
    int position = 0;
    for (const PracticeInvoice::Item &item : invoice.items)
        rows += row({cell(QString::number(invoice.number)), cell(u"C-%1"_s.arg(++position)), cell(escaped(item.title)),
                     cell(u"Vault 2"_s), cell(escaped(item.quantity)), cell(u"Retail"_s), cell(u"No"_s),
                     cell(escaped(item.total))});
    return table(rows);
}

QString noteTable(const PracticeInvoice &invoice)
{
    QString rows = headings({u"Invoice Notes"_s, u"Kind"_s, u"Created Name"_s, u"Created Date"_s});
    for (const PracticeInvoice::Note &note : invoice.notes)
        rows += row({cell(escaped(note.text)), cell(u"Staff"_s), cell(escaped(note.by)), cell(escaped(note.date))});
    return table(rows);
}

QString invoiceTables(const PracticeInvoice &invoice)
{
    QString tables = buyerTable(u"Ship To"_s, invoice.shipTo);
    if (invoice.billTo)
        tables += buyerTable(u"Bill To"_s, *invoice.billTo);
    if (invoice.customer > 0)
        tables += u"<p><a href=\"users.php?subcmd=_update-customer&amp;id=%1\">Update customer</a></p>\n"_s.arg(
            invoice.customer);
    return tables + paymentTable(invoice) + itemTable(invoice) + noteTable(invoice);
}

} // namespace

QString signInPage(BackOfficeScenario::LoginPage kind, bool isRefused)
{
    using enum BackOfficeScenario::LoginPage;
    const QString heading = u"<h1>Deskline</h1>\n"_s;
    if (kind == withoutFields)
        return page(u"Sign In"_s, heading + u"<p>Signing in is not possible at the moment.</p>\n"_s);
    const QString refusal = isRefused ? u"<p>Wrong user name or password.</p>\n"_s : QString();
    if (kind == outsideForm)
        return page(u"Sign In"_s, heading + refusal + signInFields + formlessSignIn);
    return page(u"Sign In"_s, heading + refusal + u"<form method=\"post\" action=\"login.php\">\n"_s + signInFields +
                                  u"<p><button type=\"submit\">Sign In</button></p>\n</form>\n"_s);
}

QString dashboardPage(const QString &user, const QList<PracticeInvoice> &invoices)
{
    QString rows = headings({u"Invoice"_s, u"Buyer"_s});
    for (const PracticeInvoice &invoice : invoices) {
        const QString link = u"<a href=\"buyers.php?subcmd=_detail_invoice&amp;id=%1\">%1</a>"_s.arg(invoice.number);
        rows += row({cell(link), cell(escaped(invoice.shipTo.name))});
    }
    return pageWithMenu(u"Dashboard"_s, u"<h1>Welcome, "_s + escaped(user) + u"</h1>\n"_s + table(rows));
}

QString invoicePage(const PracticeInvoice &invoice, bool hangsScript)
{
    const PracticeInvoice::Buyer &buyer = invoice.shipTo;
    const QString script = hangsScript ? u"<script>while(true){}</script>\n"_s : QString();
    const QString onlyAddress =
        table(row({labeled(u"Name"_s, escaped(buyer.name)), labeled(u"Address"_s, streetOf(buyer))}));
    const QString tables = invoice.hasOnlyAddress ? onlyAddress : invoiceTables(invoice);
    return pageWithMenu(u"Invoice %1"_s.arg(invoice.number),
                        u"<h1>Invoice %1</h1>\n"_s.arg(invoice.number) + tables + script);
}

QString customerPage(const PracticeInvoice &invoice, bool hasCompanyField)
{
    const auto field = [](const QString &title, const QString &name, const QString &value) {
        return row({cell(title),
                    cell(u"<input type=\"text\" id=\"%1\" name=\"%1\" value=\"%2\">"_s.arg(name, escaped(value)))});
    };
    QString rows = field(u"Buyer"_s, u"buyername"_s, invoice.shipTo.name);
    if (hasCompanyField)
        rows += field(u"Company"_s, u"companyname"_s, invoice.customerCompany);
    return pageWithMenu(u"Customer"_s, u"<h1>Customer %1</h1>\n"_s.arg(invoice.customer) + table(rows));
}

QString messagePage(const QString &sentence)
{
    return page(u"Message"_s, u"<h1>Deskline</h1>\n<p>"_s + escaped(sentence) + u"</p>\n"_s);
}

} // namespace parcelory

// The scripts that fill in and read the back office's pages, on the real web engine and on pages as they are written
// by hand: layout tables, hidden rows, non-breaking spaces, several forms.

#include "backoffice/DesklineAuth.h"
#include "backoffice/Script.h"
#include "core/Json.h"
#include "core/Task.h"
#include "platform/WebEngineSession.h"
#include "support/Printing.h"
#include "support/RunTask.h"

#include <QDeadlineTimer>
#include <gmock/gmock.h>
#undef signals
#include "practice/LoopbackServer.h"

#include <string>
#include <utility>

namespace parcelory::test {
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

extern QString webFolder;

namespace {

class BackOfficeScripts : public testing::Test {
protected:
    BackOfficeScripts()
    {
        engine.setDelegate({.allows = [](const QUrl &) { return true; }, .onFinished = {}});
    }

    QVariant evaluate(const QString &expression) { return runTask(engine.evaluate(expression)); }

    /// Shows a page and waits for it.
    void show(const std::string &body)
    {
        const QByteArray html = "<!DOCTYPE html><meta charset=utf-8><body>" + QByteArray::fromStdString(body) +
                                "<p id=end" + QByteArray::number(++m_pages) + ">";
        engine.load(QUrl(u"data:text/html;base64,"_s + QString::fromLatin1(html.toBase64())), 60s);
        const QString shown =
            u"document.readyState === 'complete' && !!document.getElementById('end%1')"_s.arg(m_pages);
        const QDeadlineTimer patience(60s);
        while (!evaluate(shown).toBool())
            ASSERT_FALSE(patience.hasExpired()) << body;
    }

    WebEngineSession engine{{.folder = webFolder, .reach = WebEngineSession::Reach::loopbackOnly}};

private:
    int m_pages = 0;
};

/// The page's title becomes the list of what a script-driven page notices.
const std::string listener = R"HTML(<script>
document.addEventListener('input', e => { document.title += `${e.target.name}=${e.target.value};`; });
document.addEventListener('submit', e => { e.preventDefault(); document.title += `submit ${e.target.id};`; });
</script>)HTML";

/// Leaves out what is empty.
std::string withoutEmpty(const Json &page)
{
    Json kept = Json::object();
    for (const auto &[key, value] : page.items()) {
        if (!value.empty() && value != "")
            kept[key] = value;
    }
    return kept.dump();
}

} // namespace

TEST_F(BackOfficeScripts, FindTheSignInFormOfAnyPage)
{
    struct Row {
        const char *what;
        std::string page, result, noticed;
    };
    const std::string typed = "name=d@e.org;pass=secret;", search = "<form id=search><input type=text name=q></form>";
    const Row rows[] = {
        {"fields without a type, and a button that hides the form's function",
         "<form id=f><input type=checkbox><input name=name><input type=password name=pass><input type=submit "
         "name=submit></form>",
         "submitted", typed + "submit f;"},
        {"an e-mail field, after another form",
         search + "<form id=f><input type=hidden><input type=EMAIL name=name><input type=Password name=pass></form>",
         "submitted", typed + "submit f;"},
        {"a password field outside the only form",
         "<form id=f><input type=text name=name></form><input type=password name=pass>", "submitted",
         typed + "submit f;"},
        {"a form that a script draws",
         "<div id=d></div><script>d.innerHTML = '<form id=f><input name=name><input type=password name=pass>'</script>",
         "submitted", typed + "submit f;"},
        {"no form", "<input type=text name=name><input type=password name=pass>", "no-form", typed},
        {"no password field", search + "<form><input type=text></form>", "no-password-field", ""},
        {"no user field in the form", search + "<form><input type=number><input type=password></form>", "no-user-field",
         ""},
    };
    for (const Row &row : rows) {
        show(listener + row.page);
        const QString call = scriptText(u"fill-login.js"_s) + u"('d@e.org', 'secret', location.href)"_s;
        EXPECT_EQ(evaluate(call).toString().toStdString(), row.result) << row.what;
        EXPECT_EQ(evaluate(u"document.title"_s).toString().toStdString(), row.noticed) << row.what;
    }
}

TEST_F(BackOfficeScripts, KnowAPageThatOffersToSignOut)
{
    const std::pair<std::string, bool> rows[] = {
        {"<a href=/>Sign Out</a>", true},
        {"<a href=/>Log&nbsp;out</a>", true},
        {"<button>sign-out</button>", true},
        {"<a href='/staff/logout.php'><img alt='' width=9 height=9></a>", true},
        {"<a href='/staff/logout.php' style='display:none'>Logout</a>", false},
        {"<form action=/staff/login.php>Sign In</form>", false},
    };
    for (const auto &[page, offers] : rows) {
        show(page);
        EXPECT_EQ(evaluate(DesklineAuth::signOutProbe), QVariant(offers)) << page;
    }
}

TEST_F(BackOfficeScripts, FillInThePasswordOnlyAtTheBackOfficesOwnAddress)
{
    LoopbackServer server("back office");
    server.start([](const httplib::Request &, httplib::Response &answer) {
        answer.set_content("<form onsubmit='return false'><input id=name><input type=password id=pass></form>",
                           "text/html");
    });
    const QUrl page(QString::fromStdString(server.base()) + u"staff/login.php"_s);
    engine.load(page, 60s);
    const QDeadlineTimer patience(60s);
    while (!evaluate(u"document.readyState === 'complete' && !!document.getElementById('pass')"_s).toBool())
        ASSERT_FALSE(patience.hasExpired());
    QUrl otherPort = page, encrypted = page, otherHost = page;
    otherPort.setPort(page.port() == 1024 ? 1025 : 1024);
    encrypted.setScheme(u"https"_s);
    otherHost.setHost(u"localhost"_s);
    const std::pair<QUrl, QString> rows[] = {{otherPort, u"wrong-address"_s},
                                             {encrypted, u"wrong-address"_s},
                                             {otherHost, u"wrong-address"_s},
                                             {page.resolved(QUrl(u"/"_s)), u"submitted"_s}};
    for (const auto &[base, result] : rows) {
        const QString call = scriptText(u"fill-login.js"_s) + u"('dana', 'secret', '%1')"_s.arg(base.toString());
        EXPECT_EQ(evaluate(call).toString(), result) << base.toString().toStdString();
        EXPECT_EQ(evaluate(u"document.getElementById('pass').value"_s).toString(),
                  result == u"submitted" ? u"secret"_s : QString());
    }
}

TEST_F(BackOfficeScripts, ReadInvoicesFromTablesOfEveryKind)
{
    struct Row {
        const char *what;
        std::string page, read;
    };
    const auto table = [](const std::string &rows) { return "<table>" + rows + "</table>"; };
    const std::string hidden = "<tr style='display:none'>";
    const std::string itemHead = "<tr><th>Invoice&nbsp;ID<th>2<th>3<th>4<th>5<th>6<th>7<th>8</tr>";
    const std::string item = "<tr><td>1<td>2<td>Dime&nbsp;roll<td>4<td>5<td>6<td>7<td>&nbsp;$8.00</tr>";
    const std::string noteHead = "<tr><th>Invoice Notes<th>Kind<th>Created Name<th>Date</tr>";
    const Row rows[] = {
        {"cells inside layout cells",
         table("<tr><td>" +
               table("<tr><td>Name: Ann<td>City:&nbsp;Elk&nbsp;City, OK&nbsp;"
                     "<tr><td>Shipment Tracking No<td>94") +
               "<td>menu"),
         R"({"fields":{"Name":"Ann","City":"Elk City, OK"},"tracking":"94"})"},
        {"a label's own cell with a table for the value",
         table("<tr><td>Address:" + table("<tr><td>1 Main St<br>Apt&nbsp;2") + "<td>Phone:<td>Phone: 5"),
         R"({"fields":{"Address":"1 Main St\nApt 2","Phone":""}})"},
        {"a label's own cell with another label inside it",
         table("<tr><td>Address: 1 Main St<br>Apt 2" + table("<tr><td>Phone: 5<td>Zip: 97702") +
               "<tr><td>City:" + table("<tr><td>City: Bend, OR") + "<tr><td>Shipment Tracking No" +
               table("<tr><td>Shipment Tracking No of the carrier") + "<td>94"),
         R"({"fields":{"Address":"1 Main St\nApt 2","Phone":"5","Zip":"97702","City":"Bend, OR"},"tracking":"94"})"},
        {"heads as cells", table("<tr><th>Name: Ann<th>Company Name: Ann's<tr><th>Paid&nbsp;amount:<th>$1&nbsp;USD"),
         R"({"fields":{"Name":"Ann","Company Name":"Ann's"},"paid":"$1 USD"})"},
        {"hidden rows", table(hidden + "<td>Name: template<tr><td>Name: Ann<td style='display:none'>Zip: 1"),
         R"({"fields":{"Name":"Ann"}})"},
        {"an old name that is not visible",
         table("<tr style='visibility:hidden'><td>Name: old<tr style='visibility:collapse'><td>Name: older"
               "<tr><td>Name: <s hidden>Bob</s>Ann<tr hidden><td>Paid amount<td>$1<tr><td>Paid amount<td>$2"),
         R"({"fields":{"Name":"Ann"},"paid":"$2"})"},
        {"the first value of each label, and of the payment the first that is not empty",
         table("<tr><td>Name: Ann<td>Name: Bob<td>A Zip: 1<tr><td>Shipment Tracking No<td><td>x"
               "<tr><td>Shipment Tracking No<td>94<tr><td>Shipment Tracking No<td>95"
               "<tr><td>Paid amount<td>$1<tr><td>Paid amount<td>$2<tr><td>Paid amount"),
         R"({"fields":{"Name":"Ann"},"tracking":"94","paid":"$1"})"},
        {"a form between two cells",
         table("<tr><td>Paid amount</td><form></form><td>$5<tr><td>Shipment Tracking No</td><form></form>"),
         R"({"paid":"$5"})"},
        {"items",
         table(hidden + "<td>Template</tr>" + itemHead + hidden + item.substr(4) + item +
               "<tr><td colspan=6>Sum<td>7</tr>" + item),
         R"({"items":[{"title":"Dime roll","qty":"5","total":"$8.00"},{"title":"Dime roll","qty":"5","total":"$8.00"}]})"},
        {"no items and notes without their heads",
         table(item + item) + table("<tr><th>Invoice Notes<th>2<th>3<th>4" + item) +
             table("<tr><th>Created Name<th>2<th>3<th>4" + item),
         "{}"},
        {"notes that a script draws",
         "<div id=d></div><script>d.innerHTML = `" +
             table(noteHead + "<tr><td>&nbsp;<td>2<td>3<td>4<tr><td colspan=4>All<tr><td>Call<td>2<td>r.o<td>11/1") +
             "`</script>",
         R"({"notes":[{"text":"Call","by":"r.o","date":"11/1"}]})"},
        {"the shipping method and its cost",
         "<span onclick='other()'>x</span>" +
             table("<tr><th><b><span onclick='return show_shipping_form(7)'>USPS&nbsp;Priority</span></b><td>$9"
                   "<tr><td><span onclick='show_shipping_form(8)'>FedEx</span>"),
         R"({"shipMethod":"USPS Priority","shipCost":"$9"})"},
        {"a shipping method without a cell", "<span onclick='show_shipping_form()'>USPS</span>",
         R"({"shipMethod":"USPS"})"},
        {"the customer's number",
         "<a href='users.php?id=1'>x</a><a href='users.php?v=2&subcmd=_update-customer&id=771'>x</a>"
         "<a href='users.php?subcmd=_update-customer&id=772'>x</a>",
         R"({"profileUserID":"771"})"},
        {"no customer's number", "<a href='users.php?v=2&subcmd=_update-customer&id='>x</a>", "{}"},
    };
    for (const Row &row : rows) {
        show(row.page);
        const QString answer = evaluate(scriptText(u"read-invoice.js"_s) + u"()"_s).toString();
        ASSERT_FALSE(answer.isEmpty()) << row.what;
        EXPECT_EQ(withoutEmpty(parseJson(answer.toUtf8())), row.read) << row.what;
    }
}

} // namespace parcelory::test

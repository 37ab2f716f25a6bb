// The scripts that fill in and read the back office's pages, on the real web engine and on pages as they are written
// by hand: layout tables, hidden rows, non-breaking spaces, several forms.

#include "backoffice/DesklineAuth.h"
#include "backoffice/Script.h"
#include "platform/WebEngineSession.h"
#include "support/RunTask.h"
#include "support/Table.h"

#include <QDeadlineTimer>
#undef signals
#include "practice/LoopbackServer.h"

namespace parcelory::test {

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
        waitFor(u"end%1"_s.arg(m_pages));
    }
    /// Waits until the page is loaded and has an element with this id.
    void waitFor(const QString &id)
    {
        const QString shown = u"document.readyState === 'complete' && !!document.getElementById('%1')"_s.arg(id);
        const QDeadlineTimer patience(60s);
        while (!evaluate(shown).toBool())
            ASSERT_FALSE(patience.hasExpired()) << id.toStdString();
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
Json withoutEmpty(const Json &page)
{
    Json kept = Json::object();
    for (const auto &[key, value] : page.items()) {
        if (!value.empty() && value != "")
            kept[key] = value;
    }
    return kept;
}

} // namespace

TEST_F(BackOfficeScripts, FindTheSignInFormOfAnyPage)
{
    const QString call = scriptText(u"fill-login.js"_s) + u"('d@e.org', 'secret', location.href)"_s;
    for (const Json &row : table(u"back-office-pages"_s, "sign-in")) {
        show(listener + row[1].get<std::string>());
        EXPECT_EQ(evaluate(call).toString(), text(row[2])) << row[0];
        EXPECT_EQ(evaluate(u"document.title"_s).toString(), text(row[3])) << row[0];
    }
}

TEST_F(BackOfficeScripts, KnowAPageThatOffersToSignOut)
{
    for (const Json &row : table(u"back-office-pages"_s, "sign-out")) {
        show(row[0].get<std::string>());
        EXPECT_EQ(evaluate(DesklineAuth::signOutProbe), QVariant(row[1].get<bool>())) << row;
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
    waitFor(u"pass"_s);
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
    for (const Json &row : table(u"back-office-pages"_s, "invoices")) {
        show(row[1].get<std::string>());
        const QString answer = evaluate(scriptText(u"read-invoice.js"_s) + u"()"_s).toString();
        ASSERT_FALSE(answer.isEmpty()) << row[0];
        EXPECT_EQ(withoutEmpty(parseJson(answer.toUtf8())), row[2]) << row[0];
    }
}

} // namespace parcelory::test

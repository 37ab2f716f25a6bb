#include "practice/backoffice/PracticeBackOffice.h"
#include "practice/backoffice/PracticeInvoices.h"
#include "support/Test.h"

#include <httplib.h>

#include <cstddef>
#include <string>
#include <thread>

namespace parcelory::test {
namespace {

constexpr auto invoicePath = "/staff/buyers.php?subcmd=_detail_invoice&id=";

class BackOfficeTest : public testing::Test {
protected:
    PracticeBackOffice office;
    httplib::Client client{"127.0.0.1", office.baseUrl().port()};

    httplib::Result signIn(const QString &password, const std::string &user = "dana.marsh")
    {
        const httplib::Params fields = {{"user", user}, {"password", password.toStdString()}};
        httplib::Result answer = client.Post("/staff/login.php", fields);
        if (answer && answer->has_header("Set-Cookie"))
            client.set_default_headers({{"Cookie", "a=b; " + answer->get_header_value("Set-Cookie")}});
        return answer;
    }

    std::string invoice(int number) { return client.Get(invoicePath + std::to_string(number))->body; }
};

} // namespace

TEST_F(BackOfficeTest, ShowsPagesOnlyDuringASession)
{
    const auto expectSignedOut = [this] {
        for (const std::string path : {"/staff/dashboard.php", "/staff/buyers.php?subcmd=_detail_invoice&id=48213",
                                       "/staff/users.php?subcmd=_update-customer&id=771"}) {
            const httplib::Result answer = client.Get(path);
            EXPECT_EQ(answer->status, 302) << path;
            EXPECT_EQ(answer->get_header_value("Location"), "/staff/login.php") << path;
        }
    };
    expectSignedOut();
    const QString strange = u"a+b \"'\\</script>%41&é"_s;
    office.setPassword(strange);
    EXPECT_THAT(signIn(PracticeBackOffice::password)->body, HasSubstr("Wrong user name or password."));
    EXPECT_EQ(signIn(strange, "")->status, 200);
    expectSignedOut();

    EXPECT_EQ(signIn(strange, "<b>")->get_header_value("Location"), "/staff/dashboard.php");
    EXPECT_THAT(client.Get("/staff/dashboard.php")->body, HasSubstr("Welcome, &lt;b&gt;"));
    EXPECT_THAT(client.Get("/staff/users.php?subcmd=_update-customer&id=771")->body,
                HasSubstr("id=\"companyname\" name=\"companyname\" value=\"Whitfield Rare Coins\""));
    EXPECT_THAT(invoice(99999), HasSubstr("Invoice 99999 was not found."));
    EXPECT_EQ(client.Get("/staff/")->status, 404);
    office.setScenario({.status = 500});
    EXPECT_EQ(client.Get(invoicePath + std::string("48213"))->status, 500);
    office.setScenario({});
    office.endSessions();
    expectSignedOut();
    signIn(strange);
    EXPECT_EQ(client.Get("/staff/logout.php")->status, 302);
    expectSignedOut();
}

TEST_F(BackOfficeTest, ShowsEveryInvoiceWithEscapedTexts)
{
    signIn(PracticeBackOffice::password);
    for (const PracticeInvoice &sample : practiceInvoices())
        EXPECT_THAT(invoice(sample.number), HasSubstr(sample.shipTo.name.toHtmlEscaped().toStdString()));
    EXPECT_THAT(invoice(48213), HasSubstr("418 Montford Ave<br>Apt 3B</td>"));
    for (const std::string &page : {invoice(48302), client.Get("/staff/users.php?subcmd=_update-customer&id=666")->body,
                                    client.Get("/staff/dashboard.php")->body}) {
        EXPECT_THAT(page, HasSubstr("&lt;script&gt;document.title=&quot;broken&quot;"));
        EXPECT_THAT(page, HasSubstr("&amp;amp; &amp;lt;b&gt; {{7*7}} ${7*7} %2 \\"));
        EXPECT_THAT(page, Not(HasSubstr("<script")));
        EXPECT_THAT(page, Not(HasSubstr("<img")));
    }
}

TEST(PracticeBackOffice, StopsInTheMiddleOfAPage)
{
    auto office = std::make_unique<PracticeBackOffice>();
    office->setScenario({.neverFinishes = true});
    httplib::Client client("127.0.0.1", office->baseUrl().port());
    std::thread stopping;
    const httplib::Result answer = client.Get("/staff/login.php", [&](const char *, size_t) {
        if (!stopping.joinable())
            stopping = std::thread([&] { office.reset(); });
        return true;
    });
    stopping.join();
    EXPECT_FALSE(answer);
}

} // namespace parcelory::test

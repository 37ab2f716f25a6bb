#include "app/AppState.h"
#include "backoffice/DesklineAuth.h"
#include "backoffice/DesklineInvoice.h"
#include "shell/ErrorLog.h"
#include "support/BackOfficeDesk.h"
#include "support/FakePlatform.h"
#include "support/Printing.h"
#include "support/RunTask.h"

#include <gmock/gmock.h>

#include <chrono>

namespace parcelory::test {
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using testing::IsEmpty;

namespace {

class InvoiceFlowTest : public BackOfficeDesk {
protected:
    void scan(const QString &text)
    {
        app->handleInvoiceScan(text);
        runUntil([this] { return !app->scanBusy; }, &clock);
        settle();
    }
};

const QString invoicePage =
    uR"({"fields":{"Name":"Eleanor Whitfield","Codes":"QQ1"},"items":[],"notes":[],"shipMethod":"","shipCost":"",)"
    R"("tracking":"--","paid":"","profileUserID":""})"_s;

} // namespace

TEST_F(InvoiceFlowTest, FillsTheLabelFromAScanAndReportsEveryFailure)
{
    showPage(false, false, invoicePage);
    scan(u"48213"_s);
    EXPECT_THAT(web.loaded, IsEmpty()) << "a scan before the sign-in loads nothing";
    app->flow = AppFlow::main;
    scan(u"012"_s);
    EXPECT_EQ(app->scanStatus.value(), u"\"012\" doesn't look like an invoice QR code or number."_s);
    EXPECT_EQ(app->scanStatusKind.value(), StatusKind::failure);
    runUntil([this] { return !errors->entries().isEmpty(); });
    EXPECT_EQ(errors->entries().first().context, u"Deskline Invoice"_s);

    QStringList heard;
    QObject here;
    QObject::connect(app.get(), &AppState::scanFailed, &here, [&](const QString &text) { heard += text; });
    for (const QString &text : {u"48213"_s, u"i48213"_s, u"48220"_s}) // the second is a double scan
        app->handleInvoiceScan(text);
    EXPECT_EQ(heard, QStringList{u"Invoice 48220 ignored — still loading 48213."_s});
    runUntil([this] { return !app->scanBusy; }, &clock);
    settle();
    prompts.alerts.clear();

    app->tab = MainTab::settings;
    scan(u"https://crvl.example/i48213"_s);
    EXPECT_EQ(app->scanStatus.value(), u"Invoice 48213: Eleanor Whitfield — label filled."_s);
    EXPECT_EQ(app->tab.value(), MainTab::newLabel);
    EXPECT_EQ(app->draftReference.value(), u"48213"_s);
    EXPECT_EQ(app->draftTo.value().country, u"US"_s);
    EXPECT_EQ(app->scannedInvoice.value()->tracking, QString());
    ASSERT_EQ(prompts.alerts.size(), 1);
    EXPECT_EQ(prompts.alerts[0].first, u"Check Invoice 48213"_s);

    struct Row {
        QString page;
        bool form, crashed;
        QString error;
    };
    const QString noBuyer = u"Invoice 4900 loaded but no buyer details were found on the page."_s;
    const Row rows[] = {
        {u"{}"_s, true, false, u"The deskline session has expired — sign out of Parcelory and sign back in."_s},
        {u"{}"_s, false, false, noBuyer},
        {u"[1]"_s, false, false, noBuyer},
        {u"{\"fields\":{\"Name\":7}}"_s, false, false, noBuyer},
        {u"{\"fields\":{\"Name\":\"\"}}"_s, false, false, noBuyer},
        {{}, true, false, u"The deskline session has expired — sign out of Parcelory and sign back in."_s},
        {{},
         false,
         false,
         u"Deskline is responding slowly — invoice 4900 didn't load after 45 seconds. Try again in a moment."_s},
        {{}, false, true, u"The page of invoice 4900 stopped working while it was read — scan the invoice again."_s},
    };
    for (const Row &row : rows) {
        web.answer = [&](const QString &expression) -> QVariant {
            web.crashed = row.crashed;
            if (expression == DesklineAuth::loginFormProbe)
                return row.form;
            return isReadyProbe(expression) ? QVariant(!row.page.isEmpty()) : QVariant(row.page);
        };
        scan(u"i4900"_s);
        EXPECT_EQ(app->scanStatus.value(), row.error);
        EXPECT_EQ(errors->entries().first().context, u"Deskline Invoice 4900"_s);
        EXPECT_EQ(errors->entries().first().detail, row.error);
        EXPECT_EQ(app->draftReference.value(), u"48213"_s) << "a failed scan leaves the draft";
    }
    showPage(false, false, invoicePage);
    app->handleInvoiceScan(u"48300"_s);
    app->handleInvoiceScan(u"48301"_s);
    EXPECT_TRUE(app->scanStatus.value().contains(u"48300"_s)) << "one scan at a time";
    runUntil([this] { return !app->scanBusy; }, &clock);
    settle();
    EXPECT_EQ(app->draftReference.value(), u"48300"_s);
    app->signOut();
    EXPECT_FALSE(app->scannedInvoice.value()) << "the next clerk did not ask for it";
}

TEST_F(InvoiceFlowTest, WaitsTwentySecondsForTheCustomersPage)
{
    const QString page = uR"({"fields":{"Name":"Ann","Company Name":"%1"},"profileUserID":"771"})"_s;
    struct Row {
        QString onInvoice, onProfile, company;
        bool profileShown;
    };
    const Row rows[] = {
        {u"Ann's Store"_s, u" Ann's\u00a0Shop "_s, u"Ann's Shop"_s, true},
        {u"Ann's Store"_s, {}, u"Ann's Store"_s, true},
        {u"Ann's Store"_s, u"late"_s, u"Ann's Store"_s, false},
    };
    app->flow = AppFlow::main;
    for (const Row &row : rows) {
        web.answer = [&](const QString &expression) -> QVariant {
            if (isReadyProbe(expression))
                return row.profileShown || !expression.contains(u"companyname"_s);
            return expression.contains(u"companyname"_s) ? row.onProfile : page.arg(row.onInvoice);
        };
        const auto before = clock.elapsed();
        scan(u"48213"_s);
        EXPECT_EQ(app->draftTo.value().company, app->sanitizer.sanitize(row.company));
        EXPECT_GE(clock.elapsed() - before, row.profileShown ? 0s : 20s);
        EXPECT_LT(clock.elapsed() - before, row.profileShown ? 1s : 22s);
        EXPECT_EQ(http.lastLimit, 15s);
        EXPECT_EQ(web.loaded.last(),
                  app->auth.address(u"/staff/users.php?subcmd=_update-customer&id=771"_s).toString());
    }
}

TEST_F(InvoiceFlowTest, DoesNotShowAScanAfterASignOut)
{
    showPage(false, false, invoicePage);
    app->flow = AppFlow::main;
    app->handleInvoiceScan(u"48213"_s);
    app->handleInvoiceScan(u"48214"_s); // ignored: one scan at a time
    app->signOut();
    runUntil([this] { return !app->scanBusy; }, &clock);
    settle();
    EXPECT_FALSE(app->scannedInvoice.value());
    EXPECT_TRUE(app->draftTo.value().isEmpty());
    EXPECT_EQ(app->scanStatus.value(), QString());
    EXPECT_THAT(web.loaded, IsEmpty());
    EXPECT_TRUE(errors->entries().isEmpty());
}

} // namespace parcelory::test

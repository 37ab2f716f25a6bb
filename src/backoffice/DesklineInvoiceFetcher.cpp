#include "backoffice/DesklineInvoiceFetcher.h"

#include "backoffice/DesklineAuth.h"
#include "backoffice/DesklineInvoice.h"
#include "backoffice/DesklinePage.h"
#include "backoffice/Script.h"
#include "core/AppError.h"
#include "core/CompanySanitizer.h"
#include "core/Task.h"

#include <QRegularExpression>

#include <optional>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

using Kind = DesklineInvoiceError::Kind;

} // namespace

DesklineInvoiceFetcher::DesklineInvoiceFetcher(DesklineAuth &auth, const CompanySanitizer &sanitizer)
    : m_auth(auth), m_sanitizer(sanitizer)
{
}

std::optional<QString> DesklineInvoiceFetcher::invoiceID(const QString &text, const QString &shortLinkHost)
{
    const QRegularExpression link(QRegularExpression::escape(shortLinkHost) + u"/i([0-9]+)"_s,
                                  QRegularExpression::CaseInsensitiveOption);
    if (const auto found = link.match(text); found.hasMatch())
        return found.captured(1);
    static const QRegularExpression number(u"^i?([0-9]{4,})$"_s);
    if (const auto found = number.match(text.trimmed()); found.hasMatch())
        return found.captured(1);
    return std::nullopt;
}

Task<DesklineInvoice> DesklineInvoiceFetcher::fetch(QString invoiceID)
{
    const int visit = m_auth.visit();
    const bool reachable = co_await m_auth.isReachable(15s);
    if (!reachable)
        throw DesklineInvoiceError(Kind::unreachable);
    requireSamePage(visit);
    const DesklinePage page = co_await readPage(invoiceID);
    DesklineInvoice invoice = invoiceFrom(invoiceID, page);
    const QString profile = page.profileUserID.value_or(QString());
    if (!profile.isEmpty()) {
        const QString company = co_await profileCompany(profile);
        if (!company.isEmpty())
            invoice.address.company = company;
    }
    invoice.address.company = m_sanitizer.sanitize(invoice.address.company);
    co_return invoice;
}

/// After a sign-out or a cancel, the page belongs to another session or another invoice. The caller no longer wants
/// this invoice, so the clerk does not see the error.
void DesklineInvoiceFetcher::requireSamePage(int visit) const
{
    if (m_auth.visit() != visit)
        throw DesklineInvoiceError(Kind::notSignedIn);
}

void DesklineInvoiceFetcher::requireNoCrash(const QString &invoiceID) const
{
    if (m_auth.hasCrashed())
        throw AppError(
            u"The page of invoice %1 stopped working while it was read — scan the invoice again."_s.arg(invoiceID));
}

Task<DesklinePage> DesklineInvoiceFetcher::readPage(QString invoiceID)
{
    m_auth.load(m_auth.address(u"/staff/buyers.php?subcmd=_detail_invoice&id="_s + invoiceID));
    const int visit = m_auth.visit();
    const QString loaded =
        u"document.readyState === 'complete' && location.href.indexOf('id=%1') !== -1"_s.arg(invoiceID);
    const bool ready = co_await m_auth.waitInSession(loaded, 45s);
    requireNoCrash(invoiceID);
    if (!ready) {
        const bool signInForm = co_await m_auth.evalBool(DesklineAuth::loginFormProbe);
        throw DesklineInvoiceError(signInForm ? Kind::notSignedIn : Kind::timeout, invoiceID);
    }
    const QString answer = co_await m_auth.evalString(scriptText(u"read-invoice.js"_s) + u"()"_s);
    requireSamePage(visit);
    requireNoCrash(invoiceID);
    std::optional<DesklinePage> page = parsePage(answer);
    if (!page) { // the sign-in form may appear at the invoice's own address
        const bool expired = co_await m_auth.asksForSignIn();
        throw DesklineInvoiceError(expired ? Kind::notSignedIn : Kind::noBuyer, invoiceID);
    }
    co_return *std::move(page);
}

/// The company on the customer's page; empty if there is no company or the page does not load.
Task<QString> DesklineInvoiceFetcher::profileCompany(QString profileUserID)
{
    m_auth.load(m_auth.address(u"/staff/users.php?subcmd=_update-customer&id="_s + profileUserID));
    const QString loaded = u"document.readyState === 'complete' && !!document.getElementById('companyname')"_s;
    const bool ready = co_await m_auth.waitFor(loaded, 20s);
    if (!ready)
        co_return QString();
    const QString company = co_await m_auth.evalString(u"(document.getElementById('companyname') || {}).value || ''"_s);
    co_return company.simplified();
}

} // namespace parcelory

#include "backoffice/DesklineInvoiceFetcher.h"

#include "backoffice/DesklineAuth.h"
#include "backoffice/DesklineInvoice.h"
#include "backoffice/DesklinePage.h"
#include "backoffice/Script.h"
#include "core/AppError.h"
#include "core/CompanySanitizer.h"
#include "core/CountryCode.h"
#include "core/Json.h"
#include "core/ShippoAddress.h"
#include "core/Task.h"
#include "core/Text.h"

#include <QRegularExpression>

#include <optional>
#include <tuple>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

using Kind = DesklineInvoiceError::Kind;

/// A cell's text on one line.
QString line(const std::optional<QString> &cell)
{
    return cell.value_or(QString()).simplified();
}

/// A cell's non-blank lines.
QStringList lines(const std::optional<QString> &cell)
{
    QStringList found;
    for (const QString &text : cell.value_or(QString()).split(u'\n'))
        found += text.simplified();
    found.removeAll(QString());
    return found;
}

QStringList flags(const std::optional<QString> &cell)
{
    static const QRegularExpression separators(u"[,;/\\s]"_s);
    return cell.value_or(QString()).toUpper().split(separators, Qt::SkipEmptyParts);
}

/// Puts the street into the address; false if its end did not fit.
bool setStreet(ShippoAddress &address, const QStringList &street)
{
    const QString first = street.value(0), rest = street.mid(1).join(u", "_s);
    std::tie(address.street1, address.street2) = ShippoAddress::splitStreet(first, rest);
    const auto letters = [](QString text) { return text.remove(u' ').remove(u',').size(); };
    return letters(address.street1 + address.street2) == letters(first + rest);
}

DesklineInvoice invoiceFrom(const QString &id, const DesklinePage &page)
{
    const DesklinePageFields &labels = page.labels;
    DesklineInvoice invoice{.invoiceID = id, .buyerName = line(labels.name)};
    ShippoAddress &to = invoice.address;
    to.name = invoice.buyerName;
    to.company = line(labels.companyName);
    invoice.streetCut = !setStreet(to, lines(labels.address));
    std::tie(to.city, to.state) = DesklineInvoiceFetcher::splitCityState(line(labels.city));
    to.zip = line(labels.zip);
    const QString country = line(labels.country);
    to.country = CountryCode::alpha2(country.isEmpty() ? u"USA"_s : country);
    to.phone = line(labels.phone);
    to.email = line(labels.email);
    for (const DesklinePageItem &item : page.items.value_or(QList<DesklinePageItem>()))
        invoice.items.append({.title = item.title.simplified(), .qty = item.qty, .total = item.total});
    for (const DesklinePageNote &note : page.notes.value_or(QList<DesklinePageNote>()))
        invoice.notes.append({.text = note.text, .by = note.by, .date = note.date});
    invoice.shipMethod = line(page.shipMethod);
    invoice.shipCost = line(page.shipCost);
    invoice.paidAmount = line(page.paid);
    invoice.tracking = line(page.tracking);
    if (invoice.tracking == u"-" || invoice.tracking == u"--")
        invoice.tracking.clear();
    invoice.codes = flags(labels.codes);
    return invoice;
}

/// Parses the script's result; empty if it names no buyer.
std::optional<DesklinePage> pageFrom(const QString &answer)
{
    try {
        auto page = decodeJson<DesklinePage>(answer.toUtf8(), Keys::asIs);
        if (!line(page.labels.name).isEmpty())
            return page;
    } catch (const DecodeError &) { // not an invoice
    }
    return std::nullopt;
}

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
    if (const auto found = number.match(trimBlanks(text)); found.hasMatch())
        return found.captured(1);
    return std::nullopt;
}

std::pair<QString, QString> DesklineInvoiceFetcher::splitCityState(const QString &text)
{
    const qsizetype comma = text.lastIndexOf(u',');
    if (comma < 0)
        return {text.trimmed(), {}};
    const QString city = text.left(comma).trimmed(), state = text.mid(comma + 1).trimmed();
    const auto known = stateAbbreviations().find(state.toLower());
    if (known != stateAbbreviations().end())
        return {city, known->second};
    return {city, state.size() == 2 ? state.toUpper() : state};
}

Task<DesklineInvoice> DesklineInvoiceFetcher::fetch(QString invoiceID)
{
    const int visit = m_auth.visit();
    const bool reachable = co_await m_auth.isReachable(15s);
    if (!reachable)
        throw DesklineInvoiceError(Kind::unreachable);
    if (m_auth.visit() != visit) // signed out meanwhile: the page belongs to another session
        throw DesklineInvoiceError(Kind::notSignedIn);
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

Task<DesklinePage> DesklineInvoiceFetcher::readPage(QString invoiceID)
{
    m_auth.load(m_auth.address(u"/staff/buyers.php?subcmd=_detail_invoice&id="_s + invoiceID));
    const QString loaded =
        u"document.readyState === 'complete' && location.href.indexOf('id=%1') !== -1"_s.arg(invoiceID);
    const bool ready = co_await m_auth.waitFor(loaded, 45s);
    if (m_auth.hasCrashed())
        throw AppError(
            u"The page of invoice %1 stopped working while it was read — scan the invoice again."_s.arg(invoiceID));
    if (!ready) {
        const bool signInForm = co_await m_auth.evalBool(DesklineAuth::loginFormProbe);
        throw DesklineInvoiceError(signInForm ? Kind::notSignedIn : Kind::timeout, invoiceID);
    }
    const QString answer = co_await m_auth.evalString(scriptText(u"read-invoice.js"_s) + u"()"_s);
    std::optional<DesklinePage> page = pageFrom(answer);
    if (!page) { // the sign-in form may appear at the invoice's own address
        const bool signInForm = co_await m_auth.evalBool(DesklineAuth::loginFormProbe);
        throw DesklineInvoiceError(signInForm ? Kind::notSignedIn : Kind::noBuyer, invoiceID);
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

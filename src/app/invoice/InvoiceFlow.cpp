#include "app/invoice/InvoiceFlow.h"

#include "app/AppState.h"
#include "backoffice/DesklineInvoice.h"
#include "backoffice/DesklineInvoiceFetcher.h"
#include "core/AppError.h"
#include "core/ShippoAddress.h"
#include "core/StaleCheck.h"
#include "core/StatusKind.h"
#include "core/Task.h"
#include "core/Text.h"
#include "shell/ErrorLog.h"

#include <QScopeGuard>

#include <exception>
#include <optional>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

/// A label without these parts cannot be rated.
QString missingParts(const ShippoAddress &address)
{
    QStringList missing;
    const auto require = [&](const QString &part, const QString &name) {
        if (part.isEmpty())
            missing += name;
    };
    require(address.street1, u"street"_s);
    require(address.city, u"city"_s);
    require(address.zip, u"ZIP"_s);
    if (missing.isEmpty())
        return {};
    return u"The invoice has no "_s + missing.join(u" and no "_s) + u" — complete the address."_s;
}

bool isExpiredSession(const std::exception_ptr &failure)
{
    try {
        std::rethrow_exception(failure);
    } catch (const DesklineInvoiceError &error) {
        return error.kind() == DesklineInvoiceError::Kind::notSignedIn;
    } catch (...) {
        return false;
    }
}

} // namespace

void InvoiceFlow::handleScan(const QString &text)
{
    if (m_app.flow != AppFlow::main)
        return;
    const auto id = DesklineInvoiceFetcher::invoiceID(text, m_app.platform.deployment.shortLinkHost);
    // The scanner paused inside the code: what is being read is only the beginning of this number.
    const bool isRest = m_app.isReadingInvoice() && id && *id != m_id && id->startsWith(m_id);
    if (m_app.scanBusy && !isRest) {
        ignoreScan(id.value_or(m_id));
        return;
    }
    if (isRest)
        cancel();
    else
        m_ignored.clear();
    if (!id) {
        const DesklineInvoiceError badCode(DesklineInvoiceError::Kind::badCode, text);
        m_app.failScan(m_app.recorded(u"Deskline Invoice"_s, badCode, Popup::no));
        return;
    }
    spawn([this, id = *id] { return read(id); });
}

/// The clerk may think that the second invoice's label is about to be filled.
void InvoiceFlow::ignoreScan(const QString &id)
{
    if (id == m_id)
        return;
    emit m_app.scanFailed((m_isRead ? u"Invoice %1 ignored — close the message about %2 first."_s
                                    : u"Invoice %1 ignored — still loading %2."_s)
                              .arg(id, m_id),
                          false);
    if (m_ignored.contains(id))
        return;
    m_ignored += id;
    m_app.scanNote = note();
    if (m_isRead)
        m_app.scanStatusKind = StatusKind::failure; // a note is a warning
}

QString InvoiceFlow::ignoredNote() const
{
    if (m_ignored.isEmpty())
        return {};
    return (m_ignored.size() == 1 ? u"Invoice %1 was not loaded — scan it again."_s
                                  : u"Invoices %1 were not loaded — scan them again."_s)
        .arg(m_ignored.join(u", "_s));
}

QString InvoiceFlow::note() const
{
    return joinPresent({m_missing, ignoredNote()}, u" "_s);
}

void InvoiceFlow::cancel()
{
    if (!m_app.scanBusy)
        return;
    ++m_reading;
    m_app.invoices.cancel();
    m_app.scanBusy = false;
    m_app.setScanStatus(StatusKind::none, u"Invoice "_s + m_id + u" was not read."_s, ignoredNote());
}

void InvoiceFlow::forgetFailure()
{
    const bool isFailure = m_app.scanStatusKind == StatusKind::failure && note().isEmpty(); // a note is a warning
    if (isFailure && !m_app.scanBusy)
        m_app.setScanStatus(StatusKind::none, QString());
}

Task<> InvoiceFlow::read(QString id)
{
    ++m_reading;
    m_id = id;
    m_isRead = false;
    m_missing.clear();
    const auto isGivenUp = staleCheck(m_app.session, m_reading);
    m_app.scanBusy = true;
    m_app.setScanStatus(StatusKind::progress, u"Loading invoice "_s + id + u" from deskline…"_s, note());
    std::exception_ptr failure;
    try {
        const DesklineInvoice invoice = co_await m_app.invoices.fetch(id);
        if (isGivenUp())
            co_return;
        take(invoice);
        co_await showAttention(invoice);
    } catch (const AppError &) {
        failure = std::current_exception();
    }
    if (isGivenUp())
        co_return;
    if (failure)
        co_await report(id, failure);
    if (isGivenUp())
        co_return;
    if (!failure && !m_ignored.isEmpty()) // the fill has hidden the warnings
        emit m_app.scanFailed(ignoredNote(), false);
    m_app.scanBusy = false;
    if (!failure && m_app.flow == AppFlow::main && m_app.draftReference.value() == id)
        emit m_app.recipientTaken();
}

void InvoiceFlow::take(const DesklineInvoice &invoice)
{
    m_app.scannedInvoice = invoice;
    m_app.invoiceSoldAt = QDateTime();
    m_app.fillFromInvoice(invoice);
    m_isRead = true;
    m_missing = missingParts(invoice.address);
    m_app.setScanStatus(note().isEmpty() ? StatusKind::success : StatusKind::failure,
                        u"Invoice "_s + invoice.invoiceID + u": "_s + invoice.buyerName + u" — label filled."_s,
                        note());
}

/// If the session has expired, signs in again first, so that the next scan succeeds; only if that fails, the clerk has
/// to sign in. The invoice itself is not read again: the clerk scans it again.
Task<> InvoiceFlow::report(QString id, std::exception_ptr failure)
{
    const auto isGivenUp = staleCheck(m_app.session, m_reading);
    bool renewed = false;
    if (isExpiredSession(failure))
        renewed = co_await m_app.renewSession(isGivenUp);
    if (isGivenUp())
        co_return;
    const bool isSessionOver = isExpiredSession(failure) && !renewed;
    try {
        std::rethrow_exception(failure);
    } catch (const AppError &error) {
        const QString reason = m_app.recorded(u"Deskline Invoice "_s + id, error, Popup::no);
        const QString text = renewed ? u"Parcelory signed in again. Scan the invoice again."_s : reason;
        m_app.setScanStatus(StatusKind::failure, text, ignoredNote());
        emit m_app.scanFailed(text, isSessionOver);
    }
}

Task<> InvoiceFlow::showAttention(DesklineInvoice invoice)
{
    const std::optional<InvoiceAttention> attention = invoiceAttention(invoice);
    if (!attention)
        co_return;
    m_app.openChoices = m_app.openChoices + 1;
    const auto closed = qScopeGuard([this] { m_app.openChoices = m_app.openChoices - 1; });
    co_await m_app.platform.prompts.alert(attention->title, attention->text);
}

} // namespace parcelory

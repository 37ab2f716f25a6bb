#include "app/invoice/InvoiceFlow.h"

#include "app/AppState.h"
#include "backoffice/DesklineInvoice.h"
#include "backoffice/DesklineInvoiceFetcher.h"
#include "core/AppError.h"
#include "core/StaleCheck.h"
#include "core/StatusKind.h"
#include "core/Task.h"
#include "shell/ErrorLog.h"

#include <QScopeGuard>

#include <optional>

namespace parcelory {
using namespace Qt::StringLiterals;

void InvoiceFlow::handleScan(const QString &text)
{
    if (m_app.flow != AppFlow::main)
        return;
    const auto id = DesklineInvoiceFetcher::invoiceID(text, m_app.platform.deployment.shortLinkHost);
    if (m_app.scanBusy) {
        refuse(id.value_or(QString()));
        return;
    }
    if (!id) {
        const DesklineInvoiceError badCode(DesklineInvoiceError::Kind::badCode, text);
        m_app.failScan(m_app.recorded(u"Deskline Invoice"_s, badCode, Popup::no));
        return;
    }
    spawn([this, id = *id] { return read(id); });
}

/// The status line still belongs to the invoice that is being read.
void InvoiceFlow::refuse(const QString &id)
{
    if (id.isEmpty() || id == m_reading)
        return;
    const bool isRead = m_app.scanStatusKind == StatusKind::success; // only its alert is still open
    emit m_app.scanFailed((isRead ? u"Invoice %1 ignored — close the message about %2 first."_s
                                  : u"Invoice %1 ignored — still loading %2."_s)
                              .arg(id, m_reading),
                          false);
}

Task<> InvoiceFlow::read(QString id)
{
    const auto isSignedOut = staleCheck(m_app.session);
    m_app.scanBusy = true;
    m_reading = id;
    m_app.setScanStatus(StatusKind::progress, u"Loading invoice "_s + id + u" from deskline…"_s);
    const auto done = qScopeGuard([this] { m_app.scanBusy = false; });
    try {
        const DesklineInvoice invoice = co_await m_app.invoices.fetch(id);
        if (isSignedOut())
            co_return; // signed out meanwhile
        m_app.scannedInvoice = invoice;
        m_app.fillFromInvoice(invoice);
        m_app.setScanStatus(StatusKind::success,
                            u"Invoice "_s + id + u": "_s + invoice.buyerName + u" — label filled."_s);
        co_await showAttention(invoice);
    } catch (const AppError &error) {
        if (isSignedOut())
            co_return;
        const auto *failure = dynamic_cast<const DesklineInvoiceError *>(&error);
        m_app.failScan(m_app.recorded(u"Deskline Invoice "_s + id, error, Popup::no),
                       failure && failure->kind() == DesklineInvoiceError::Kind::notSignedIn);
        co_return;
    }
    m_app.scanBusy = false;
    if (m_app.flow == AppFlow::main && m_app.draftReference.value() == id)
        emit m_app.invoiceTaken();
}

Task<> InvoiceFlow::showAttention(DesklineInvoice invoice)
{
    if (const std::optional<InvoiceAttention> attention = invoiceAttention(invoice))
        co_await m_app.platform.prompts.alert(attention->title, attention->text);
}

} // namespace parcelory

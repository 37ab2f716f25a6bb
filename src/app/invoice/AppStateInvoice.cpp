#include "app/AppState.h"

#include <QScopeGuard>

namespace parcelory {
using namespace Qt::StringLiterals;

void AppState::handleInvoiceScan(const QString &text)
{
    if (flow != AppFlow::main || scanBusy)
        return;
    const auto id = DesklineInvoiceFetcher::invoiceID(text, platform.deployment.shortLinkHost);
    if (!id) {
        scanStatus = DesklineInvoiceError(DesklineInvoiceError::Kind::badCode, text).description();
        return;
    }
    spawn([this, id = *id] { return readInvoice(id); });
}

Task<> AppState::readInvoice(QString id)
{
    const int session = m_signIns;
    scanBusy = true;
    scanStatus = u"Loading invoice "_s + id + u" from deskline…"_s;
    const auto done = qScopeGuard([this] { scanBusy = false; });
    try {
        const DesklineInvoice invoice = co_await invoices.fetch(id);
        if (session != m_signIns)
            co_return; // signed out meanwhile
        scannedInvoice = invoice;
        fillFromInvoice(invoice);
        scanStatus = u"Invoice "_s + id + u": "_s + invoice.buyerName + u" — label filled."_s;
        co_await invoiceAttentionAlert(invoice);
    } catch (const AppError &error) {
        if (session != m_signIns)
            co_return;
        scanStatus = error.description();
        errors.record(u"Deskline Invoice "_s + id, error, Popup::no);
        co_return;
    }
    scanBusy = false;
    if (flow == AppFlow::main && draftReference.value() == id)
        emit invoiceTaken();
}

void AppState::fillFromInvoice(const DesklineInvoice &invoice)
{
    draftTo = invoice.address;
    draftReference = invoice.invoiceID;
    draftFillCount = draftFillCount + 1;
    tab = MainTab::newLabel;
}

Task<> AppState::invoiceAttentionAlert(DesklineInvoice invoice)
{
    if (const std::optional<InvoiceAttention> attention = invoiceAttention(invoice))
        co_await platform.prompts.alert(attention->title, attention->text);
}

} // namespace parcelory

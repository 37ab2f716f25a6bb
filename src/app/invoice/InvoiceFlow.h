#pragma once

#include "app/AppState.h"

namespace parcelory {

/// Reads the invoice of a scan and fills the label with it. The outcome is AppState's scanStatus and scannedInvoice.
class InvoiceFlow {
public:
    explicit InvoiceFlow(AppState &app) : m_app(app) {}

    /// AppState::handleInvoiceScan().
    void handleScan(const QString &text);

private:
    Task<> read(QString id);
    Task<> showAttention(DesklineInvoice invoice);

    AppState &m_app;
};

} // namespace parcelory

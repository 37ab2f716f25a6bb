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
    void refuse(const QString &id);
    Task<> read(QString id);
    Task<> showAttention(DesklineInvoice invoice);

    AppState &m_app;
    QString m_reading; ///< the invoice of the scan before, until its alert is closed
};

} // namespace parcelory

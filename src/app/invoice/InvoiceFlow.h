#pragma once

#include "app/AppState.h"

#include <exception>

namespace parcelory {

/// Reads the invoice of a scan and fills the label with it. The outcome is AppState's scanStatus and scannedInvoice.
class InvoiceFlow {
public:
    explicit InvoiceFlow(AppState &app) : m_app(app) {}

    /// AppState::handleInvoiceScan().
    void handleScan(const QString &text);
    /// AppState::cancelInvoiceScan().
    void cancel();
    /// Takes an invoice that could not be read out of the status: the clerk has gone on without it.
    void forgetFailure();

private:
    Task<> read(QString id);
    void take(const DesklineInvoice &invoice);
    Task<> report(QString id, std::exception_ptr failure);
    Task<> showAttention(DesklineInvoice invoice);
    void ignoreScan(const QString &id);
    QString ignoredNote() const;
    QString note() const;

    AppState &m_app;
    int m_reading = 0;     ///< incremented when an invoice is read and when that is canceled
    QString m_id;          ///< of the invoice that is being read
    bool m_isRead = false; ///< the label is filled; only the alert about the invoice is still open
    QString m_missing;     ///< the note about what the invoice lacks
    QStringList m_ignored; ///< invoices that were scanned while m_id was read
};

} // namespace parcelory

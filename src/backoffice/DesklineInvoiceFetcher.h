#pragma once

#include "backoffice/DesklineAuth.h"
#include "backoffice/DesklineInvoice.h"
#include "core/CompanySanitizer.h"

namespace parcelory {

struct DesklinePage;

/// Reads invoices from the back office's pages, in the session that the clerk has signed in to.
class DesklineInvoiceFetcher {
public:
    DesklineInvoiceFetcher(DesklineAuth &auth, const CompanySanitizer &sanitizer);

    /// Throws DesklineInvoiceError, and AppError if the page crashed or this machine cannot show web pages. One call at
    /// a time.
    Task<DesklineInvoice> fetch(QString invoiceID);
    /// Makes the running call fail at its next step. The next call need not wait for this.
    void cancel() { m_auth.leavePage(); }

    /// The invoice number in a scanned or typed text: a short link, or the number itself with or without its "i".
    static std::optional<QString> invoiceID(const QString &text, const QString &shortLinkHost);

private:
    void requireSamePage(int visit) const;
    void requireNoCrash(const QString &invoiceID) const;
    Task<DesklinePage> readPage(QString invoiceID);
    Task<QString> profileCompany(QString profileUserID);

    DesklineAuth &m_auth;
    const CompanySanitizer &m_sanitizer;
};

} // namespace parcelory

#pragma once

#include "backoffice/DesklineAuth.h"
#include "backoffice/DesklineInvoice.h"
#include "core/CompanySanitizer.h"
#include "core/UsStates.h"

namespace parcelory {

struct DesklinePage;

/// Reads invoices from the back office's pages, in the session that the clerk has signed in to.
class DesklineInvoiceFetcher {
public:
    DesklineInvoiceFetcher(DesklineAuth &auth, const CompanySanitizer &sanitizer);

    /// Throws DesklineInvoiceError, and AppError if the page crashed or this machine cannot show web pages. One call at
    /// a time.
    Task<DesklineInvoice> fetch(QString invoiceID);

    /// The invoice number in a scanned or typed text: a short link, or the number itself with or without its "i".
    static std::optional<QString> invoiceID(const QString &text, const QString &shortLinkHost);
    /// "Portland, Oregon" becomes Portland and OR. Two letters become capitals; any other unknown state stays as
    /// written.
    static std::pair<QString, QString> splitCityState(const QString &text);
    /// Maps lower-case US state names to two-letter codes.
    static const std::map<QString, QString> &stateAbbreviations() { return usStates(); }

private:
    Task<DesklinePage> readPage(QString invoiceID);
    Task<QString> profileCompany(QString profileUserID);

    DesklineAuth &m_auth;
    const CompanySanitizer &m_sanitizer;
};

} // namespace parcelory

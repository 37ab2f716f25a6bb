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

    /// Throws DesklineInvoiceError, and AppError when the page crashed or this machine cannot show web pages. One at a
    /// time.
    Task<DesklineInvoice> fetch(QString invoiceID);

    /// The invoice number in what was scanned or typed: a short link, or the number itself with or without its "i".
    static std::optional<QString> invoiceID(const QString &text, const QString &shortLinkHost);
    /// "Portland, Oregon" is Portland and OR; what is no US state stays as written.
    static std::pair<QString, QString> splitCityState(const QString &text);
    /// US states, their names in lower case, to two-letter codes.
    static const std::map<QString, QString> &stateAbbreviations() { return usStates(); }

private:
    Task<DesklinePage> readPage(QString invoiceID);
    Task<QString> profileCompany(QString profileUserID);

    DesklineAuth &m_auth;
    const CompanySanitizer &m_sanitizer;
};

} // namespace parcelory

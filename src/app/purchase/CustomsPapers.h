#pragma once

#include "app/AppState.h"
#include "devices/CommercialInvoice.h"

namespace parcelory {

/// A document after printing.
struct PrintedDocument {
    std::optional<QByteArray> document; ///< for the mailing log; empty if there is no document
    QString note;                       ///< for the success line
    bool done = false;                  ///< printed, or printing was not requested
};

/// Customs papers of an international parcel. A printing failure becomes a note and an error log entry instead of an
/// exception, because the label is already paid for and must still be logged.
class CustomsPapers {
public:
    explicit CustomsPapers(AppState &app) : m_app(app) {}

    Task<QByteArray> drawInvoice(CommercialInvoice::Data_ invoice);
    /// Draws the commercial invoice. With `onPaper`, sends it to the document printer, or opens it in the viewer if no
    /// document printer is chosen.
    Task<PrintedDocument> printInvoice(CommercialInvoice::Data_ invoice, bool onPaper);
    /// Downloads and prints the customs document that FedEx makes.
    Task<PrintedDocument> printFedexInvoice(QString documentUrl);

private:
    AppState &m_app;
};

} // namespace parcelory

#pragma once

#include "app/AppState.h"
#include "devices/CommercialInvoice.h"

namespace parcelory {

/// A document after printing.
struct PrintedDocument {
    std::optional<QByteArray> document; ///< for the mailing log; nothing when there is none
    QString note;                       ///< for the success line
    bool done = false;                  ///< on paper
};

/// The papers of a parcel that goes abroad. A failure becomes a note and an entry in the error log: the label is paid
/// for and must be logged all the same.
class CustomsPapers {
public:
    explicit CustomsPapers(AppState &app) : m_app(app) {}

    Task<QByteArray> drawInvoice(CommercialInvoice::Data_ invoice);
    /// Draws the commercial invoice. With `onPaper`, sends it to the document printer, or opens it in the viewer when
    /// no document printer is chosen.
    Task<PrintedDocument> printInvoice(CommercialInvoice::Data_ invoice, bool onPaper);
    /// Downloads and prints the customs document that FedEx makes.
    Task<PrintedDocument> printFedexInvoice(QString documentUrl);

private:
    AppState &m_app;
};

} // namespace parcelory

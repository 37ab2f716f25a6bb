#pragma once

#include "app/AppState.h"
#include "devices/CommercialInvoice.h"

#include <optional>

namespace parcelory {

enum class PapersOutcome {
    none,           ///< a domestic parcel has no papers
    kept,           ///< drawn or downloaded for the log; not to be printed
    printed,        ///< sent to the document printer
    opened,         ///< opened in the viewer, because no document printer is chosen
    notDrawn,       ///< the commercial invoice could not be drawn
    downloadFailed, ///< the carrier's document could not be downloaded
    printFailed,
};

/// True if the parcel needs papers that are not on paper.
constexpr bool isMissing(PapersOutcome outcome)
{
    return outcome == PapersOutcome::notDrawn || outcome == PapersOutcome::downloadFailed ||
           outcome == PapersOutcome::printFailed;
}

constexpr bool isOnPaper(PapersOutcome outcome)
{
    return outcome == PapersOutcome::printed || outcome == PapersOutcome::opened;
}

/// The customs papers of a parcel after an attempt to get and print them.
struct PapersResult {
    PapersOutcome outcome = PapersOutcome::none;
    std::optional<QByteArray> document = {}; ///< for the mailing log
    QString text = {};                       ///< the printer's queue, or why it failed
    QString missingLetters = {};             ///< letters that no font has; the document shows boxes in their place

    /// False if the clerk has to do something about the papers.
    bool isDone() const;
};

/// Gets and prints the papers of a parcel that goes abroad. A failure is a result and an entry in the error log: the
/// label is paid for and must be logged all the same.
class CustomsPapers {
public:
    explicit CustomsPapers(AppState &app) : m_app(app) {}

    /// Draws the commercial invoice: kept or notDrawn.
    Task<PapersResult> drawInvoice(CommercialInvoice::Data_ invoice);
    /// Sends a drawn invoice to the document printer, or opens it in the viewer if no document printer is chosen.
    Task<PapersResult> printInvoice(PapersResult drawn);
    /// Downloads the customs document that FedEx makes; with `onPaper`, prints it, too.
    Task<PapersResult> fetchFedexInvoice(QString documentUrl, bool onPaper);

private:
    Task<PapersResult> print(QByteArray document, QString context);

    AppState &m_app;
};

} // namespace parcelory

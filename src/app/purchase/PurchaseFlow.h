#pragma once

#include "app/AppState.h"
#include "app/purchase/CustomsPapers.h"
#include "app/purchase/LabelDoubts.h"
#include "app/purchase/LabelPrinting.h"
#include "app/purchase/PurchaseLookup.h"
#include "records/PurchaseJournal.h"
#include "records/ShipmentRecord.h"

#include <QSet>

#include <optional>

namespace parcelory {

/// How a label came out, or why it did not.
struct LabelResult {
    bool isPrinted = false;
    QString text; ///< the printer's sentence, or the reason of the failure
};

/// How a request to buy ended.
struct SaleResult {
    enum class Kind { sold, notBought, unknown };
    Kind kind = Kind::unknown;
    OpenPurchase entry; ///< with the transaction's id as soon as the carrier names it
    std::optional<ShippoTransaction> transaction = {};
    QString text = {};        ///< why it was not sold, or why that is unknown
    LookupAnswer answer = {}; ///< the last answer of the carrier about an unknown outcome
};

/// A bought label after everything that follows a purchase.
struct PurchaseResult {
    OpenPurchase entry;   ///< as the journal and the log have it
    bool hasLabel = true; ///< false: the carrier gave no link to the label, so nothing followed
    LabelResult label;
    PapersResult papers;
    bool isLogged = false;
    QList<ShipmentRecord> seconds = {}; ///< further labels that the carrier sold for the same request
    LabelVerdict verdict = {};          ///< of the comparison with the parcel; empty if there was no label

    /// False if the clerk has to read about it.
    bool isComplete() const { return hasLabel && label.isPrinted && papers.isDone() && isLogged; }
};

/// What happens to the label and the papers of a purchase.
struct Delivery {
    bool prints = false;     ///< the label, and the papers if they are wanted on paper
    PapersResult drawn = {}; ///< the commercial invoice of a USPS parcel that goes abroad
};

/// The one way from the request to the row in the mailing log. For the press of Buy: request, and look for the label if
/// the response is lost. For the press of Buy and for a purchase that was found later: apply the response, fetch,
/// print, papers, log, close. After the purchase nothing throws: a failure is part of the result, and an entry in the
/// error log.
class PurchaseFlow {
public:
    explicit PurchaseFlow(AppState &app) : m_app(app), m_papers(app) {}

    /// Throws AppError if the journal cannot be written.
    Task<qint64> begin(OpenPurchase purchase);
    Task<> save(OpenPurchase purchase);
    Task<> close(qint64 id);
    /// The same for a purchase whose label may be bought, although it is not in the mailing log.
    Task<> closeAsSold(OpenPurchase purchase);
    /// Asks the carrier to sell the label. A refused purchase is closed in the journal.
    Task<SaleResult> request(OpenPurchase purchase, QString tag);
    /// Looks for a purchase of unknown outcome a few times, because its parcel is still on the desk.
    Task<SaleResult> lookFor(SaleResult unknown);

    /// `transaction`: empty if the journal already has the carrier's response. `seconds`: further sales of the same
    /// rate; they get a row in the mailing log and an entry in the error log, but are not printed.
    Task<PurchaseResult> complete(OpenPurchase purchase, std::optional<ShippoTransaction> transaction,
                                  Delivery delivery, QList<ShippoTransaction> seconds = {});
    /// Further sales of rates whose label is in the mailing log: the carrier's newest sales are compared with the log.
    /// Logs these labels as complete() does, and returns them. Throws AppError if the carrier or the books cannot be
    /// read.
    Task<QList<ShipmentRecord>> logRepeatedSales();
    /// Notes the carrier's id of a purchase that is not finished yet, so that it is looked up by its id.
    Task<OpenPurchase> noted(OpenPurchase purchase, LookupAnswer answer);

private:
    Task<QByteArray> fetchLabel(OpenPurchase purchase);
    Task<LabelResult> printLabelOf(OpenPurchase purchase, PrintNote note = {});
    Task<LabelResult> printHeldLabelOf(OpenPurchase purchase, LabelDoubts doubts);
    Task<PapersResult> papersOf(OpenPurchase purchase, Delivery delivery);
    Task<bool> log(OpenPurchase purchase, LabelVerdict verdict, QDateTime begun);
    Task<QList<ShipmentRecord>> secondsAmong(QList<ShippoTransaction> sales);
    Task<ShipmentRecord> logSecond(ShipmentRecord first, ShippoTransaction sale);

    AppState &m_app;
    CustomsPapers m_papers;
    QSet<qint64> m_unlogged; ///< already reported as not logged; they are not reported again
};

} // namespace parcelory

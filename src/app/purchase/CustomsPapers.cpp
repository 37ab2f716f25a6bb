#include "app/purchase/CustomsPapers.h"

#include "app/purchase/LabelPrinting.h"
#include "app/purchase/PurchaseTexts.h"
#include "core/AppError.h"
#include "core/SettingsKeys.h"
#include "core/Task.h"
#include "core/ports/Preferences.h"
#include "devices/CommercialInvoice.h"
#include "devices/Zpl.h"
#include "shell/ErrorLog.h"

namespace parcelory {
using namespace Qt::StringLiterals;

bool PapersResult::isDone() const
{
    return missingLetters.isEmpty() &&
           (outcome == PapersOutcome::none || outcome == PapersOutcome::kept || outcome == PapersOutcome::printed);
}

Task<PapersResult> CustomsPapers::drawInvoice(CommercialInvoice::Data_ invoice)
{
    try {
        PapersResult drawn = co_await onPool([this, invoice] {
            return PapersResult{.outcome = PapersOutcome::kept,
                                .document = CommercialInvoice::pdf(invoice, m_app.platform.deployment),
                                .missingLetters = CommercialInvoice::lettersWithoutGlyph(invoice)};
        });
        if (!drawn.missingLetters.isEmpty())
            m_app.errors.record(u"Commercial Invoice"_s, AppError(PurchaseTexts::writeByHand(drawn)), Popup::no);
        co_return drawn;
    } catch (const AppError &error) {
        m_app.errors.record(u"Commercial Invoice"_s, error, Popup::no);
        co_return PapersResult{.outcome = PapersOutcome::notDrawn, .text = error.description()};
    }
}

Task<PapersResult> CustomsPapers::printInvoice(PapersResult drawn)
{
    if (!drawn.document)
        co_return drawn;
    PapersResult printed = co_await print(*drawn.document, u"Commercial Invoice"_s);
    printed.missingLetters = drawn.missingLetters;
    co_return printed;
}

Task<PapersResult> CustomsPapers::fetchFedexInvoice(QString documentUrl, bool onPaper)
{
    const QString context = u"FedEx Commercial Invoice"_s;
    PapersResult result;
    try {
        if (documentUrl.isEmpty())
            throw AppError(u"the carrier sent no document link"_s);
        const QByteArray document = co_await m_app.shippo.downloadLabel(documentUrl);
        if (!parseLabel(document).isWholePdf())
            throw AppError(u"the carrier's file is not a complete PDF document"_s);
        result = {.outcome = PapersOutcome::kept, .document = document};
    } catch (const AppError &error) {
        m_app.errors.record(context, error, Popup::no);
        result = {.outcome = PapersOutcome::downloadFailed, .text = error.description()};
    }
    if (result.document && onPaper)
        result = co_await print(*result.document, context);
    co_return result;
}

Task<PapersResult> CustomsPapers::print(QByteArray document, QString context)
{
    PapersResult result{.document = document, .text = read(m_app.platform.preferences, settings::documentQueue)};
    try {
        const bool sentToQueue = co_await printDocument(m_app, document);
        result.outcome = sentToQueue ? PapersOutcome::printed : PapersOutcome::opened;
    } catch (const AppError &error) {
        m_app.errors.record(context, error, Popup::no);
        result.outcome = PapersOutcome::printFailed;
        result.text = error.description();
    }
    co_return result;
}

} // namespace parcelory

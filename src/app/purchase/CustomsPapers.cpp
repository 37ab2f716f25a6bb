#include "app/purchase/CustomsPapers.h"

#include "app/purchase/LabelPrinting.h"
#include "core/AppError.h"
#include "core/SettingsKeys.h"
#include "core/Task.h"
#include "core/ports/Preferences.h"
#include "devices/CommercialInvoice.h"
#include "devices/Zpl.h"
#include "shell/ErrorLog.h"

namespace parcelory {
using namespace Qt::StringLiterals;

Task<QByteArray> CustomsPapers::drawInvoice(CommercialInvoice::Data_ invoice)
{
    const QByteArray document =
        co_await onPool([this, invoice] { return CommercialInvoice::pdf(invoice, m_app.platform.deployment); });
    co_return document;
}

Task<PrintedDocument> CustomsPapers::printInvoice(CommercialInvoice::Data_ invoice, bool onPaper)
{
    const QString queue = read(m_app.platform.preferences, settings::documentQueue);
    PrintedDocument result;
    try {
        const QByteArray document = co_await drawInvoice(invoice);
        result.document = document;
        result.done = true;
        if (onPaper) {
            const bool sentToQueue = co_await printDocument(m_app, document);
            result.done = sentToQueue;
            result.note = sentToQueue
                              ? u"Commercial invoice sent to "_s + queue + u'.'
                              : u" (commercial invoice opened in Preview — set a document printer in Settings)"_s;
        }
    } catch (const AppError &error) {
        result.done = false;
        result.note = u" (Invoice print failed: "_s + error.description() + u')';
        m_app.errors.record(u"Commercial Invoice"_s, error, Popup::no);
    }
    co_return result;
}

Task<PrintedDocument> CustomsPapers::printFedexInvoice(QString documentUrl)
{
    PrintedDocument result;
    try {
        if (documentUrl.isEmpty())
            throw AppError(u"the carrier sent no document link"_s);
        const QByteArray document = co_await m_app.shippo.downloadLabel(documentUrl);
        if (!parseLabel(document).isWholePdf())
            throw AppError(u"the carrier's file is not a complete PDF document"_s);
        result.document = document;
        const bool sentToQueue = co_await printDocument(m_app, document);
        result.done = sentToQueue;
        if (!sentToQueue)
            result.note = u" (FedEx commercial invoice opened in Preview — set a document printer in Settings)"_s;
    } catch (const AppError &error) {
        const QString failed = result.document ? u" (FedEx commercial invoice print failed: "_s
                                               : u" (FedEx commercial invoice download failed: "_s;
        result.note = failed + error.description() + u')';
        m_app.errors.record(u"FedEx Commercial Invoice"_s, error, Popup::no);
    }
    co_return result;
}

} // namespace parcelory

#include "app/label/LabelScreen.h"
#include "compose/Weight.h"
#include "core/Text.h"
#include "app/purchase/Reprint.h"
#include "core/SettingsKeys.h"

#include <QScopeGuard>

namespace parcelory {
using namespace Qt::StringLiterals;

void LabelScreen::weigh()
{
    const USBScale &scale = m_app.scale;
    const QString fault = scale.fault;
    if (!scale.connected)
        warn(u"No scale detected"_s, DraftField::weight);
    else if (!fault.isEmpty())
        warn(fault);
    else if (const std::optional<USBScale::Reading> reading = scale.reading(); !reading)
        warn(u"Nothing to weigh yet — put the package on the scale and wait until it is steady."_s);
    else if (reading->generation <= m_soldWeight)
        warn(u"This is still the last package's weight — put the next one on the scale."_s);
    else
        takeWeight();
}

/// True when the scale had the settled weight of a parcel that was not sold yet.
bool LabelScreen::takeWeight()
{
    const std::optional<USBScale::Reading> reading = m_app.scale.reading();
    if (!reading || reading->generation <= m_soldWeight)
        return false;
    const auto [pounds, ounces] = inPounds(reading->ounces);
    weightLb = fixed(pounds, 0);
    weightOz = shortest(ounces, 2); // a scale set to grams crosses a rate's step by a hundredth
    return true;
}

CommercialInvoice::Data_ LabelScreen::invoiceData(const QString &service) const
{
    const ShippoAddress &to = m_app.draftTo.value();
    const CustomsItem &item = customsItem(customs.value().itemType);
    const QString quantity = customs.value().quantity.trimmed();
    CommercialInvoice::Data_ invoice;
    invoice.invoiceNumber = reference.value().trimmed();
    invoice.recipient = {.name = to.name,
                         .company = m_app.sanitizer.sanitize(to.company),
                         .street1 = to.street1,
                         .street2 = to.street2,
                         .city = to.city,
                         .state = to.state,
                         .zip = to.zip,
                         .country = to.country,
                         .phone = to.phone,
                         .email = to.email};
    invoice.shipVia = service;
    invoice.date = m_app.platform.clock.now().date();
    invoice.itemDescription = item.description;
    invoice.hsCode = item.hsCode;
    invoice.quantity = quantity.isEmpty() ? u"1"_s : quantity;
    invoice.value = decimalOrZero(customs.value().value);
    if (!item.invoiceExtraLine.isEmpty())
        invoice.extraLine = item.invoiceExtraLine;
    invoice.signer = customs.value().signer.trimmed();
    return invoice;
}

Task<QByteArray> LabelScreen::drawInvoice(CommercialInvoice::Data_ invoice)
{
    auto drawing = onPool([this, invoice] { return CommercialInvoice::pdf(invoice, m_app.platform.deployment); });
    const QByteArray document = co_await drawing;
    co_return document;
}

/// Makes the invoice and, if so wanted, prints it on the document printer or opens it in the viewer.
Task<LabelScreen::Printed> LabelScreen::printInvoice(CommercialInvoice::Data_ invoice, bool onPaper)
{
    const QString queue = read(m_app.platform.preferences, settings::documentQueue);
    Printed result;
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

Task<> LabelScreen::printIntlInvoice()
{
    if (busy)
        co_return;
    busy = true;
    const auto done = qScopeGuard([this] { busy = false; });
    const QString service = carrierAndService(carrier, serviceClassInfo(effectiveClass()).displayName);
    const Printed printed = co_await printInvoice(invoiceData(service), true);
    const QString said = printed.done ? printed.note : printed.note.mid(2).chopped(1); // without its parentheses
    banner = Banner{said.left(1).toUpper() + said.mid(1), printed.done};
}

} // namespace parcelory

#include "app/label/LabelScreen.h"
#include "app/purchase/CustomsPapers.h"
#include "compose/Customs.h"
#include "compose/Services.h"
#include "compose/Weight.h"
#include "core/ShippoAddress.h"
#include "core/Task.h"
#include "core/Text.h"
#include "devices/CommercialInvoice.h"
#include "devices/USBScale.h"

#include <QScopeGuard>

#include <optional>

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

/// Takes the scale's settled weight. False if there is no settled weight or its parcel is already sold.
bool LabelScreen::takeWeight()
{
    const std::optional<USBScale::Reading> reading = m_app.scale.reading();
    if (!reading || reading->generation <= m_soldWeight)
        return false;
    const auto [pounds, ounces] = inPounds(reading->ounces);
    weightLb = fixed(pounds, 0);
    weightOz = shortest(ounces, 2); // a hundredth from a scale set to grams can cross a rate step
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

Task<> LabelScreen::printIntlInvoice()
{
    if (busy)
        co_return;
    busy = true;
    const auto done = qScopeGuard([this] { busy = false; });
    const QString service = carrierAndService(carrier, serviceClassInfo(effectiveClass()).displayName);
    const PrintedDocument printed = co_await m_papers.printInvoice(invoiceData(service), true);
    const QString said = printed.done ? printed.note : printed.note.mid(2).chopped(1); // without its parentheses
    banner = Banner{said.left(1).toUpper() + said.mid(1), printed.done};
}

} // namespace parcelory

#include "app/label/LabelScreen.h"

#include "app/purchase/CustomsPapers.h"
#include "app/purchase/PurchaseTexts.h"
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

Task<> LabelScreen::printIntlInvoice()
{
    if (busy)
        co_return;
    busy = true;
    const auto done = qScopeGuard([this] { busy = false; });
    const QString service = carrierAndService(carrier, serviceClassInfo(effectiveClass()).displayName);
    const PapersResult drawn = co_await m_papers.drawInvoice(invoiceData(service));
    const PapersResult printed = co_await m_papers.printInvoice(drawn);
    const QString line = PurchaseTexts::papersLine(printed);
    banner = Banner{line.left(1).toUpper() + line.mid(1), printed.isDone()};
}

} // namespace parcelory

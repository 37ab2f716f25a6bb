#include "app/label/LabelScreen.h"
#include "app/label/OfferedRates.h"
#include "carrier/ShippoRecords.h"
#include "compose/Services.h"
#include "core/AppError.h"
#include "core/Task.h"

#include "core/StaleCheck.h"
#include "shell/ErrorLog.h"

#include <QScopeGuard>

#include <algorithm>
#include <optional>

namespace parcelory {
using namespace Qt::StringLiterals;

Task<> LabelScreen::fetchRates(bool intlConfirmed)
{
    if (busy)
        co_return;
    settleCountry(); // a shortcut leaves the focus in the field
    if (const std::optional<Obstacle> found = obstacle()) {
        warnUntilEdit(found->text, found->field);
        co_return;
    }
    if (isInternational() && !intlConfirmed) {
        showIntlPaperwork = true;
        co_return;
    }
    showIntlPaperwork = false;
    faultyField = std::nullopt;
    clearRates();
    dropBanner();
    busy = true;
    rating = true;
    const auto done = qScopeGuard([this] {
        rating = false;
        busy = false;
    });
    const auto isEdited = staleCheck(edits);
    try {
        auto asked = m_app.shippo.rates(ratingRequest());
        spawn([this] { return askOtherDesks(); });
        const ShippoShipment shipment = co_await asked;
        if (!isEdited())
            co_await applyRates(shipment);
        else if (!m_app.draftTo.value().isEmpty()) // otherwise the form was cleared, and rates are no longer needed
            warn(u"The draft was changed while its rates were loading — get rates again."_s);
    } catch (const AppError &error) {
        fail(u"Get Rates"_s, error);
    }
}

Task<> LabelScreen::applyRates(ShippoShipment shipment)
{
    for (ShippoRate &rate : shipment.rates) {
        if (!rate.objectCreated)
            rate.objectCreated = shipment.objectCreated;
    }
    const OfferedRates offered = offeredRates(carrier, shipment.rates);
    if (!offered.leftOut.isEmpty())
        m_app.errors.record(u"Get Rates"_s, AppError(offered.leftOut), Popup::no);
    if (offered.rates.isEmpty()) {
        const QString text = noRatesText(carrier, shipment);
        warn(text);
        m_app.errors.record(u"Get Rates"_s, AppError(text), Popup::no);
        co_return;
    }
    rates = offered.rates;
    selectRateOfClass();
    const auto isReplaced = staleCheck(edits);
    const bool keep = co_await reviewPrintedAddress(shipment);
    if (keep)
        co_return;
    if (isReplaced()) { // a scan may fill in another recipient while the dialog is open
        warn(draftChanged);
        co_return;
    }
    clearRates();
    forgetValidation();
    warn(u"Rates cleared — adjust the address and validate again."_s, DraftField::street);
}

void LabelScreen::selectRateOfClass()
{
    const QList<ShippoRate> &offered = rates.value();
    if (offered.isEmpty())
        return;
    const ServiceClassInfo &wanted = serviceClassInfo(effectiveClass());
    const auto found = std::ranges::find_if(
        offered, [&wanted](const ShippoRate &rate) { return rate.servicelevel.token == wanted.rawValue; });
    if (found != offered.end()) {
        selectedRateID = found->objectId;
        dropBanner();
        return;
    }
    selectedRateID = std::nullopt;
    warnUntilEdit(u"No "_s + wanted.displayName + u" rate came back — pick from the list."_s);
}

} // namespace parcelory

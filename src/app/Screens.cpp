#include "app/Screens.h"

#include "app/AppState.h"
#include "app/purchase/Purchases.h"
#include "core/ShippoAddress.h"
#include "core/Task.h"
#include "records/LabelChecks.h"
#include "records/SenderProfile.h"
#include "records/ShipmentRecord.h"

#include <optional>

namespace parcelory {
using namespace Qt::StringLiterals;

Screens::Screens(AppState &app)
    : signIn(app), addressBook(app), label(app), mailingLog(app), keys(app), masterLog(app, keys), scanForm(app),
      settings(app), updates(app), m_app(app)
{
    buildOn(app, signIn, addressBook, label, mailingLog, keys, masterLog, scanForm, settings, updates);
    connect(&label.purchases, &Purchases::refundWanted, this,
            [this](const ShipmentRecord &record) { spawn([this, record] { return refundSecond(record); }); });
}

/// The mailing log asks the clerk and shows the outcome.
Task<> Screens::refundSecond(ShipmentRecord label)
{
    m_app.tab = MainTab::mailingLog;
    const auto found = co_await onPool([&log = m_app.log, label] { return log.find(label); });
    const std::optional<ShipmentRecord> row = found.valueOr(std::nullopt);
    const QString obstacle = !found.isRead() ? found.failure()
                             : !row
                                 ? u"The label with tracking number %1 is not in the mailing log."_s.arg(label.tracking)
                                 : labelBlocker(LabelUse::refund, *row);
    if (obstacle.isEmpty())
        co_await mailingLog.refund(*row);
    else
        mailingLog.message = obstacle;
}

Task<> Screens::createScanForm()
{
    return m_app.createScanForm(label.sender().value_or(SenderProfile()).address);
}

} // namespace parcelory

#include "app/logs/TrackPage.h"

#include "app/AppState.h"
#include "core/AppError.h"
#include "core/Task.h"
#include "records/ShipmentRecord.h"

namespace parcelory {
using namespace Qt::StringLiterals;

QString trackingPageOf(const ShipmentRecord &record)
{
    const QString number = QString(record.tracking).remove(u' ');
    const QString carrier = record.carrier.trimmed();
    if (!record.trackingURL.isEmpty() || number.isEmpty())
        return record.trackingURL;
    if (carrier.compare(u"USPS"_s, Qt::CaseInsensitive) == 0)
        return u"https://tools.usps.com/go/TrackConfirmAction_input?origTrackNum="_s + number;
    return carrier.compare(u"FedEx"_s, Qt::CaseInsensitive) == 0
               ? u"https://www.fedex.com/fedextrack/?trknbr="_s + number
               : QString();
}

Task<QString> openTrackingPage(AppState &app, QString address)
{
    const QUrl url(address);
    const bool isWeb = url.scheme() == u"https" || url.scheme() == u"http";
    if (!url.isValid() || !isWeb || url.host().isEmpty()) // an address of another kind could start a program
        co_return u"There is no tracking page for this shipment."_s;
    try {
        co_await onPool([&desktop = app.platform.desktop, url] { desktop.openUrl(url); });
    } catch (const AppError &error) {
        co_return u"The tracking page could not be opened: "_s + app.recorded(u"Track Online"_s, error, Popup::no);
    }
    co_return QString();
}

} // namespace parcelory

#include "app/logs/TrackPage.h"

#include "app/AppState.h"
#include "core/AppError.h"
#include "core/Task.h"

namespace parcelory {
using namespace Qt::StringLiterals;

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

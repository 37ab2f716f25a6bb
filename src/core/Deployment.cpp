#include "core/Deployment.h"

#include "core/Json.h"

#include <QFile>

static void loadResources()
{
    Q_INIT_RESOURCE(deployment); // a static library's resources are linked only when asked for
}

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

/// Only the practice desk talks to anything but https, and it sets its own address after this check.
void requireSecure(const QUrl &url, const QString &key)
{
    if (!url.isValid() || url.scheme() != u"https"_s || url.host().isEmpty() || url.path() != u"/"_s ||
        url.hasQuery() || url.hasFragment() || !url.userInfo().isEmpty())
        throw AppError(u"The deployment value \"%1\" must be an https address that ends in the host's slash — it is "
                       "\"%2\"."_s.arg(key, url.toString()));
}

} // namespace

Deployment Deployment::builtIn()
{
    loadResources();
    QFile file(u":/deployment.json"_s);
    if (!file.open(QIODevice::ReadOnly))
        throw AppError(u"This build has no deployment values."_s);
    return parse(file.readAll());
}

Deployment Deployment::parse(const QByteArray &json)
{
    Deployment deployment;
    try {
        deployment = decodeJson<Deployment>(json, Keys::asIs);
    } catch (const DecodeError &error) {
        throw AppError(u"The deployment file cannot be used — %1."_s.arg(error.description()));
    }
    requireSecure(deployment.carrierApi, u"carrierApi"_s);
    requireSecure(deployment.backOffice, u"backOffice"_s);
    return deployment;
}

} // namespace parcelory

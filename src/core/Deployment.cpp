#include "core/Deployment.h"

#include "core/AppError.h"
#include "core/Json.h"

#include <QFile>

#include <algorithm>
#include <optional>

static void loadResources()
{
    Q_INIT_RESOURCE(deployment); // a static library's resources are linked only if referenced
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

void requireHost(const QString &host, const QString &key)
{
    const QUrl url(u"https://"_s + host, QUrl::StrictMode);
    if (!url.isValid() || url.host().isEmpty() || url.authority() != url.toString().sliced(8))
        throw AppError(u"The deployment value \"%1\" must be the name of a host — it is \"%2\"."_s.arg(key, host));
}

/// Without this check, a mistyped key would reject every update without an explanation.
void requireKey(const std::optional<QString> &key)
{
    constexpr int bytesOfAKey = 32;
    if (key && QByteArray::fromBase64(key->toLatin1(), QByteArray::AbortOnBase64DecodingErrors).size() != bytesOfAKey)
        throw AppError(u"The deployment value \"updatePublicKey\" must be an Ed25519 key: 32 bytes in base64."_s);
}

/// A misspelled word would silence a shipping rule.
void requireContents(const QStringList &words, const QString &key)
{
    const auto isKnown = [](const QString &word) { return Deployment::knownContents().contains(word); };
    if (!std::ranges::all_of(words, isKnown))
        throw AppError(u"The deployment value \"%1\" must list some of \"%2\" — it is \"%3\"."_s.arg(
            key, Deployment::knownContents().join(u"\", \""_s), words.join(u"\", \""_s)));
}

} // namespace

const QStringList &Deployment::knownContents()
{
    static const QStringList words = {u"coins"_s, u"bullion"_s, u"paperMoney"_s};
    return words;
}

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
    requireHost(deployment.updateFeedHost, u"updateFeedHost"_s);
    requireKey(deployment.updatePublicKey);
    requireContents(deployment.insurerExcludes.value_or(knownContents()), u"insurerExcludes"_s);
    requireContents(deployment.usualContents.value_or(QStringList()), u"usualContents"_s);
    if (deployment.insurerExcludes && deployment.insurerExcludes->isEmpty())
        throw AppError(u"The deployment value \"insurerExcludes\" is an empty list — leave it out for all contents."_s);
    deployment.updateFeed = u"https://"_s + deployment.updateFeedHost + u"/app/parcelory-latest.json"_s;
    return deployment;
}

} // namespace parcelory

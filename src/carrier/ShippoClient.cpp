#include "carrier/ShippoClient.h"

#include "core/Text.h"

#include "carrier/ShippoError.h"
#include "carrier/ShippoKeys.h"
#include "core/Platform.h"
#include "core/Task.h"
#include "core/ports/HttpTransport.h"
#include <algorithm>
#include <chrono>
#include <optional>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

/// How long the carrier wants no further request: a number of seconds, or the time when requests are taken again.
std::optional<std::chrono::seconds> waitOf(const HttpAnswer &answer, const QDateTime &now)
{
    constexpr qint64 longest = 300;
    for (const auto &[name, value] : answer.headers) {
        const bool isReset = name.compare("X-RateLimit-Reset", Qt::CaseInsensitive) == 0;
        if (!isReset && name.compare("Retry-After", Qt::CaseInsensitive) != 0)
            continue;
        bool isNumber = false;
        const qint64 number = value.trimmed().toLongLong(&isNumber);
        const qint64 seconds = isReset ? number - now.toSecsSinceEpoch() : number;
        if (isNumber)
            return std::chrono::seconds(std::clamp(seconds, qint64(1), longest));
    }
    return std::nullopt;
}

/// Throws what the answer to a refused or failed request says. It may be large: not for the main thread.
[[noreturn]] void refuse(HttpAnswer answer, const QString &token, const QDateTime &now)
{
    answer.body.replace(token.toUtf8(), "…"); // some servers echo a refused request
    if (answer.status >= 400 && answer.status < 500) {
        const QString rejected = u"Shippo rejected the request (%1)."_s.arg(answer.status);
        throw ShippoError::validation(prettyFieldErrors(answer.body).value_or(rejected), answer.status,
                                      waitOf(answer, now));
    }
    throw ShippoError::http(answer.status, utf8OrEmpty(answer.body));
}

} // namespace

ShippoClient::ShippoClient(Platform &platform, ShippoKeys &keys)
    : m_http(platform.http), m_clock(platform.clock), m_keys(keys), m_base(platform.deployment.carrierApi),
      m_sanitizer(platform.deployment.storeNames)
{
}

Task<QByteArray> ShippoClient::request(QString path, QByteArray method, QByteArray body)
{
    // On the pool, because a locked key ring blocks.
    const std::optional<QString> token = co_await onPool(m_keys, &ShippoKeys::activeToken);
    if (!token || token->isEmpty())
        throw ShippoError::noToken();
    const QUrl relative(path, QUrl::StrictMode);
    if (!relative.isValid())
        throw ShippoError::api(u"Bad API path: "_s + path);

    QUrl url = m_base.resolved(relative);
    if (url.host() == m_base.host()) { // a list's link may name another scheme or port; the token goes only here
        url.setScheme(m_base.scheme());
        url.setPort(m_base.port());
    }
    if (url.scheme() != m_base.scheme() || url.authority() != m_base.authority()) // the token is for the carrier only
        throw ShippoError::api(u"Bad API path: "_s + path);

    HttpRequest message{
        .url = url,
        .method = method,
        .headers = {{"Authorization", "ShippoToken " + token->toUtf8()}, {"Content-Type", "application/json"}},
        .body = body};
    const HttpAnswer answer = co_await m_http.send(std::move(message));
    if (answer.status >= 200 && answer.status < 300)
        co_return answer.body;
    co_return co_await onPool(
        [answer, token = *token, now = m_clock.now()]() -> QByteArray { refuse(answer, token, now); });
}

} // namespace parcelory

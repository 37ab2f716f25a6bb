#include "carrier/ShippoClient.h"

#include "core/Text.h"

#include "carrier/ShippoError.h"
#include "carrier/ShippoKeys.h"
#include "core/Platform.h"
#include "core/Task.h"
#include "core/ports/HttpTransport.h"
#include <optional>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

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

    const QUrl url = m_base.resolved(relative);
    if (url.scheme() != m_base.scheme() || url.authority() != m_base.authority()) // the token is for the carrier only
        throw ShippoError::api(u"Bad API path: "_s + path);

    HttpRequest message{
        .url = url,
        .method = method,
        .headers = {{"Authorization", "ShippoToken " + token->toUtf8()}, {"Content-Type", "application/json"}},
        .body = body};
    HttpAnswer answer = co_await m_http.send(std::move(message));
    if (answer.status >= 200 && answer.status < 300)
        co_return answer.body;
    answer.body.replace(token->toUtf8(), "…"); // some servers echo a refused request
    if (answer.status >= 400 && answer.status < 500) {
        const QString rejected = u"Shippo rejected the request (%1)."_s.arg(answer.status);
        throw ShippoError::validation(prettyFieldErrors(answer.body).value_or(rejected), answer.status);
    }
    throw ShippoError::http(answer.status, utf8OrEmpty(answer.body));
}

} // namespace parcelory

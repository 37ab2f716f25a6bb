#pragma once

#include "core/AppError.h"
#include "core/Task.h"

#include <QByteArray>
#include <QList>
#include <QUrl>

#include <chrono>
#include <utility>

namespace parcelory {

struct HttpRequest {
    QUrl url;
    QByteArray method = "GET";
    QList<std::pair<QByteArray, QByteArray>> headers;
    QByteArray body;                                              ///< sent when not empty
    std::chrono::milliseconds timeout = std::chrono::seconds(60); ///< for the whole exchange, not only for silence
    enum class Redirects { follow, answer };                      ///< `answer`: a redirect is itself the response
    Redirects redirects = Redirects::follow;
    qint64 mostBytes = 32 * 1024 * 1024; ///< a longer response is a failure
};

struct HttpAnswer {
    int status = 0; ///< the HTTP status, any value; 0 if the response was not HTTP
    QByteArray body;
    QList<std::pair<QByteArray, QByteArray>> headers = {};
};

/// No connection was made, so the server has seen nothing of the request.
class NotSent : public AppError {
public:
    using AppError::AppError;
};

/// Sends one HTTP request and returns a response of any status. Throws AppError if no response came (no network,
/// timeout, refused) or if it is too long, with a text for the clerk that contains neither headers nor body; throws
/// NotSent if the request certainly did not leave this machine.
class HttpTransport {
public:
    virtual ~HttpTransport() = default;

    virtual Task<HttpAnswer> send(HttpRequest request) = 0;
};

} // namespace parcelory

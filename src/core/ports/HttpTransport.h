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
    QByteArray body; ///< sent when not empty
    std::chrono::milliseconds timeout = std::chrono::seconds(60);
    enum class Redirects { follow, answer }; ///< `answer` takes a redirect for the answer
    Redirects redirects = Redirects::follow;
};

struct HttpAnswer {
    int status = 0; ///< the HTTP status, any value; 0 when the answer was not HTTP
    QByteArray body;
};

/// No connection came about, so the other side has seen nothing of the request.
class NotSent : public AppError {
public:
    using AppError::AppError;
};

/// Sends one HTTP request. An answer of any status is an answer; throws AppError when none came (no network,
/// time-out, refused), with a text for the clerk that holds neither headers nor body: NotSent when the request
/// certainly did not leave this machine.
class HttpTransport {
public:
    virtual ~HttpTransport() = default;

    virtual Task<HttpAnswer> send(HttpRequest request) = 0;
};

} // namespace parcelory

#pragma once

#include "core/ports/HttpTransport.h"

#include <QNetworkAccessManager>

namespace parcelory {

/// HTTP through Qt Network. Must outlive every request: a request whose manager dies never ends.
class NetworkTransport : public HttpTransport {
public:
    /// loopbackOnly refuses every other address; the practice desk uses it.
    enum class Reach { anywhere, loopbackOnly };

    explicit NetworkTransport(Reach reach);

    Task<HttpAnswer> send(HttpRequest request) override;

private:
    QNetworkAccessManager m_manager;
    Reach m_reach;
};

} // namespace parcelory

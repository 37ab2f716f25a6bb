#pragma once

#include "core/ports/Clock.h"
#include "core/ports/HttpTransport.h"

#include <QNetworkAccessManager>

namespace parcelory {

/// HTTP through Qt Network. A request ends after its timeout by the steady clock, however slowly the response arrives.
/// Must outlive every request: a request whose manager dies never ends.
class NetworkTransport : public HttpTransport {
public:
    /// loopbackOnly refuses every other address; the practice desk uses it.
    enum class Reach { anywhere, loopbackOnly };

    NetworkTransport(Reach reach, Clock &clock);

    Task<HttpAnswer> send(HttpRequest request) override;

private:
    QNetworkAccessManager m_manager;
    Reach m_reach;
    Clock &m_clock;
};

} // namespace parcelory

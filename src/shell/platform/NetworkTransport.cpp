#include "shell/platform/NetworkTransport.h"

#include "core/AppError.h"

#include <QCoroNetworkReply>
#include <QHostAddress>
#include <QNetworkReply>

#include <algorithm>
#include <memory>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr int lastTransportError = 199; ///< from 200 on, QNetworkReply's codes only repeat the HTTP status

QNetworkRequest networkRequest(const HttpRequest &request, NetworkTransport::Reach reach)
{
    QNetworkRequest message(request.url);
    message.setTransferTimeout(int(request.timeout.count()));
    for (const auto &[name, value] : request.headers)
        message.setRawHeader(name, value);
    // A redirect to another host would carry the token along, or lead the practice desk outside.
    const bool authorised = std::ranges::any_of(request.headers, [](const auto &header) {
        return header.first.compare("Authorization", Qt::CaseInsensitive) == 0;
    });
    const bool stay = authorised || reach == NetworkTransport::Reach::loopbackOnly;
    message.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                         stay ? QNetworkRequest::SameOriginRedirectPolicy : QNetworkRequest::NoLessSafeRedirectPolicy);
    return message;
}

/// The failure in the clerk's words: the host, but neither address, headers nor body.
QString failureText(const QNetworkReply &reply, const HttpRequest &request)
{
    const QString host = request.url.host();
    if (reply.error() == QNetworkReply::OperationCanceledError || reply.error() == QNetworkReply::TimeoutError)
        return u"No answer came from %1 within %2 seconds — check the network and try again."_s.arg(host).arg(
            request.timeout.count() / 1000);
    return u"%1 could not be reached (%2) — check the network and try again."_s.arg(host, reply.errorString());
}

} // namespace

NetworkTransport::NetworkTransport(Reach reach) : m_reach(reach) {}

Task<HttpAnswer> NetworkTransport::send(HttpRequest request)
{
    if (m_reach == Reach::loopbackOnly && !QHostAddress(request.url.host()).isLoopback())
        throw AppError(u"The practice desk does not go to %1."_s.arg(request.url.host()));
    const QNetworkRequest message = networkRequest(request, m_reach);
    const std::unique_ptr<QNetworkReply, QScopedPointerDeleteLater> reply(
        m_manager.sendCustomRequest(message, request.method, request.body));
    co_await reply.get();
    const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    const auto error = reply->error();
    // A connection that broke in the middle of an answer has a status, too.
    if (error != QNetworkReply::NoError && error <= lastTransportError)
        throw AppError(failureText(*reply, request));
    co_return HttpAnswer{status, reply->readAll()};
}

} // namespace parcelory

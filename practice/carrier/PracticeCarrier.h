#pragma once

#include "practice/carrier/CarrierScenario.h"

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QString>
#include <QUrl>

#include <memory>

namespace parcelory {

/// An embedded carrier on loopback that answers as the real service does, without postage.
///
/// It runs on threads of its own; every member may be called from any thread.
class PracticeCarrier {
public:
    /// The two tokens it accepts. Neither sees what was made with the other.
    static inline const QString testToken = QStringLiteral("shippo_test_practice");
    static inline const QString liveToken = QStringLiteral("shippo_live_practice");

    /// Throws std::runtime_error when no port of the loopback address can be had.
    PracticeCarrier();
    ~PracticeCarrier();

    QUrl baseUrl() const; ///< http://127.0.0.1:PORT/

    /// Takes effect with the next request. Counters (failures, list reads) start anew.
    void setScenario(CarrierScenario scenario);

    struct Request {
        QByteArray method;
        QByteArray target; ///< path and query
        QByteArray authorization;
        QByteArray contentType;
        QByteArray body;
        int answered; ///< the status; 0 when the connection was dropped
    };
    QList<Request> requests() const; ///< everything received so far, oldest first
    void clearRequests();

    /// Puts labels of another desk into the account of `token`: the newest bought at `newest`, every further one `step`
    /// earlier.
    void seedHistory(int labels, const QDateTime &newest, std::chrono::seconds step, const QString &token = testToken);

private:
    class Impl;
    std::unique_ptr<Impl> m_impl;
};

} // namespace parcelory

#pragma once

#include "practice/carrier/CarrierScenario.h"
#include "practice/carrier/PracticeHistory.h"

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QString>
#include <QUrl>

#include <memory>

namespace parcelory {

/// An embedded carrier on loopback that responds like the real service, without postage.
///
/// Runs on its own threads; every member may be called from any thread.
class PracticeCarrier {
public:
    /// The two accepted tokens. Each token sees only its own records.
    static inline const QString testToken = QStringLiteral("shippo_test_practice");
    static inline const QString liveToken = QStringLiteral("shippo_live_practice");

    /// Throws std::runtime_error if no loopback port is free.
    PracticeCarrier();
    ~PracticeCarrier();

    QUrl baseUrl() const; ///< http://127.0.0.1:PORT/

    /// Takes over the labels that an earlier carrier left in this file, and keeps every sale, refund and form there.
    void keepIn(const QString &path);

    /// Takes effect with the next request. Counters (failures, list reads) start over.
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

    /// Adds labels of another desk to the account of `token`: the newest bought at `newest`, each further label `step`
    /// earlier.
    void seedHistory(int labels, const QDateTime &newest, std::chrono::seconds step, const QString &token = testToken);
    /// Adds one label to the test token's account, unless the account knows its id.
    PracticeSold seedSale(const PracticeSale &sale);

private:
    class Impl;
    std::unique_ptr<Impl> m_impl;
};

} // namespace parcelory

#pragma once

#include "practice/backoffice/BackOfficeScenario.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QUrl>

#include <memory>

namespace parcelory {

/// An embedded back office on loopback, with a sign-in and the pages that show invoices.
///
/// Runs on its own threads; every member may be called from any thread.
class PracticeBackOffice {
public:
    static inline const QString user = QStringLiteral("dana.marsh"); ///< any other name signs in as well
    static inline const QString password = QStringLiteral("practice");

    /// Throws std::runtime_error if no loopback port is free.
    PracticeBackOffice();
    ~PracticeBackOffice();

    QUrl baseUrl() const; ///< http://127.0.0.1:PORT/

    /// Takes effect with the next request. A page held back by `neverFinishes` goes on when the new scenario clears it.
    void setScenario(BackOfficeScenario scenario);

    /// Sets the password for later sign-ins. Open sessions stay open.
    void setPassword(const QString &password);

    void endSessions(); ///< expires every open session

    struct Request {
        QByteArray method;
        QByteArray target; ///< path and query
        QByteArray body;
        QByteArray cookie; ///< the header with all cookies
        int answered;      ///< the status; 0 when the connection was dropped
    };
    QList<Request> requests() const; ///< everything received so far, oldest first
    void clearRequests();

private:
    class Impl;
    std::unique_ptr<Impl> m_impl;
};

} // namespace parcelory

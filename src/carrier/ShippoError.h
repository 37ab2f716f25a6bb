#pragma once

#include "core/AppError.h"

#include <QByteArray>

#include <chrono>
#include <optional>
#include <utility>

namespace parcelory {

/// A refusal or failure of the carrier API, with the text that the clerk sees.
class ShippoError : public AppError {
public:
    enum class Kind {
        http,       ///< a response that is neither success nor refusal
        api,        ///< a failure described by the carrier or this client
        validation, ///< the clerk's own data was refused
        noToken,    ///< no API key is active
    };

    static ShippoError http(int status, const QString &body);
    static ShippoError api(const QString &message);
    /// `wait`: how long the carrier wants no further request, if it says so.
    static ShippoError validation(const QString &message, int status = 0,
                                  std::optional<std::chrono::seconds> wait = {});
    static ShippoError noToken();

    Kind kind() const { return m_kind; }
    bool isInputError() const override { return m_kind == Kind::validation; }
    int status() const { return m_status; } ///< HTTP status of an http error or a refusal, else 0
    std::optional<std::chrono::seconds> wait() const { return m_wait; }
    bool isRateLimit() const { return m_status == 429; }
    bool isKeyRefusal() const { return m_status == 401; }

private:
    ShippoError(Kind kind, int status, QString description);

    Kind m_kind;
    int m_status;
    std::optional<std::chrono::seconds> m_wait;
};

/// The failure with what the clerk can do about it: which key was refused, or how long to wait.
QString withAdvice(const AppError &error, const QString &activeKeyName);

/// The carrier accepted a request, but its outcome could not be looked up.
class Unconfirmed : public AppError {
public:
    Unconfirmed(QString description, QString recordId)
        : AppError(std::move(description)), m_recordId(std::move(recordId))
    {
    }

    /// The carrier's id of what was accepted.
    const QString &recordId() const { return m_recordId; }

private:
    QString m_recordId;
};

/// What is known about a failed request that the carrier carries out once: a purchase, a refund, a SCAN form.
enum class RequestFate {
    notSent, ///< the request has not left this computer
    refused, ///< the carrier has answered that it did nothing
    unknown, ///< the carrier may have carried it out, or may still do so
};

RequestFate fateOf(const AppError &error);

/// Up to four readable lines from the response body of a refused request ("address_to zip: Invalid zip"), or nothing if
/// it holds no text or more than a megabyte.
std::optional<QString> prettyFieldErrors(const QByteArray &body);

} // namespace parcelory

#pragma once

#include "core/AppError.h"

#include <QByteArray>

#include <optional>

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
    static ShippoError validation(const QString &message, int status = 0);
    static ShippoError noToken();

    Kind kind() const { return m_kind; }
    bool isInputError() const override { return m_kind == Kind::validation; }
    int status() const { return m_status; } ///< HTTP status of an http error or a refusal, else 0

private:
    ShippoError(Kind kind, int status, QString description);

    Kind m_kind;
    int m_status;
};

/// The carrier accepted a request, but its outcome could not be looked up.
class Unconfirmed : public AppError {
public:
    using AppError::AppError;
};

/// The carrier accepted a purchase, but its outcome could not be looked up. The label may exist.
class UnconfirmedPurchase : public Unconfirmed {
public:
    UnconfirmedPurchase(QString description, QString transactionId)
        : Unconfirmed(std::move(description)), m_transactionId(std::move(transactionId))
    {
    }

    const QString &transactionId() const { return m_transactionId; }

private:
    QString m_transactionId;
};

/// What is known about a failed request that the carrier carries out once: a purchase, a refund, a SCAN form.
enum class RequestFate {
    notSent, ///< the request has not left this computer
    refused, ///< the carrier has answered that it did nothing
    unknown, ///< the carrier may have carried it out, or may still do so
};

RequestFate fateOf(const AppError &error);

/// Up to four readable lines from the response body of a refused request ("address_to zip: Invalid zip"), or nothing if
/// it holds no text.
std::optional<QString> prettyFieldErrors(const QByteArray &body);

} // namespace parcelory

#pragma once

#include <QByteArray>
#include <QString>

namespace parcelory {

/// True if `text` is an Ed25519 signature in base64, whatever its key.
bool isSignature(const QString &text);

/// True if `signature` is the signature of `text` for the Ed25519 key `publicKey`; both are base64.
bool signatureHolds(const QByteArray &text, const QString &signature, const QString &publicKey);

} // namespace parcelory

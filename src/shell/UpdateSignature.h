#pragma once

#include <QByteArray>
#include <QString>

namespace parcelory {

/// Whether `signature` is that of `text` by the owner of the Ed25519 key `publicKey`; both in base64.
bool signatureHolds(const QByteArray &text, const QString &signature, const QString &publicKey);

} // namespace parcelory

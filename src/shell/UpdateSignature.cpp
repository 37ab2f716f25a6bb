#include "shell/UpdateSignature.h"

#include <openssl/evp.h>

#include <cstddef>
#include <memory>

namespace parcelory {

namespace {

const unsigned char *bytes(const QByteArray &array)
{
    return reinterpret_cast<const unsigned char *>(array.constData());
}

} // namespace

bool isSignature(const QString &text)
{
    constexpr qsizetype length = 64;
    const auto decoded = QByteArray::fromBase64Encoding(text.toLatin1(), QByteArray::AbortOnBase64DecodingErrors);
    return decoded && decoded.decoded.size() == length;
}

bool signatureHolds(const QByteArray &text, const QString &signature, const QString &publicKey)
{
    const QByteArray keyBytes = QByteArray::fromBase64(publicKey.toLatin1());
    const QByteArray signatureBytes = QByteArray::fromBase64(signature.toLatin1());
    const std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> key(
        EVP_PKEY_new_raw_public_key(EVP_PKEY_ED25519, nullptr, bytes(keyBytes), size_t(keyBytes.size())),
        EVP_PKEY_free);
    const std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context(EVP_MD_CTX_new(), EVP_MD_CTX_free);
    return key && context && EVP_DigestVerifyInit(context.get(), nullptr, nullptr, nullptr, key.get()) == 1 &&
           EVP_DigestVerify(context.get(), bytes(signatureBytes), size_t(signatureBytes.size()), bytes(text),
                            size_t(text.size())) == 1;
}

} // namespace parcelory

#include "updates/Ed25519.h"

#include <openssl/crypto.h>
#include <openssl/err.h>
#include <openssl/evp.h>

#include <memory>

namespace tidemark {

namespace {

constexpr qsizetype keySize = 32;
constexpr qsizetype signatureSize = 64;

std::optional<QByteArray> decoded(const QByteArray& base64, qsizetype size) {
    auto result = QByteArray::fromBase64Encoding(base64.trimmed(), QByteArray::AbortOnBase64DecodingErrors);
    if (!result || result.decoded.size() != size)
        return std::nullopt;
    return std::move(result.decoded);
}

const unsigned char* unsignedData(QByteArrayView bytes) {
    return reinterpret_cast<const unsigned char*>(bytes.data());
}

}  // namespace

std::optional<QByteArray> ed25519Key(const QByteArray& base64) {
    return decoded(base64, keySize);
}

std::optional<QByteArray> ed25519Signature(const QByteArray& base64) {
    return decoded(base64, signatureSize);
}

bool isSigned(QByteArrayView bytes, const QByteArray& signature, const QByteArray& key) {
    const std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> publicKey(
        EVP_PKEY_new_raw_public_key(EVP_PKEY_ED25519, nullptr, unsignedData(key),
                                    static_cast<size_t>(key.size())),
        EVP_PKEY_free);
    const std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context(EVP_MD_CTX_new(), EVP_MD_CTX_free);
    // Only 1 means success. Internal errors are negative.
    const bool isRight =
        publicKey && context &&
        EVP_DigestVerifyInit(context.get(), nullptr, nullptr, nullptr, publicKey.get()) == 1 &&
        EVP_DigestVerify(context.get(), unsignedData(signature), static_cast<size_t>(signature.size()),
                         unsignedData(bytes), static_cast<size_t>(bytes.size())) == 1;
    // A wrong signature leaves an entry in the thread's error queue, where TLS would find it.
    ERR_clear_error();
    // Frees that queue now, because a thread of Qt's pool may end after OpenSSL's own cleanup at exit.
    OPENSSL_thread_stop();
    return isRight;
}

}  // namespace tidemark

#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <optional>

namespace tidemark {

/// The bytes of a base64-encoded public key; nothing unless there are exactly 32.
[[nodiscard]] std::optional<QByteArray> ed25519Key(const QByteArray& base64);

/// The bytes of a base64-encoded signature; nothing unless there are exactly 64.
[[nodiscard]] std::optional<QByteArray> ed25519Signature(const QByteArray& base64);

/// Whether the signature of these bytes was made with the private key for `key`. Takes about 2 ms per
/// megabyte. Callable from any thread.
[[nodiscard]] bool isSigned(QByteArrayView bytes, const QByteArray& signature, const QByteArray& key);

}  // namespace tidemark

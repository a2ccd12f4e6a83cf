#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <optional>

namespace tidemark {

/// The bytes of a public key in base64; nothing unless there are exactly 32.
[[nodiscard]] std::optional<QByteArray> ed25519Key(const QByteArray& base64);

/// The bytes of a signature in base64; nothing unless there are exactly 64.
[[nodiscard]] std::optional<QByteArray> ed25519Signature(const QByteArray& base64);

/// Whether the key's owner signed exactly these bytes. Takes about 2 ms a megabyte; safe on any thread.
[[nodiscard]] bool isSigned(QByteArrayView bytes, const QByteArray& signature, const QByteArray& key);

}  // namespace tidemark

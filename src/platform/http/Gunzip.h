#pragma once

#include <tl/expected.hpp>

#include <QByteArray>

namespace tidemark {

enum class GunzipError : quint8 {
    damaged,   ///< another format, cut off, or with a wrong checksum
    tooLarge,  ///< more than the limit once unpacked
};

/// Unpacks data in the gzip (RFC 1952) or zlib (RFC 1950) format. Never uses much more memory than `limit`
/// bytes.
[[nodiscard]] tl::expected<QByteArray, GunzipError> gunzip(const QByteArray& data, qsizetype limit);

}  // namespace tidemark

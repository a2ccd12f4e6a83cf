#pragma once

#include <tl/expected.hpp>

#include <QByteArray>

namespace tidemark {

enum class GunzipError : quint8 {
    damaged,   ///< not in the format, cut off, or the checksum is wrong
    tooLarge,  ///< would give more than the limit
};

/// Unpacks data in the gzip (RFC 1952) or zlib (RFC 1950) format, whole or not at all. Never uses much more
/// memory than `limit` bytes.
[[nodiscard]] tl::expected<QByteArray, GunzipError> gunzip(const QByteArray& data, qsizetype limit);

}  // namespace tidemark

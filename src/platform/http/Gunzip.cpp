#include "platform/http/Gunzip.h"

#define ZLIB_CONST
#include <zlib.h>

#include <array>
#include <memory>

namespace tidemark {

tl::expected<QByteArray, GunzipError> gunzip(const QByteArray& data, qsizetype limit) {
    z_stream stream{};
    constexpr int anyHeader = 32;
    if (inflateInit2(&stream, MAX_WBITS + anyHeader) != Z_OK)
        return tl::unexpected(GunzipError::damaged);
    const std::unique_ptr<z_stream, decltype(&inflateEnd)> end(&stream, &inflateEnd);
    stream.next_in = reinterpret_cast<const Bytef*>(data.constData());
    stream.avail_in = static_cast<uInt>(data.size());

    QByteArray result;
    std::array<char, 65536> chunk;
    // Gzip data may consist of several members.
    for (int state = Z_OK; state != Z_STREAM_END || stream.avail_in > 0;) {
        if (state == Z_STREAM_END)
            inflateReset(&stream);
        stream.next_out = reinterpret_cast<Bytef*>(chunk.data());
        stream.avail_out = chunk.size();
        state = inflate(&stream, Z_NO_FLUSH);
        if (state != Z_OK && state != Z_STREAM_END)
            return tl::unexpected(GunzipError::damaged);
        const auto size = static_cast<qsizetype>(chunk.size() - stream.avail_out);
        if (result.size() + size > limit)
            return tl::unexpected(GunzipError::tooLarge);
        result.append(chunk.data(), size);
    }
    return result;
}

}  // namespace tidemark

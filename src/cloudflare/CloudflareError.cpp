#include "cloudflare/CloudflareError.h"

namespace tidemark {

using namespace Qt::StringLiterals;

CloudflareError CloudflareError::fromStatus(int status) {
    if (status == 401 || status == 403)
        return {.kind = Kind::unauthorized};
    if (status == 429)
        return {.kind = Kind::rateLimited};
    return {.kind = Kind::httpError, .status = status};
}

QString CloudflareError::description() const {
    switch (kind) {
        case Kind::httpError:
            return u"Cloudflare returned HTTP %1."_s.arg(status);
        case Kind::unauthorized:
            return u"Cloudflare rejected the token.\nCheck it has \"Read analytics and logs\" permission."_s;
        case Kind::rateLimited:
            return u"Cloudflare rate limit reached.\nTry again in a minute."_s;
        case Kind::unexpectedResponse:
            return u"Couldn't read Cloudflare's response."_s;
    }
    Q_UNREACHABLE();
}

QString description(const CloudflareFailure& failure) {
    if (const auto* transport = std::get_if<TransportError>(&failure))
        return description(*transport);
    if (const auto* decoding = std::get_if<DecodingError>(&failure))
        return decoding->description();
    return std::get<CloudflareError>(failure).description();
}

}  // namespace tidemark

#include "vercel/VercelError.h"

namespace tidemark {

using namespace Qt::StringLiterals;

APIError APIError::fromStatus(int status) {
    if (status == 401)
        return {.kind = Kind::unauthorized};
    if (status == 429)
        return {.kind = Kind::rateLimited};
    return {.kind = Kind::httpError, .status = status};
}

QString APIError::description() const {
    switch (kind) {
        case Kind::httpError:
            return u"HTTP error %1"_s.arg(status);
        case Kind::invalidResponse:
            return u"Invalid server response"_s;
        case Kind::unauthorized:
            return u"Invalid API token (401)"_s;
        case Kind::rateLimited:
            return u"Rate limited (429)"_s;
    }
    Q_UNREACHABLE();
}

QString description(const VercelError& error) {
    if (const auto* transport = std::get_if<TransportError>(&error))
        return description(*transport);
    if (const auto* decoding = std::get_if<DecodingError>(&error))
        return decoding->description();
    return std::get<APIError>(error).description();
}

bool isRateLimited(const VercelError& error) {
    const auto* api = std::get_if<APIError>(&error);
    return api && api->kind == APIError::Kind::rateLimited;
}

bool isRefused(const VercelError& error) {
    const auto* api = std::get_if<APIError>(&error);
    return api && (api->kind == APIError::Kind::unauthorized || api->status == 403);
}

}  // namespace tidemark

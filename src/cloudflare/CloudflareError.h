#pragma once

#include <tl/expected.hpp>

#include <QString>
#include <variant>

#include "platform/base/JsonReader.h"
#include "platform/http/HttpClient.h"

namespace tidemark {

/// An error answer of the Cloudflare API.
struct CloudflareError {
    enum class Kind : quint8 {
        httpError,           ///< any other status, kept in `status`
        unauthorized,        ///< 401 or 403
        rateLimited,         ///< 429
        unexpectedResponse,  ///< the answer was not HTTP, or the list of zones could not be decoded
    };

    Kind kind = Kind::unexpectedResponse;
    int status = 0;

    /// The error of a status that is not a success.
    [[nodiscard]] static CloudflareError fromStatus(int status);
    [[nodiscard]] QString description() const;
    bool operator==(const CloudflareError&) const = default;
};

/// Why a request to the API failed.
using CloudflareFailure = std::variant<CloudflareError, TransportError, DecodingError>;

/// One or two short English sentences for the user, on a line each.
[[nodiscard]] QString description(const CloudflareFailure& failure);

template <typename T>
using CloudflareResult = tl::expected<T, CloudflareFailure>;

}  // namespace tidemark

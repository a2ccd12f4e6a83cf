#pragma once

#include <tl/expected.hpp>

#include <QString>
#include <variant>

#include "platform/base/JsonReader.h"
#include "platform/http/HttpClient.h"

namespace tidemark {

/// What the Cloudflare API refuses with.
struct CloudflareError {
    enum class Kind : quint8 {
        httpError,           ///< any other status, kept in `status`
        unauthorized,        ///< 401 or 403
        rateLimited,         ///< 429
        unexpectedResponse,  ///< the answer was not HTTP, or the zones list cannot be read
    };

    Kind kind = Kind::unexpectedResponse;
    int status = 0;

    /// The error of a status that is not a success.
    [[nodiscard]] static CloudflareError fromStatus(int status);
    [[nodiscard]] QString description() const;
    bool operator==(const CloudflareError&) const = default;
};

/// Every way in which a request to the API fails.
using CloudflareFailure = std::variant<CloudflareError, TransportError, DecodingError>;

/// A short English sentence, or two lines, for the user.
[[nodiscard]] QString description(const CloudflareFailure& failure);

template <typename T>
using CloudflareResult = tl::expected<T, CloudflareFailure>;

}  // namespace tidemark

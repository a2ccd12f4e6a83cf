#pragma once

#include <tl/expected.hpp>

#include <QString>
#include <variant>

#include "platform/base/JsonReader.h"
#include "platform/http/HttpClient.h"

namespace tidemark {

/// An error answer of the Vercel REST API.
struct APIError {
    enum class Kind : quint8 {
        httpError,        ///< any other status, kept in `status`
        invalidResponse,  ///< the answer was not HTTP
        unauthorized,     ///< 401
        rateLimited,      ///< 429
    };

    Kind kind = Kind::invalidResponse;
    int status = 0;

    /// The error of a status that is not a success.
    [[nodiscard]] static APIError fromStatus(int status);
    [[nodiscard]] QString description() const;
    bool operator==(const APIError&) const = default;
};

/// Why a request to the API failed.
using VercelError = std::variant<APIError, TransportError, DecodingError>;

/// A short English sentence for the user.
[[nodiscard]] QString description(const VercelError& error);
[[nodiscard]] bool isRateLimited(const VercelError& error);
/// Whether the service refuses the token: 401 or 403.
[[nodiscard]] bool isRefused(const VercelError& error);

template <typename T>
using VercelResult = tl::expected<T, VercelError>;

}  // namespace tidemark

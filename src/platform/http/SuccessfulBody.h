#pragma once

#include <tl/expected.hpp>

#include <QByteArray>
#include <algorithm>
#include <initializer_list>
#include <utility>
#include <variant>

#include "platform/http/HttpClient.h"

namespace tidemark {

/// The body of an answer with one of the statuses `successes`, else the failure. `Failure` is a variant that
/// can hold a TransportError. Its first type is the service's own error, whose default value stands for an
/// answer that is not HTTP.
template <typename Failure>
[[nodiscard]] tl::expected<QByteArray, Failure> successfulBody(HttpResult result,
                                                               std::initializer_list<int> successes) {
    using ServiceError = std::variant_alternative_t<0, Failure>;
    if (!result && result.error() == TransportError::notHttp)
        return tl::unexpected(Failure(ServiceError{}));
    if (!result)
        return tl::unexpected(Failure(result.error()));
    if (std::ranges::find(successes, result->status) == successes.end())
        return tl::unexpected(Failure(ServiceError::fromStatus(result->status)));
    return std::move(result->body);
}

}  // namespace tidemark

#pragma once

#include <QCoroTask>

#include "platform/http/NetworkHttpClient.h"
#include "tests/fakes/FakeHttpClient.h"

/// Helpers for the tests of the network client.
namespace tidemark {

inline NetworkHttpClient::Options loopbackOptions() {
    return {.userAgent = "Tidemark/1.2.3",
            .insecureLoopback = NetworkHttpClient::InsecureLoopback::allowed,
            .bodyLimit = qint64{1024} * 1024};
}

inline HttpRequest get(const QUrl& url) {
    return {.url = url,
            .method = HttpMethod::get,
            .headers = {},
            .body = {},
            .timeout = std::chrono::seconds(10)};
}

inline HttpRequest authorised(const QUrl& url) {
    HttpRequest request = get(url);
    request.headers = {{"authorization", "Bearer secret"}};
    return request;
}

inline HttpResult send(HttpClient& client, HttpRequest request, std::stop_token stop = {}) {
    return QCoro::waitFor(client.send(std::move(request), std::move(stop)));
}

/// The result as text for failure messages.
inline QString summary(const HttpResult& result) {
    return result ? QStringLiteral("%1, %2 bytes").arg(result->status).arg(result->body.size())
                  : description(result.error());
}

inline HttpResult failed(TransportError error) {
    return tl::unexpected(error);
}

}  // namespace tidemark

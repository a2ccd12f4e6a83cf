#pragma once

#include <tl/expected.hpp>

#include <QByteArray>
#include <QByteArrayView>
#include <QCoroTask>
#include <QList>
#include <QString>
#include <QUrl>
#include <chrono>
#include <functional>
#include <stop_token>
#include <utility>

namespace tidemark {

enum class HttpMethod : quint8 { get, post };

/// One request. A request with an "Authorization" header never follows a redirect, because its token must not
/// reach another origin. The caller gets the status 3xx instead.
struct HttpRequest {
    QUrl url;
    HttpMethod method = HttpMethod::get;
    QList<std::pair<QByteArray, QByteArray>> headers{};
    QByteArray body{};
    /// For the whole exchange, from sending to the last byte of the body.
    std::chrono::milliseconds timeout = std::chrono::seconds(60);
    /// Largest body that is accepted, in bytes after decompression; 0 for the client's own limit.
    qint64 bodyLimit = 0;

    bool operator==(const HttpRequest&) const = default;
};

/// An answer with its whole body, decompressed.
struct HttpResponse {
    int status = 0;
    QByteArray body;

    bool operator==(const HttpResponse&) const = default;
};

/// Why there is no answer. The descriptions contain no address and no token.
enum class TransportError : quint8 {
    hostNotFound,       ///< the name did not resolve
    connectionRefused,  ///< nothing listens there
    connectionLost,     ///< reset or closed before the answer was complete
    offline,            ///< no network, or no route to the server
    timedOut,           ///< the deadline of the request passed
    cancelled,          ///< the stop token was triggered
    insecure,           ///< TLS failed, or the address is not https where it must be
    tooLarge,           ///< the body exceeded the limit
    proxyFailed,        ///< the proxy is missing, refuses or asks for credentials
    notHttp,            ///< the answer was not HTTP
    malformedHeader,    ///< a header contains control characters, such as a token with a line break
    other,
};

/// A short English sentence for the user.
[[nodiscard]] QString description(TransportError error);

using HttpResult = tl::expected<HttpResponse, TransportError>;

/// Receives a body piece by piece as it arrives. Return false to end the download.
using HttpSink = std::function<bool(QByteArrayView piece)>;

/// A file to fetch by GET, without a token. Redirects are followed, over https only.
struct HttpDownload {
    QUrl url;
    /// Largest body that is accepted, in bytes.
    qint64 limit = 0;
    /// How long the server may be silent. The whole download may take any time.
    std::chrono::milliseconds patience = std::chrono::seconds(30);
};

/// Whether the host is this machine itself: "localhost" or a loopback address.
[[nodiscard]] bool isLoopback(const QString& host);

/// Sends requests. UI thread only; tasks are resumed on it.
class HttpClient {
public:
    HttpClient() = default;
    HttpClient(const HttpClient&) = delete;
    HttpClient& operator=(const HttpClient&) = delete;
    virtual ~HttpClient() = default;

    /// Gives the answer, whatever its status, or the reason why there is none. Triggering `stop` ends the
    /// exchange with `cancelled`. Always suspends at least once.
    [[nodiscard]] virtual QCoro::Task<HttpResult> send(HttpRequest request, std::stop_token stop) = 0;

    /// Passes the body of an answer with status 200, and of no other, to `sink` as it arrives. Compressed
    /// bodies are refused. Gives the status, or the reason why the answer was not complete, which is
    /// `cancelled` also when the sink returned false. Always suspends at least once.
    [[nodiscard]] virtual QCoro::Task<tl::expected<int, TransportError>> download(HttpDownload download,
                                                                                  HttpSink sink,
                                                                                  std::stop_token stop) = 0;
};

}  // namespace tidemark

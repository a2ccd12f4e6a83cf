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

/// One request. A request with an "Authorization" header is *authorised*: it never follows a redirect, so
/// that the token reaches no other origin; the 3xx is then the status that the caller sees.
struct HttpRequest {
    QUrl url;
    HttpMethod method = HttpMethod::get;
    QList<std::pair<QByteArray, QByteArray>> headers{};
    QByteArray body{};
    /// Bounds the whole exchange, from sending to the last byte of the body.
    std::chrono::milliseconds timeout = std::chrono::seconds(60);
    /// The longest body that is accepted, in bytes after decompression; 0 for the client's own limit.
    qint64 bodyLimit = 0;

    bool operator==(const HttpRequest&) const = default;
};

/// An answer with its whole body, decompressed.
struct HttpResponse {
    int status = 0;
    QByteArray body;

    bool operator==(const HttpResponse&) const = default;
};

/// Why no answer came. The texts name no address and no token.
enum class TransportError : quint8 {
    hostNotFound,       ///< the name did not resolve
    connectionRefused,  ///< nobody listens there
    connectionLost,     ///< reset or closed before the whole answer had come
    offline,            ///< no network, or the way there is blocked
    timedOut,           ///< the deadline of the request passed
    cancelled,          ///< the stop token was triggered
    insecure,           ///< TLS failed, or the address is not https where it must be
    tooLarge,           ///< the body passed the limit
    proxyFailed,        ///< the proxy is missing, refuses or wants credentials
    notHttp,            ///< something answered, but not in HTTP
    malformedHeader,    ///< a header holds control characters, such as a token with a line break
    other,
};

/// A short English sentence for the user.
[[nodiscard]] QString description(TransportError error);

using HttpResult = tl::expected<HttpResponse, TransportError>;

/// Takes a body piece by piece, at once and in order. False ends the download.
using HttpSink = std::function<bool(QByteArrayView piece)>;

/// A file to be fetched with a GET that carries no token. It follows redirects, over https only.
struct HttpDownload {
    QUrl url;
    /// The most bytes that are accepted.
    qint64 limit = 0;
    /// How long the server may be silent. The whole may take any time.
    std::chrono::milliseconds patience = std::chrono::seconds(30);
};

/// Sends requests. All calls come from the UI thread, and tasks resume on it.
class HttpClient {
public:
    HttpClient() = default;
    HttpClient(const HttpClient&) = delete;
    HttpClient& operator=(const HttpClient&) = delete;
    virtual ~HttpClient() = default;

    /// Gives the answer, whatever its status, or the reason why there is none. A triggered `stop` ends the
    /// exchange early with `cancelled`. Never completes before it has suspended once.
    [[nodiscard]] virtual QCoro::Task<HttpResult> send(HttpRequest request, std::stop_token stop) = 0;

    /// Hands the body of an answer with status 200, and of no other, to `sink` while it arrives, as it is
    /// sent, never compressed. Gives the status, or the reason why there was no whole answer; `cancelled`
    /// also when the sink wanted no more. Never completes before it has suspended once.
    [[nodiscard]] virtual QCoro::Task<tl::expected<int, TransportError>> download(HttpDownload download,
                                                                                  HttpSink sink,
                                                                                  std::stop_token stop) = 0;
};

}  // namespace tidemark

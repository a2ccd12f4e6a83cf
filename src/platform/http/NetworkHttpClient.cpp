#include "platform/http/NetworkHttpClient.h"

#include <QCoroFuture>
#include <QNetworkAccessManager>
#include <QNetworkProxyFactory>
#include <QNetworkReply>
#include <QPromise>
#include <QTimer>
#include <algorithm>
#include <array>

#include "platform/http/Gunzip.h"

namespace tidemark {

namespace {

constexpr int maxRedirects = 10;

/// The proxies of the desktop's settings or the environment, but none for this machine itself.
class SystemProxies final : public QNetworkProxyFactory {
public:
    QList<QNetworkProxy> queryProxy(const QNetworkProxyQuery& query) override {
        if (isLoopback(query.peerHostName()))
            return {QNetworkProxy(QNetworkProxy::NoProxy)};
        return systemProxyForQuery(query);
    }
};

bool isAuthorised(const HttpRequest& request) {
    return std::any_of(request.headers.begin(), request.headers.end(), [](const auto& header) {
        return header.first.compare("authorization", Qt::CaseInsensitive) == 0;
    });
}

/// Qt does not check values: a line break in one would begin another header.
bool isSendable(const std::pair<QByteArray, QByteArray>& header) {
    return std::ranges::none_of(header.second, [](char byte) {
        return (static_cast<unsigned char>(byte) < 0x20 && byte != '\t') || byte == 0x7f;
    });
}

QNetworkRequest networkRequest(const HttpRequest& request, const QByteArray& userAgent) {
    QNetworkRequest result(request.url);
    result.setRawHeader("User-Agent", userAgent);
    if (request.method == HttpMethod::post) {
        result.setRawHeader("Content-Type", "application/octet-stream");
        result.setHeader(QNetworkRequest::ContentLengthHeader, request.body.size());
        result.setAttribute(QNetworkRequest::DoNotBufferUploadDataAttribute, true);
    }
    for (const auto& [name, value] : request.headers)
        result.setRawHeader(name, value);
    // Setting this header ourselves turns off Qt's decompression, which accepts a body that was cut off as
    // complete and never finishes a damaged one.
    result.setRawHeader("Accept-Encoding", "gzip");
    // Qt would send the token to another origin.
    result.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    // Qt keeps using an HTTP/2 connection that died during suspend. With HTTP/1.1 only one request fails.
    result.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
    result.setAttribute(QNetworkRequest::HttpPipeliningAllowedAttribute, false);
    result.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    result.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    result.setAttribute(QNetworkRequest::AuthenticationReuseAttribute, QNetworkRequest::Manual);
    return result;
}

/// A request body that can be read only once. Qt cannot send it again when the connection dies after the
/// server may have acted on it.
class UnrepeatableBody final : public QIODevice {
public:
    explicit UnrepeatableBody(QByteArray data) : m_data(std::move(data)) {
        open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }

    [[nodiscard]] bool isSequential() const override { return true; }
    bool seek(qint64 /*position*/) override { return false; }
    bool reset() override { return false; }
    [[nodiscard]] qint64 bytesAvailable() const override { return m_data.size() - m_position; }

protected:
    qint64 readData(char* data, qint64 maxSize) override {
        const qint64 size = std::min(maxSize, bytesAvailable());
        if (size == 0)
            return -1;
        std::copy_n(m_data.constData() + m_position, size, data);
        m_position += size;
        return size;
    }
    qint64 writeData(const char* /*data*/, qint64 /*size*/) override { return -1; }

private:
    QByteArray m_data;
    qint64 m_position = 0;
};

/// Whether Qt derived the error from an HTTP status. Such an answer counts like any other.
bool isFromStatus(QNetworkReply::NetworkError error, int status) {
    if (status < 400)
        return false;
    return error == QNetworkReply::ProtocolInvalidOperationError ||
           (error >= QNetworkReply::ContentAccessDenied && error <= QNetworkReply::UnknownContentError) ||
           (error >= QNetworkReply::InternalServerError && error <= QNetworkReply::UnknownServerError);
}

TransportError transportError(QNetworkReply::NetworkError error) {
    switch (error) {
        case QNetworkReply::HostNotFoundError:
            return TransportError::hostNotFound;
        case QNetworkReply::ConnectionRefusedError:
            return TransportError::connectionRefused;
        case QNetworkReply::RemoteHostClosedError:
        case QNetworkReply::TemporaryNetworkFailureError:
        case QNetworkReply::ContentReSendError:
            return TransportError::connectionLost;
        case QNetworkReply::TimeoutError:
            return TransportError::timedOut;
        case QNetworkReply::SslHandshakeFailedError:
        case QNetworkReply::InsecureRedirectError:
            return TransportError::insecure;
        case QNetworkReply::NetworkSessionFailedError:
        case QNetworkReply::UnknownNetworkError:
            return TransportError::offline;
        case QNetworkReply::ProxyConnectionRefusedError:
        case QNetworkReply::ProxyConnectionClosedError:
        case QNetworkReply::ProxyNotFoundError:
        case QNetworkReply::ProxyTimeoutError:
        case QNetworkReply::ProxyAuthenticationRequiredError:
        case QNetworkReply::UnknownProxyError:
            return TransportError::proxyFailed;
        case QNetworkReply::ProtocolFailure:
            return TransportError::notHttp;
        default:
            return TransportError::other;
    }
}

}  // namespace

/// One request in progress. Only the first `end` has an effect.
class NetworkHttpClient::Exchange final : public QObject {
public:
    /// With a sink, bodies of answers with status 200 go there, and the timeout starts anew with each piece.
    Exchange(NetworkHttpClient& client, HttpRequest request, HttpSink sink = {})
        : m_client(client), m_request(std::move(request)), m_sink(std::move(sink)) {
        m_promise.start();
        if (m_request.bodyLimit <= 0)
            m_request.bodyLimit = m_client.m_options.bodyLimit;
        m_deadline.setSingleShot(true);
        m_deadline.callOnTimeout(this, [this] {
            m_client.leave(m_network);
            end(tl::unexpected(TransportError::timedOut));
        });
        connect(&client.m_lifetime, &QObject::destroyed, this,
                [this] { end(tl::unexpected(TransportError::cancelled)); });
    }

    void start() {
        m_client.leaveDeadConnections();
        m_network = m_client.network();
        restartDeadline();
        sendRequest();
    }

    /// Ends the exchange from the event loop. Callable from any thread.
    void endLater(TransportError error) {
        QMetaObject::invokeMethod(this, [this, error] { end(tl::unexpected(error)); }, Qt::QueuedConnection);
    }

    [[nodiscard]] const HttpRequest& request() const { return m_request; }
    [[nodiscard]] QFuture<void> future() { return m_promise.future(); }
    [[nodiscard]] HttpResult takeResult() { return std::move(m_result); }

private:
    void restartDeadline() { m_deadline.start(std::max(m_request.timeout, std::chrono::milliseconds(0))); }

    void sendRequest() {
        QNetworkRequest prepared = networkRequest(m_request, m_client.m_options.userAgent);
        if (m_sink)
            prepared.setRawHeader("Accept-Encoding", "identity");
        if (m_request.method == HttpMethod::post) {
            auto body = std::make_unique<UnrepeatableBody>(m_request.body);
            m_reply = m_network->post(prepared, body.get());
            body.release()->setParent(m_reply);
        } else {
            m_reply = m_network->get(prepared);
        }
        m_reply->setReadBufferSize(m_client.m_options.readBuffer);
        connect(m_reply, &QNetworkReply::readyRead, this, &Exchange::read);
        connect(m_reply, &QNetworkReply::finished, this, &Exchange::onFinished);
    }

    void read() {
        std::array<char, 16384> chunk;
        while (!m_isOver) {
            const qint64 size = m_reply->read(chunk.data(), chunk.size());
            if (size <= 0)
                return;
            m_received += size;
            if (m_received > m_request.bodyLimit)
                end(tl::unexpected(TransportError::tooLarge));
            else if (!m_sink)
                m_body.append(chunk.data(), size);
            else
                passOn(QByteArrayView(chunk.data(), size));
        }
    }

    void passOn(QByteArrayView piece) {
        restartDeadline();
        if (status() != 200)
            return;
        if (isCompressed())
            end(tl::unexpected(TransportError::other));
        else if (!m_sink(piece))
            end(tl::unexpected(TransportError::cancelled));
    }

    [[nodiscard]] int status() const {
        return m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    }

    [[nodiscard]] QByteArray encoding() const {
        return m_reply->rawHeader("Content-Encoding").trimmed().toLower();
    }

    [[nodiscard]] bool isCompressed() const { return !encoding().isEmpty() && encoding() != "identity"; }

    void onFinished() {
        read();
        if (m_isOver)
            return;
        const int status = this->status();
        const auto error = m_reply->error();
        if (error != QNetworkReply::NoError && !isFromStatus(error, status))
            end(tl::unexpected(transportError(error)));
        else if (status == 0)
            end(tl::unexpected(TransportError::notHttp));
        else if (const QUrl target = redirectTarget(status); target.isValid())
            follow(target);
        else
            end(decoded(status));
    }

    /// The target of a redirect that is to be followed; otherwise invalid.
    [[nodiscard]] QUrl redirectTarget(int status) const {
        if (m_request.method != HttpMethod::get || isAuthorised(m_request) || m_redirects == maxRedirects)
            return {};
        const bool isRedirect =
            status == 301 || status == 302 || status == 303 || status == 307 || status == 308;
        const QByteArray location = m_reply->rawHeader("Location");
        if (!isRedirect || location.isEmpty())
            return {};
        return m_request.url.resolved(QUrl::fromEncoded(location));
    }

    void follow(const QUrl& target) {
        if (!m_client.isAllowed(target)) {
            end(tl::unexpected(TransportError::insecure));
            return;
        }
        ++m_redirects;
        dropReply();
        m_body.clear();
        m_received = 0;
        m_request.url = target;
        sendRequest();
    }

    /// The answer with its body decompressed. When the connection closes early, Qt sometimes reports success.
    /// We notice this by the Content-Length or the checksum of a compressed body. An uncompressed chunked
    /// body has neither, so its reader has to notice.
    [[nodiscard]] HttpResult decoded(int status) {
        const auto length = m_reply->rawHeader("Content-Length").toLongLong();
        const bool hasBody = status != 204 && status != 304;
        if (hasBody && !m_reply->hasRawHeader("Transfer-Encoding") && m_received < length)
            return tl::unexpected(TransportError::connectionLost);
        if (m_body.isEmpty() || !isCompressed())
            return HttpResponse{.status = status, .body = std::move(m_body)};
        if (const QByteArray name = encoding(); name != "gzip" && name != "x-gzip" && name != "deflate")
            return tl::unexpected(TransportError::other);
        auto body = gunzip(m_body, m_request.bodyLimit);
        if (!body) {
            return tl::unexpected(body.error() == GunzipError::tooLarge ? TransportError::tooLarge
                                                                        : TransportError::connectionLost);
        }
        return HttpResponse{.status = status, .body = *std::move(body)};
    }

    void end(HttpResult result) {
        if (m_isOver)
            return;
        m_isOver = true;
        m_result = std::move(result);
        m_deadline.stop();
        dropReply();
        m_promise.finish();
    }

    /// Deleting the reply closes a connection that is still in use.
    void dropReply() {
        if (!m_reply)
            return;
        m_reply->disconnect(this);
        m_reply->deleteLater();
        m_reply = nullptr;
    }

    NetworkHttpClient& m_client;
    HttpRequest m_request;
    HttpSink m_sink;
    std::shared_ptr<QNetworkAccessManager> m_network;
    QPromise<void> m_promise;
    QTimer m_deadline;
    QNetworkReply* m_reply = nullptr;
    QByteArray m_body;
    /// Bytes of the body, before decompression.
    qint64 m_received = 0;
    HttpResult m_result;
    int m_redirects = 0;
    bool m_isOver = false;
};

NetworkHttpClient::NetworkHttpClient(Options options) : m_options(std::move(options)) {}

NetworkHttpClient::~NetworkHttpClient() = default;

QCoro::Task<HttpResult> NetworkHttpClient::send(HttpRequest request, std::stop_token stop) {
    return run(std::make_shared<Exchange>(*this, std::move(request)), std::move(stop));
}

QCoro::Task<tl::expected<int, TransportError>> NetworkHttpClient::download(HttpDownload download,
                                                                           HttpSink sink,
                                                                           std::stop_token stop) {
    HttpRequest request{.url = std::move(download.url),
                        .timeout = download.patience,
                        .bodyLimit = std::max(download.limit, qint64{1})};
    const auto exchange = std::make_shared<Exchange>(*this, std::move(request), std::move(sink));
    const HttpResult result = co_await run(exchange, std::move(stop));
    co_return result.map([](const HttpResponse& response) { return response.status; });
}

QCoro::Task<HttpResult> NetworkHttpClient::run(std::shared_ptr<Exchange> exchange, std::stop_token stop) {
    if (!isAllowed(exchange->request().url))
        exchange->endLater(TransportError::insecure);
    else if (!std::ranges::all_of(exchange->request().headers, isSendable))
        exchange->endLater(TransportError::malformedHeader);
    else if (!stop.stop_requested())
        exchange->start();
    const std::stop_callback onStop(std::move(stop),
                                    [&exchange] { exchange->endLater(TransportError::cancelled); });
    const QFuture<void> future = exchange->future();
    co_await future;
    co_return exchange->takeResult();
}

bool NetworkHttpClient::isAllowed(const QUrl& url) const {
    if (!url.isValid() || url.host().isEmpty())
        return false;
    if (url.scheme() == QLatin1String("https"))
        return true;
    return url.scheme() == QLatin1String("http") && isLoopback(url.host()) &&
           m_options.insecureLoopback == InsecureLoopback::allowed;
}

void NetworkHttpClient::leave(const std::shared_ptr<QNetworkAccessManager>& network) {
    if (m_network == network)
        m_network.reset();
}

void NetworkHttpClient::leaveDeadConnections() {
    NetworkPath path = m_options.networkPath();
    if (m_networkPath && !m_networkPath->isContinuedBy(path))
        m_network.reset();
    m_networkPath = std::move(path);
}

std::shared_ptr<QNetworkAccessManager> NetworkHttpClient::network() {
    if (!m_network) {
        m_network = std::make_shared<QNetworkAccessManager>();
        m_network->setProxyFactory(new SystemProxies);
    }
    return m_network;
}

}  // namespace tidemark

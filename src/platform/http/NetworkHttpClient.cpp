#include "platform/http/NetworkHttpClient.h"

#include <QCoroFuture>
#include <QFutureWatcher>
#include <QPromise>
#include <QTimer>
#include <algorithm>

#include "platform/http/CurlConnections.h"
#include "platform/http/CurlTransfer.h"
#include "platform/http/Gunzip.h"

namespace tidemark {

namespace {

constexpr int maxRedirects = 10;

bool isAuthorised(const HttpRequest& request) {
    return std::any_of(request.headers.begin(), request.headers.end(), [](const auto& header) {
        return header.first.compare("authorization", Qt::CaseInsensitive) == 0;
    });
}

/// libcurl does not check values: a line break in one would begin another header.
bool isSendable(const std::pair<QByteArray, QByteArray>& header) {
    return std::ranges::none_of(header.second, [](char byte) {
        return (static_cast<unsigned char>(byte) < 0x20 && byte != '\t') || byte == 0x7f;
    });
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
            fail(m_isLookingForProxy ? TransportError::proxyFailed : TransportError::timedOut);
        });
        connect(&client.m_lifetime, &QObject::destroyed, this,
                [this] { end(tl::unexpected(TransportError::cancelled)); });
    }

    ~Exchange() override { end(tl::unexpected(TransportError::cancelled)); }

    /// Waits for the proxy's address, and sends the request.
    void start() {
        m_client.followNetwork();
        m_connections = m_client.connections();
        restartDeadline();
        findProxy();
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

    void findProxy() {
        const QFuture<QByteArray> proxy = m_client.m_proxies.find(m_request.url);
        if (proxy.isFinished()) {
            sendRequest(proxy.result());
            return;
        }
        m_isLookingForProxy = true;
        auto* const watcher = new QFutureWatcher<QByteArray>(this);
        connect(watcher, &QFutureWatcher<QByteArray>::finished, this, [this, watcher] {
            watcher->deleteLater();
            m_isLookingForProxy = false;
            if (!m_isOver)
                sendRequest(watcher->result());
        });
        watcher->setFuture(proxy);
    }

    void sendRequest(const QByteArray& proxy) {
        const Options& options = m_client.m_options;
        m_transfer =
            std::make_unique<CurlTransfer>(m_request,
                                           CurlTransfer::Settings{.userAgent = options.userAgent,
                                                                  .encoding = m_sink ? "identity" : "gzip",
                                                                  .authorities = options.authorities,
                                                                  .proxy = proxy},
                                           [this](QByteArrayView piece) {
                                               m_refusal = take(piece);
                                               return !m_refusal;
                                           });
        m_connections->add(m_transfer->handle(), [this](CURLcode code) { onCompleted(code); });
    }

    /// The reason not to take more than that, if there is one.
    [[nodiscard]] std::optional<TransportError> take(QByteArrayView piece) {
        m_received += piece.size();
        if (m_received > m_request.bodyLimit)
            return TransportError::tooLarge;
        if (!m_sink) {
            m_body.append(piece);
            return std::nullopt;
        }
        restartDeadline();
        if (m_transfer->status() != 200)
            return std::nullopt;
        if (isCompressed())
            return TransportError::other;
        return m_sink(piece) ? std::nullopt : std::optional(TransportError::cancelled);
    }

    [[nodiscard]] bool isCompressed() const {
        const QByteArray encoding = m_transfer->contentEncoding();
        return !encoding.isEmpty() && encoding != "identity";
    }

    void onCompleted(CURLcode code) {
        if (m_refusal)
            fail(*m_refusal);
        else if (code != CURLE_OK)
            fail(m_transfer->error(code));
        else if (const QUrl target = redirectTarget(); target.isValid())
            follow(target);
        else if (const auto error = unpack())
            fail(*error);
        else
            end(HttpResponse{.status = m_transfer->status(), .body = std::move(m_body)});
    }

    /// Decompresses the body. libcurl's own decompression takes a body that was cut off for a whole one.
    [[nodiscard]] std::optional<TransportError> unpack() {
        if (m_body.isEmpty() || !isCompressed())
            return std::nullopt;
        if (const QByteArray name = m_transfer->contentEncoding();
            name != "gzip" && name != "x-gzip" && name != "deflate")
            return TransportError::other;
        auto body = gunzip(m_body, m_request.bodyLimit);
        if (!body) {
            return body.error() == GunzipError::tooLarge ? TransportError::tooLarge
                                                         : TransportError::connectionLost;
        }
        m_body = *std::move(body);
        return std::nullopt;
    }

    /// An error's status counts even when its body did not arrive.
    void fail(TransportError error) {
        if (error != TransportError::cancelled && m_transfer && !m_sink && m_transfer->status() >= 400)
            end(HttpResponse{.status = m_transfer->status(), .body = {}});
        else
            end(tl::unexpected(error));
    }

    /// The target of a redirect that is to be followed; otherwise invalid.
    [[nodiscard]] QUrl redirectTarget() const {
        if (m_request.method != HttpMethod::get || isAuthorised(m_request) || m_redirects == maxRedirects)
            return {};
        return m_transfer->redirectTarget();
    }

    void follow(const QUrl& target) {
        if (!m_client.isAllowed(target)) {
            end(tl::unexpected(TransportError::insecure));
            return;
        }
        ++m_redirects;
        dropTransfer();
        m_body.clear();
        m_received = 0;
        m_request.url = target;
        findProxy();
    }

    void end(HttpResult result) {
        if (m_isOver)
            return;
        m_isOver = true;
        m_result = std::move(result);
        m_deadline.stop();
        dropTransfer();
        m_promise.finish();
    }

    /// Closes a connection that is still in use.
    void dropTransfer() {
        if (!m_transfer)
            return;
        m_connections->remove(m_transfer->handle());
        m_transfer.reset();
    }

    NetworkHttpClient& m_client;
    HttpRequest m_request;
    HttpSink m_sink;
    std::shared_ptr<CurlConnections> m_connections;
    std::unique_ptr<CurlTransfer> m_transfer;
    QPromise<void> m_promise;
    QTimer m_deadline;
    QByteArray m_body;
    /// Bytes of the body, before decompression.
    qint64 m_received = 0;
    /// Why we did not take the body.
    std::optional<TransportError> m_refusal;
    bool m_isLookingForProxy = false;
    HttpResult m_result;
    int m_redirects = 0;
    bool m_isOver = false;
};

NetworkHttpClient::NetworkHttpClient(Options options)
    : m_options(std::move(options)), m_proxies(m_options.proxy) {}

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

void NetworkHttpClient::followNetwork() {
    NetworkPath path = m_options.networkPath();
    if (m_networkPath && !m_networkPath->isContinuedBy(path)) {
        m_connections.reset();
        m_proxies.forget();
    }
    m_networkPath = std::move(path);
}

std::shared_ptr<CurlConnections> NetworkHttpClient::connections() {
    if (!m_connections)
        m_connections = std::make_shared<CurlConnections>();
    return m_connections;
}

}  // namespace tidemark

#pragma once

#include <QObject>
#include <functional>
#include <memory>
#include <optional>

#include "platform/http/HttpClient.h"
#include "platform/http/NetworkPath.h"

class QNetworkAccessManager;

namespace tidemark {

/// HTTP/1.1 over the network and the system's proxies. Nothing is remembered between requests but open
/// connections: no cookies, no cache, no credentials. A GET that dies with a kept-alive connection is sent
/// again, and none waits for one that died in a suspend or with its network; a POST is never sent twice.
/// Requests still under way when the client goes end with `cancelled`.
class NetworkHttpClient final : public HttpClient {
public:
    /// Whether plain http is allowed to this machine itself. It never is to any other.
    enum class InsecureLoopback : quint8 { refused, allowed };

    struct Options {
        QByteArray userAgent;
        InsecureLoopback insecureLoopback = InsecureLoopback::refused;
        /// The longest body that is accepted, in bytes after decompression.
        qint64 bodyLimit = qint64{8} * 1024 * 1024;
        /// How many bytes may wait in memory to be read.
        qint64 readBuffer = qint64{256} * 1024;
        /// What the connections depend on at the moment.
        std::function<NetworkPath()> networkPath = &NetworkPath::current;
    };

    explicit NetworkHttpClient(Options options);
    ~NetworkHttpClient() override;

    [[nodiscard]] QCoro::Task<HttpResult> send(HttpRequest request, std::stop_token stop) override;
    [[nodiscard]] QCoro::Task<tl::expected<int, TransportError>> download(HttpDownload download,
                                                                          HttpSink sink,
                                                                          std::stop_token stop) override;

private:
    class Exchange;

    [[nodiscard]] QCoro::Task<HttpResult> run(std::shared_ptr<Exchange> exchange, std::stop_token stop);
    [[nodiscard]] bool isAllowed(const QUrl& url) const;
    /// Made at the first request, so that starting the program does not wait for it.
    std::shared_ptr<QNetworkAccessManager> network();
    /// Uses the connections no more that a suspend or a change of networks has killed. They would be noticed
    /// only by the time-out of the next request.
    void leaveDeadConnections();

    Options m_options;
    /// Requests under way keep theirs.
    std::shared_ptr<QNetworkAccessManager> m_network;
    std::optional<NetworkPath> m_networkPath;
    /// Goes first, and tells the requests under way.
    QObject m_lifetime;
};

}  // namespace tidemark

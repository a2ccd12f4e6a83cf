#pragma once

#include <QObject>
#include <functional>
#include <memory>
#include <optional>

#include "platform/http/HttpClient.h"
#include "platform/http/NetworkPath.h"
#include "platform/http/SystemProxies.h"

namespace tidemark {

class CurlConnections;

/// HTTP/1.1 over the network and the system's proxies, by libcurl. Only open connections are kept between
/// requests: no cookies, no cache, no credentials. A GET is repeated when its kept-alive connection turns out
/// to be closed; a POST is never sent twice. Connections are not reused after a suspend, a change of networks
/// or a request that timed out.
/// An answer with an error's status (from 400 on) counts even when its body is damaged, cut off or too large;
/// its body is empty then.
/// Destroying the client ends pending requests with `cancelled`.
class NetworkHttpClient final : public HttpClient {
public:
    /// Whether plain http is allowed to this machine itself. To other hosts it never is.
    enum class InsecureLoopback : quint8 { refused, allowed };

    struct Options {
        QByteArray userAgent;
        InsecureLoopback insecureLoopback = InsecureLoopback::refused;
        /// Largest body that is accepted, in bytes after decompression.
        qint64 bodyLimit = qint64{8} * 1024 * 1024;
        /// A file of certificates (PEM) that are trusted instead of the system's; empty for the system's.
        QByteArray authorities;
        SystemProxies::Lookup proxy = &SystemProxies::systemProxy;
        /// Gives the current state of the network.
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
    /// Created by the first request, because creating it would delay the start of the program.
    std::shared_ptr<CurlConnections> connections();
    /// Drops what a suspend or a network change has made useless. Otherwise the next request would only time
    /// out.
    void followNetwork();

    Options m_options;
    /// Shared with pending requests, which keep theirs when it is replaced.
    std::shared_ptr<CurlConnections> m_connections;
    SystemProxies m_proxies;
    std::optional<NetworkPath> m_networkPath;
    /// Last: its destruction ends the pending requests while the other members still exist.
    QObject m_lifetime;
};

}  // namespace tidemark

#pragma once

#include <curl/curl.h>

#include <QHash>
#include <QObject>
#include <QSocketNotifier>
#include <QTimer>
#include <functional>
#include <memory>
#include <unordered_map>

namespace tidemark {

/// libcurl's multi interface on Qt's event loop: transfers in progress, and the connections that they leave
/// open for later ones. No threads but those that resolve names. UI thread only.
class CurlConnections final : public QObject {
public:
    /// Called once with the outcome of a transfer that was not removed before.
    using Completion = std::function<void(CURLcode code)>;

    CurlConnections();
    CurlConnections(const CurlConnections&) = delete;
    CurlConnections& operator=(const CurlConnections&) = delete;
    /// All transfers must have been removed.
    ~CurlConnections() override;

    /// Starts a transfer from the event loop.
    void add(CURL* transfer, Completion completion);
    /// Ends a transfer. The connection of one that was not complete is closed. Not for callbacks of libcurl.
    void remove(CURL* transfer);

private:
    struct Socket {
        std::unique_ptr<QSocketNotifier> read;
        std::unique_ptr<QSocketNotifier> write;
    };

    static int onSocket(CURL* transfer, curl_socket_t socket, int what, void* self, void* unused);
    static int onTimer(CURLM* multi, long milliseconds, void* self);

    [[nodiscard]] std::unique_ptr<QSocketNotifier> notifier(curl_socket_t socket, QSocketNotifier::Type type,
                                                            int event);
    void act(curl_socket_t socket, int events);
    void reportCompleted();

    CURLM* m_multi;
    QTimer m_timer;
    std::unordered_map<curl_socket_t, Socket> m_sockets;
    QHash<CURL*, Completion> m_completions;
};

}  // namespace tidemark

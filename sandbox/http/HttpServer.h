#pragma once

#include <QEventLoop>
#include <functional>
#include <future>
#include <thread>

#include "sandbox/http/Exchange.h"

namespace tidemark::sandbox {

/// Carries requests of HTTP/1.1 to a handler and its replies back, on 127.0.0.1 and on a thread of its own.
class HttpServer final {
public:
    /// Called on the server's thread, for one request at a time.
    using Handler = std::function<Reply(const Request&)>;

    explicit HttpServer(Handler handler) : m_handler(std::move(handler)) {}
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;
    ~HttpServer() { stop(); }

    /// False when the port is taken. 0 takes any free one.
    [[nodiscard]] bool start(int port);

    /// Ends every connection at once, and the thread.
    void stop();

    /// 0 unless serving.
    [[nodiscard]] int port() const { return m_port; }

private:
    void serve(int port, std::promise<int> boundPort);

    Handler m_handler;
    /// The server thread's event loop, while it serves.
    QEventLoop* m_loop = nullptr;
    int m_port = 0;
    /// Not a QThread, which reports its end before OpenSSL has freed what it keeps for the thread.
    std::jthread m_thread;
};

}  // namespace tidemark::sandbox

#pragma once

#include <functional>
#include <memory>

#include "sandbox/Exchange.h"

namespace tidemark::sandbox {

/// Carries requests of HTTP/1.1 to a handler and its replies back, on 127.0.0.1, one thread a connection.
class HttpServer final {
public:
    /// Called from the connections' threads, several at once.
    using Handler = std::function<Reply(const Request&)>;

    explicit HttpServer(Handler handler);
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;
    ~HttpServer();

    /// False when the port is taken. 0 takes any free one.
    [[nodiscard]] bool start(int port);

    /// Ends every connection at once and joins all threads.
    void stop();

    /// 0 unless serving.
    [[nodiscard]] int port() const;

private:
    struct Private;
    std::unique_ptr<Private> m_d;
};

}  // namespace tidemark::sandbox

#include "sandbox/HttpServer.h"

#include <httplib.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <future>
#include <list>
#include <mutex>
#include <thread>

namespace tidemark::sandbox {

namespace {

constexpr int idleTimeoutMs = 60'000;
constexpr int exchangeTimeoutMs = 10'000;

/// One client's socket. Every wait in here also ends when the client goes or `shutdown` is called on the
/// socket by another thread, which is how the server stops.
class Connection final : public httplib::Stream {
public:
    explicit Connection(int socket) : m_socket(socket) {}

    [[nodiscard]] bool waitForRequest() { return m_begin < m_end || waitFor(POLLIN, idleTimeoutMs); }

    /// False when the client went meanwhile.
    [[nodiscard]] bool pause(int ms) {
        pollfd state{m_socket, POLLRDHUP, 0};
        return !m_silent && ::poll(&state, 1, ms) == 0;
    }

    /// Nothing is written any more.
    void silence() { m_silent = true; }

    [[nodiscard]] bool is_readable() const override { return m_begin < m_end || waitFor(POLLIN, 0); }
    [[nodiscard]] bool is_writable() const override {
        return !m_silent && waitFor(POLLOUT, exchangeTimeoutMs);
    }

    ssize_t read(char* target, size_t size) override {
        if (m_begin == m_end) {
            if (!waitFor(POLLIN, exchangeTimeoutMs))
                return -1;
            const ssize_t count = ::recv(m_socket, m_buffer.data(), m_buffer.size(), 0);
            if (count <= 0)
                return count;
            m_begin = 0;
            m_end = static_cast<size_t>(count);
        }
        const size_t count = std::min(size, m_end - m_begin);
        std::copy_n(m_buffer.data() + m_begin, count, target);
        m_begin += count;
        return static_cast<ssize_t>(count);
    }

    ssize_t write(const char* data, size_t size) override {
        if (m_silent || !waitFor(POLLOUT, exchangeTimeoutMs))
            return -1;
        return ::send(m_socket, data, size, MSG_NOSIGNAL);
    }

    void get_remote_ip_and_port(std::string& ip, int& port) const override { loopback(ip, port); }
    void get_local_ip_and_port(std::string& ip, int& port) const override { loopback(ip, port); }
    [[nodiscard]] socket_t socket() const override { return m_socket; }

private:
    [[nodiscard]] bool waitFor(short events, int ms) const {
        pollfd state{m_socket, events, 0};
        return ::poll(&state, 1, ms) > 0 && (state.revents & (POLLERR | POLLNVAL)) == 0;
    }

    static void loopback(std::string& ip, int& port) {
        ip = "127.0.0.1";
        port = 0;
    }

    int m_socket;
    bool m_silent = false;
    std::array<char, 16384> m_buffer{};
    size_t m_begin = 0;
    size_t m_end = 0;
};

/// The sockets in use, so that stopping can reach those that wait.
class OpenSockets final {
public:
    /// False when the server is stopping.
    bool add(int socket) {
        const std::scoped_lock lock(m_mutex);
        if (!m_closing)
            m_sockets.push_back(socket);
        return !m_closing;
    }

    void closeOne(int socket) {
        const std::scoped_lock lock(m_mutex);
        m_sockets.remove(socket);
        ::shutdown(socket, SHUT_RDWR);
        ::close(socket);
    }

    void interruptAll() {
        const std::scoped_lock lock(m_mutex);
        m_closing = true;
        for (const int socket : m_sockets)
            ::shutdown(socket, SHUT_RDWR);
    }

private:
    std::mutex m_mutex;
    std::list<int> m_sockets;
    bool m_closing = false;
};

/// A thread a connection: a stalled one holds up nobody else.
class ConnectionThreads final : public httplib::TaskQueue {
public:
    void enqueue(std::function<void()> serve) override {
        const std::scoped_lock lock(m_mutex);
        m_workers.remove_if([](const Worker& worker) { return worker.ended->load(); });
        auto ended = std::make_shared<std::atomic_bool>(false);
        m_workers.push_back({std::jthread([serve = std::move(serve), ended] {
                                 serve();
                                 ended->store(true);
                             }),
                             ended});
    }

    void shutdown() override {
        const std::scoped_lock lock(m_mutex);
        m_workers.clear();
    }

private:
    struct Worker {
        std::jthread thread;
        std::shared_ptr<std::atomic_bool> ended;
    };

    std::mutex m_mutex;
    std::list<Worker> m_workers;
};

QString plainText(QByteArray encoded) {
    return QString::fromUtf8(QByteArray::fromPercentEncoding(encoded.replace('+', ' ')));
}

/// What stands before and after the first `mark`; all of it before when there is none.
std::pair<QByteArray, QByteArray> splitAt(const QByteArray& text, char mark) {
    const qsizetype place = text.indexOf(mark);
    return place < 0 ? std::pair(text, QByteArray()) : std::pair(text.left(place), text.mid(place + 1));
}

Request translated(const httplib::Request& request) {
    const auto [path, query] = splitAt(QByteArray::fromStdString(request.target), '?');
    Request result;
    result.method = QByteArray::fromStdString(request.method);
    result.path = QString::fromUtf8(path);
    result.authorization = QByteArray::fromStdString(request.get_header_value("Authorization"));
    result.contentType = QByteArray::fromStdString(request.get_header_value("Content-Type"));
    result.body = QByteArray::fromStdString(request.body);
    for (const QByteArray& pair : query.split('&')) {
        const auto [name, value] = splitAt(pair, '=');
        if (!pair.isEmpty())
            result.query.append({plainText(name), plainText(value)});
    }
    return result;
}

void sendWhole(httplib::Response& response, const Reply& reply) {
    const std::string type = reply.contentType.toStdString();
    if (reply.body.isEmpty()) {
        response.set_content(std::string(), type);
        return;
    }
    // From the shared bytes themselves; a project page is close to a megabyte.
    response.set_content_provider(static_cast<size_t>(reply.body.size()), type,
                                  [body = reply.body](size_t offset, size_t length, httplib::DataSink& sink) {
                                      return sink.write(body.constData() + offset, length);
                                  });
}

void sendDripping(httplib::Response& response, const Reply& reply, Connection& connection) {
    const auto next = [body = reply.body, ms = reply.pauseMs, piece = static_cast<size_t>(reply.dripSize),
                       &connection](size_t offset, size_t length, httplib::DataSink& sink) {
        const bool due = offset == 0 || connection.pause(ms);
        return due && sink.write(body.constData() + offset, std::min(piece, length));
    };
    response.set_content_provider(static_cast<size_t>(std::max<qsizetype>(reply.body.size(), 1)),
                                  reply.contentType.toStdString(), next);
}

void sendHalf(httplib::Response& response, const Reply& reply, Connection& connection) {
    const auto half = [body = reply.body, &connection](size_t, size_t, httplib::DataSink& sink) {
        sink.write(body.constData(), static_cast<size_t>(body.size() / 2));
        connection.silence();
        return false;
    };
    response.set_content_provider(static_cast<size_t>(std::max<qsizetype>(reply.body.size(), 1)),
                                  reply.contentType.toStdString(), half);
}

void sendWithoutEnd(httplib::Response& response, const Reply& reply) {
    const auto more = [body = reply.body](size_t offset, httplib::DataSink& sink) {
        static const std::string blank(65536, ' ');
        return offset == 0 ? sink.write(body.constData(), static_cast<size_t>(body.size()))
                           : sink.write(blank.data(), blank.size());
    };
    response.set_chunked_content_provider(reply.contentType.toStdString(), more);
}

void send(httplib::Response& response, const Reply& reply, Connection& connection) {
    const bool interrupted =
        reply.pauseMs > 0 && reply.delivery == Delivery::whole && !connection.pause(reply.pauseMs);
    if (interrupted || reply.delivery == Delivery::never) {
        static_cast<void>(connection.pause(-1));
        connection.silence();
        return;
    }
    response.status = reply.status;
    for (const auto& [name, value] : reply.headers)
        response.set_header(name.toStdString(), value.toStdString());
    switch (reply.delivery) {
        case Delivery::whole:
        case Delivery::never:
            sendWhole(response, reply);
            break;
        case Delivery::drip:
            sendDripping(response, reply, connection);
            break;
        case Delivery::cut:
            sendHalf(response, reply, connection);
            break;
        case Delivery::endless:
            sendWithoutEnd(response, reply);
            break;
    }
}

/// The library's server with connections of our own, which can be paused, silenced and interrupted.
class Server final : public httplib::Server {
public:
    explicit Server(HttpServer::Handler handler) : m_handler(std::move(handler)) {
        const auto route = [this](const httplib::Request& request, httplib::Response& response) {
            send(response, m_handler(translated(request)), *current);
        };
        const std::string anything = R"([\s\S]*)";
        Get(anything, route);
        Post(anything, route);
        Put(anything, route);
        Patch(anything, route);
        Delete(anything, route);
        Options(anything, route);
        set_keep_alive_timeout(idleTimeoutMs / 1000);
        set_keep_alive_max_count(1'000'000);
        // Not the library's default, which lets two servers share a port.
        set_socket_options([](socket_t socket) {
            const int on = 1;
            ::setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
        });
        set_tcp_nodelay(true);
    }

    void interruptAll() { m_open.interruptAll(); }

    /// The library lets five clients wait to be accepted; a sixth would try again only after a second.
    void allowManyAtOnce() { ::listen(svr_sock_, SOMAXCONN); }

private:
    bool process_and_close_socket(socket_t socket) override {
        bool served = m_open.add(socket);
        Connection connection(socket);
        current = &connection;
        bool closed = !served;
        while (!closed && connection.waitForRequest()) {
            served = process_request(connection, false, closed, nullptr);
            closed = closed || !served;
        }
        current = nullptr;
        m_open.closeOne(socket);
        return served;
    }

    /// The connection that this thread serves; the library hands the handler no way to it.
    static thread_local Connection* current;

    HttpServer::Handler m_handler;
    OpenSockets m_open;
};

thread_local Connection* Server::current = nullptr;

}  // namespace

struct HttpServer::Private {
    Handler handler;
    std::unique_ptr<Server> server;
    std::jthread listener;
    int port = 0;
};

HttpServer::HttpServer(Handler handler) : m_d(std::make_unique<Private>()) {
    m_d->handler = std::move(handler);
}

HttpServer::~HttpServer() {
    stop();
}

bool HttpServer::start(int port) {
    if (m_d->server)
        return true;
    auto server = std::make_unique<Server>(m_d->handler);
    const std::string host = "127.0.0.1";
    const int bound = port == 0                          ? server->bind_to_any_port(host)
                      : server->bind_to_port(host, port) ? port
                                                         : -1;
    if (bound <= 0)
        return false;
    server->allowManyAtOnce();
    // The library ignores a stop before its loop runs; making the queue is the first thing the loop does.
    auto running = std::make_shared<std::promise<void>>();
    server->new_task_queue = [running] {
        running->set_value();
        return new ConnectionThreads;
    };
    m_d->server = std::move(server);
    m_d->port = bound;
    m_d->listener = std::jthread([server = m_d->server.get()] { server->listen_after_bind(); });
    running->get_future().wait();
    return true;
}

void HttpServer::stop() {
    if (!m_d->server)
        return;
    m_d->server->stop();
    m_d->server->interruptAll();
    m_d->listener.join();
    m_d->server.reset();
    m_d->port = 0;
}

int HttpServer::port() const {
    return m_d->port;
}

}  // namespace tidemark::sandbox

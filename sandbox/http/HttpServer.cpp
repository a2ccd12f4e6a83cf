#include "sandbox/http/HttpServer.h"

#include <QTcpServer>

#include "sandbox/http/Connection.h"

namespace tidemark::sandbox {

bool HttpServer::start(int port) {
    if (m_port != 0)
        return true;
    std::promise<int> boundPort;
    std::future<int> bound = boundPort.get_future();
    m_thread = std::jthread(&HttpServer::serve, this, port, std::move(boundPort));
    m_port = bound.get();
    return m_port != 0;
}

void HttpServer::serve(int port, std::promise<int> boundPort) {
    // First, because it makes the thread one that sockets can be watched in.
    QEventLoop loop;
    QTcpServer server;
    QObject::connect(&server, &QTcpServer::pendingConnectionAvailable, &server, [this, &server] {
        while (QTcpSocket* socket = server.nextPendingConnection())
            new Connection(socket, m_handler, &server);
    });
    if (!server.listen(QHostAddress::LocalHost, static_cast<quint16>(port))) {
        boundPort.set_value(0);
        return;
    }
    m_loop = &loop;
    boundPort.set_value(server.serverPort());
    loop.exec();
}

void HttpServer::stop() {
    if (m_port == 0)
        return;
    m_port = 0;
    QMetaObject::invokeMethod(m_loop, &QEventLoop::quit, Qt::QueuedConnection);
    m_thread.join();
}

}  // namespace tidemark::sandbox

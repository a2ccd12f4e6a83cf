#include "tests/fakes/MisbehavingServer.h"

#include <QHostAddress>
#include <QRegularExpression>
#include <QSslServer>
#include <QSslSocket>
#include <QTimer>

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

/// The length of the whole request at the start of `received`; 0 while it is not there yet.
qsizetype requestLength(const QByteArray& received) {
    const qsizetype headEnd = received.indexOf("\r\n\r\n");
    if (headEnd < 0)
        return 0;
    static const QRegularExpression pattern(u"\r\ncontent-length: *(\\d+)"_s,
                                            QRegularExpression::CaseInsensitiveOption);
    const auto match = pattern.match(QString::fromLatin1(received.first(headEnd)));
    const qsizetype length = headEnd + 4 + match.captured(1).toLongLong();
    return received.size() < length ? 0 : length;
}

}  // namespace

MisbehavingServer::MisbehavingServer(Script script)
    : m_script(std::move(script)), m_isSecure(false), m_server(std::make_unique<QTcpServer>()) {
    listen();
}

MisbehavingServer::MisbehavingServer(Script script, const QSslConfiguration& tls)
    : m_script(std::move(script)), m_isSecure(true) {
    auto server = std::make_unique<QSslServer>();
    server->setSslConfiguration(tls);
    m_server = std::move(server);
    listen();
}

MisbehavingServer::~MisbehavingServer() {
    for (auto* socket : m_received.keys())
        socket->disconnect(this);
}

QUrl MisbehavingServer::url(const QString& pathAndQuery) const {
    return QUrl(u"%1://127.0.0.1:%2%3"_s.arg(m_isSecure ? u"https"_s : u"http"_s)
                    .arg(m_server->serverPort())
                    .arg(pathAndQuery));
}

QByteArray MisbehavingServer::answer(const QByteArray& status, const QByteArray& body,
                                     const QByteArray& headers) {
    return "HTTP/1.1 " + status + "\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n" +
           headers + "\r\n" + body;
}

MisbehavingServer::Script MisbehavingServer::writes(QByteArray bytes) {
    return [bytes = std::move(bytes)](QTcpSocket& socket, const QByteArray&) { socket.write(bytes); };
}

MisbehavingServer::Script MisbehavingServer::writesAndCloses(QByteArray bytes) {
    return [bytes = std::move(bytes)](QTcpSocket& socket, const QByteArray&) {
        socket.write(bytes);
        socket.disconnectFromHost();
    };
}

MisbehavingServer::Script MisbehavingServer::drips(const QByteArray& start, const QByteArray& drop,
                                                   std::chrono::milliseconds pause, int count) {
    return [=](QTcpSocket& socket, const QByteArray&) {
        socket.write(start);
        auto* timer = new QTimer(&socket);
        timer->callOnTimeout(&socket, [&socket, drop, timer, left = count]() mutable {
            socket.write(drop);
            if (--left == 0)
                timer->stop();
        });
        timer->start(pause);
    };
}

void MisbehavingServer::listen() {
    connect(m_server.get(), &QTcpServer::pendingConnectionAvailable, this, [this] {
        while (auto* socket = m_server->nextPendingConnection())
            accept(socket);
    });
    if (!m_server->listen(QHostAddress::LocalHost))
        qFatal("No port to listen on");
}

void MisbehavingServer::accept(QTcpSocket* socket) {
    ++m_connectionCount;
    m_received.insert(socket, {});
    connect(socket, &QTcpSocket::readyRead, this, [this, socket] { receive(socket); });
    connect(socket, &QTcpSocket::disconnected, this, [this, socket] {
        m_received.remove(socket);
        socket->deleteLater();
    });
    receive(socket);
}

void MisbehavingServer::receive(QTcpSocket* socket) {
    if (!m_received.contains(socket))
        return;
    m_received[socket] += socket->readAll();
    while (const qsizetype length = requestLength(m_received.value(socket))) {
        m_requests.append(m_received[socket].first(length));
        m_received[socket].remove(0, length);
        m_script(*socket, m_requests.constLast());
    }
}

}  // namespace tidemark

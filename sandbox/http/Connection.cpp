#include "sandbox/http/Connection.h"

#include <sys/socket.h>

#include <QHash>
#include <algorithm>
#include <optional>

namespace tidemark::sandbox {

namespace {

using namespace std::chrono_literals;

constexpr auto idleLimit = 60s;
constexpr qsizetype headLimit = 65'536;
constexpr qsizetype bodyLimit = 16'777'216;

/// The text before and after the first `mark`; without one, all of it is before.
std::pair<QByteArray, QByteArray> splitAt(const QByteArray& text, char mark) {
    const qsizetype place = text.indexOf(mark);
    return place < 0 ? std::pair(text, QByteArray()) : std::pair(text.left(place), text.mid(place + 1));
}

QString plainText(QByteArray encoded) {
    return QString::fromUtf8(QByteArray::fromPercentEncoding(encoded.replace('+', ' ')));
}

/// The request line and the header fields of a request, and how long its body is.
struct Head {
    Request request;
    qsizetype bodyLength = 0;
    bool keepsAlive = true;
};

/// Nothing for what is no request of HTTP/1.1, or has a body that does not say its length.
std::optional<Head> parseHead(const QByteArray& text) {
    QList<QByteArray> lines = text.split('\n');
    const QList<QByteArray> start = lines.takeFirst().trimmed().split(' ');
    if (start.size() != 3 || !start.at(2).startsWith("HTTP/1."))
        return std::nullopt;
    QHash<QByteArray, QByteArray> fields;
    for (const QByteArray& line : std::as_const(lines)) {
        const auto [name, value] = splitAt(line, ':');
        fields.insert(name.toLower(), value.trimmed());
    }
    bool isNumber = true;
    const auto length = fields.value("content-length", "0").toLongLong(&isNumber);
    if (!isNumber || length < 0 || length > bodyLimit || fields.contains("transfer-encoding"))
        return std::nullopt;

    const auto [path, query] = splitAt(start.at(1), '?');
    Head head{.request = {.method = start.at(0),
                          .path = QString::fromUtf8(path),
                          .authorization = fields.value("authorization"),
                          .contentType = fields.value("content-type")},
              .bodyLength = static_cast<qsizetype>(length),
              .keepsAlive = start.at(2) != "HTTP/1.0" && fields.value("connection").toLower() != "close"};
    for (const QByteArray& pair : query.split('&')) {
        const auto [name, value] = splitAt(pair, '=');
        if (!pair.isEmpty())
            head.request.query.append({plainText(name), plainText(value)});
    }
    return head;
}

QByteArray lengthHeader(qsizetype length) {
    return "Content-Length: " + QByteArray::number(length) + "\r\n";
}

}  // namespace

Connection::Connection(QTcpSocket* socket, HttpServer::Handler handler, QObject* parent)
    : QObject(parent), m_socket(socket), m_handler(std::move(handler)) {
    m_socket->setParent(this);
    m_socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    connect(m_socket, &QTcpSocket::readyRead, this, &Connection::receive);
    connect(m_socket, &QTcpSocket::disconnected, this, &QObject::deleteLater);
    m_timer.callOnTimeout(this, [this] { m_socket->abort(); });
    m_timer.start(idleLimit);
}

void Connection::receive() {
    m_received += m_socket->readAll();
    if (m_isAnswering) {
        // Requests sent ahead wait, but not any amount of them.
        if (m_received.size() > headLimit + bodyLimit)
            m_socket->abort();
        return;
    }
    const qsizetype headEnd = m_received.indexOf("\r\n\r\n");
    if (headEnd < 0 && m_received.size() <= headLimit)
        return;
    std::optional<Head> head = parseHead(m_received.left(std::max<qsizetype>(headEnd, 0)));
    const qsizetype bodyStart = headEnd + 4;
    if (head && m_received.size() < bodyStart + head->bodyLength)
        return;
    m_isAnswering = true;
    m_isLast = !head || !head->keepsAlive;
    if (!head) {
        deliver({.status = 400});
        return;
    }
    head->request.body = m_received.mid(bodyStart, head->bodyLength);
    m_received.remove(0, bodyStart + head->bodyLength);
    deliver(m_handler(head->request));
}

void Connection::deliver(const Reply& reply) {
    m_reply = reply;
    m_sent = 0;
    m_timer.stop();
    m_timer.disconnect();
    switch (m_reply.delivery) {
        case Delivery::whole:
            if (m_reply.pauseMs > 0) {
                m_timer.callOnTimeout(this, &Connection::sendWhole);
                m_timer.start(m_reply.pauseMs);
            } else {
                sendWhole();
            }
            break;
        case Delivery::never:
            break;
        case Delivery::drip:
            writeHead(lengthHeader(m_reply.body.size()));
            m_timer.callOnTimeout(this, &Connection::drip);
            m_timer.start(m_reply.pauseMs);
            drip();
            break;
        case Delivery::cut:
            writeHead(lengthHeader(std::max<qsizetype>(m_reply.body.size(), 1)));
            m_socket->write(m_reply.body.first(m_reply.body.size() / 2));
            m_socket->disconnectFromHost();
            break;
        case Delivery::reset:
            reset();
            break;
        case Delivery::endless:
            writeHead("Transfer-Encoding: chunked\r\n");
            connect(m_socket, &QTcpSocket::bytesWritten, this, &Connection::sendMoreBlanks);
            // An empty chunk would end the answer.
            if (m_reply.body.isEmpty())
                sendMoreBlanks();
            else
                m_socket->write(QByteArray::number(m_reply.body.size(), 16) + "\r\n" + m_reply.body + "\r\n");
            break;
    }
}

void Connection::sendWhole() {
    writeHead(lengthHeader(m_reply.body.size()));
    m_socket->write(m_reply.body);
    finishAnswer();
}

void Connection::drip() {
    const QByteArray piece = m_reply.body.mid(m_sent, m_reply.dripSize);
    m_socket->write(piece);
    m_sent += piece.size();
    if (m_sent == m_reply.body.size())
        finishAnswer();
}

void Connection::sendMoreBlanks() {
    static const QByteArray chunk = "10000\r\n" + QByteArray(0x10000, ' ') + "\r\n";
    if (m_socket->bytesToWrite() == 0)
        m_socket->write(chunk);
}

void Connection::reset() {
    // A socket that is closed while it may not linger resets its connection.
    const linger none{.l_onoff = 1, .l_linger = 0};
    ::setsockopt(static_cast<int>(m_socket->socketDescriptor()), SOL_SOCKET, SO_LINGER, &none, sizeof none);
    m_socket->abort();
}

void Connection::finishAnswer() {
    m_timer.stop();
    m_timer.disconnect();
    m_reply = {};
    if (m_isLast) {
        m_socket->disconnectFromHost();
        return;
    }
    m_isAnswering = false;
    m_timer.callOnTimeout(this, [this] { m_socket->abort(); });
    m_timer.start(idleLimit);
    // The next request may have come already.
    QMetaObject::invokeMethod(this, &Connection::receive, Qt::QueuedConnection);
}

void Connection::writeHead(const QByteArray& bodyHeader) {
    QByteArray head = "HTTP/1.1 " + QByteArray::number(m_reply.status) + " \r\n" + bodyHeader;
    if (!m_reply.contentType.isEmpty())
        head += "Content-Type: " + m_reply.contentType + "\r\n";
    for (const auto& [name, value] : m_reply.headers)
        head += name + ": " + value + "\r\n";
    m_socket->write(head + "\r\n");
}

}  // namespace tidemark::sandbox

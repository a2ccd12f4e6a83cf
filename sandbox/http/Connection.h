#pragma once

#include <QObject>
#include <QTcpSocket>
#include <QTimer>

#include "sandbox/http/HttpServer.h"

namespace tidemark::sandbox {

/// One client of the server. Answers its requests in their order, each in the way that its reply asks for,
/// and deletes itself when either side has closed.
class Connection final : public QObject {
public:
    /// Becomes the socket's owner.
    Connection(QTcpSocket* socket, HttpServer::Handler handler, QObject* parent);

private:
    void receive();
    void deliver(const Reply& reply);
    void sendWhole();
    void drip();
    void sendMoreBlanks();
    void reset();
    void finishAnswer();
    void writeHead(const QByteArray& bodyHeader);

    QTcpSocket* m_socket;
    HttpServer::Handler m_handler;
    /// The idle timeout while no request is pending, else the delay before or within an answer.
    QTimer m_timer;
    QByteArray m_received;
    Reply m_reply;
    qsizetype m_sent = 0;
    bool m_isAnswering = false;
    bool m_isLast = false;
};

}  // namespace tidemark::sandbox

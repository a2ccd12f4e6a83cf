#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QObject>
#include <QSslConfiguration>
#include <QString>
#include <QTcpServer>
#include <QTcpSocket>
#include <QUrl>
#include <chrono>
#include <functional>
#include <memory>

namespace tidemark {

/// A server on a free port of this machine that hands every request to the test, which writes to the
/// connection whatever bytes it likes. Lives in the test's own event loop.
class MisbehavingServer final : public QObject {
public:
    /// Called with each whole request, as received.
    using Script = std::function<void(QTcpSocket& socket, const QByteArray& request)>;

    explicit MisbehavingServer(Script script);
    /// The same over TLS.
    MisbehavingServer(Script script, const QSslConfiguration& tls);
    ~MisbehavingServer() override;

    [[nodiscard]] QUrl url(const QString& pathAndQuery = QStringLiteral("/")) const;

    /// The requests received so far, head and body.
    [[nodiscard]] const QList<QByteArray>& requests() const { return m_requests; }
    [[nodiscard]] qsizetype connectionCount() const { return m_connectionCount; }
    [[nodiscard]] qsizetype openConnectionCount() const { return m_received.size(); }

    /// An answer with a Content-Length; `headers` are whole lines, each ended by CR LF.
    [[nodiscard]] static QByteArray answer(const QByteArray& status, const QByteArray& body,
                                           const QByteArray& headers = {});
    /// A script that writes `bytes` and then leaves the connection open.
    [[nodiscard]] static Script writes(QByteArray bytes);
    /// A script that writes `bytes` and then closes the connection.
    [[nodiscard]] static Script writesAndCloses(QByteArray bytes);
    /// A script that writes `start`, and then `drop` after each pause: `count` times, or without end.
    [[nodiscard]] static Script drips(const QByteArray& start, const QByteArray& drop,
                                      std::chrono::milliseconds pause = std::chrono::milliseconds(5),
                                      int count = -1);

private:
    void listen();
    void accept(QTcpSocket* socket);
    void receive(QTcpSocket* socket);

    Script m_script;
    bool m_isSecure;
    std::unique_ptr<QTcpServer> m_server;
    QHash<QTcpSocket*, QByteArray> m_received;
    QList<QByteArray> m_requests;
    qsizetype m_connectionCount = 0;
};

}  // namespace tidemark

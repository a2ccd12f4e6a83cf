#include "desktop/NetworkHttpClient.h"

#include <QElapsedTimer>
#include <QHostAddress>
#include <QTcpServer>
#include <QTest>
#include <QTimer>
#include <thread>

#include "tests/desktop/HttpExchange.h"
#include "tests/fakes/MisbehavingServer.h"

namespace tidemark {

namespace {

using Script = MisbehavingServer::Script;
using namespace std::chrono_literals;

/// The body in the zlib format, as "Content-Encoding: deflate" carries it.
QByteArray deflated(const QByteArray& body) {
    return qCompress(body, 9).sliced(4);
}

}  // namespace

class NetworkHttpClientTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void answersAndFailures_data();
    void answersAndFailures();
    void postIsNeverSentTwice_data();
    void postIsNeverSentTwice();
    void getSurvivesAClosedKeptAliveConnection();
    void deadlineBoundsTheWholeExchange_data();
    void deadlineBoundsTheWholeExchange();
    void stopEndsAtOnce_data();
    void stopEndsAtOnce();
    void endlessBodyIsCutOff();
    void unreachableServers();
    void clientGoesWhileRequestsRun();
};

void NetworkHttpClientTest::answersAndFailures_data() {
    QTest::addColumn<Script>("script");
    QTest::addColumn<HttpResult>("expected");
    const auto row = [](const char* name, const Script& script, const HttpResult& expected) {
        QTest::newRow(name) << script << expected;
    };
    const auto answer = &MisbehavingServer::answer;
    const auto writes = &MisbehavingServer::writes;
    const auto closes = &MisbehavingServer::writesAndCloses;
    const QByteArray large(100'000, 'x');
    const QByteArray tooLarge(1024 * 1024 + 1, 'x');
    const QByteArray bomb = deflated(QByteArray(50'000'000, 'x'));

    for (const QByteArray status :
         {"200 OK", "201 Created", "302 Found", "304 Not Modified", "400 Bad Request", "403 Forbidden",
          "404 Not Found", "408 Request Timeout", "410 Gone", "418 Teapot", "429 Too Many Requests",
          "500 Oops", "502 Bad Gateway", "503 Busy", "599 Odd"}) {
        const int code = status.first(3).toInt();
        const QByteArray body = code == 304 ? "" : "{\"error\": 1}";
        row(status, writes(answer(status, body, "")), answered(code, body));
    }
    row("no content", writes("HTTP/1.1 204 No Content\r\n\r\n"), answered(204, ""));
    row("empty body", writes(answer("200 OK", "", "")), answered(200, ""));
    row("challenge", writes(answer("401 Unauthorized", "no", "WWW-Authenticate: Basic realm=\"x\"\r\n")),
        answered(401, "no"));
    row("negotiate", writes(answer("401 Unauthorized", "no", "WWW-Authenticate: Negotiate\r\n")),
        answered(401, "no"));
    row("challenge closes",
        closes(answer("401 Unauthorized", large, "WWW-Authenticate: Digest realm=\"x\", nonce=\"1\"\r\n")),
        answered(401, large));
    row("body until the end", closes("HTTP/1.1 200 OK\r\n\r\n" + large), answered(200, large));
    row("chunked", writes("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n3\r\nabc\r\n0\r\n\r\n"),
        answered(200, "abc"));
    row("compressed", writes(answer("200 OK", deflated(large), "Content-Encoding: deflate\r\n")),
        answered(200, large));
    row("compressed error", writes(answer("429 Slow", deflated(large), "Content-Encoding: deflate\r\n")),
        answered(429, large));

    row("too large", writes(answer("200 OK", tooLarge, "")), failed(TransportError::tooLarge));
    row("too large error", writes(answer("500 Oops", tooLarge, "")), failed(TransportError::tooLarge));
    row("bomb", writes(answer("200 OK", bomb, "Content-Encoding: deflate\r\n")),
        failed(TransportError::tooLarge));
    row("bomb with an error status", writes(answer("404 Not Found", bomb, "Content-Encoding: deflate\r\n")),
        failed(TransportError::tooLarge));
    row("broken compression", writes(answer("200 OK", "garbage", "Content-Encoding: deflate\r\n")),
        failed(TransportError::connectionLost));
    row("compression nobody asked for", writes(answer("200 OK", "abc", "Content-Encoding: br\r\n")),
        failed(TransportError::other));
    row("compression cut off",
        writes(answer("200 OK", deflated(large).chopped(20), "Content-Encoding: deflate\r\n")),
        failed(TransportError::connectionLost));
    row("compression cut off by the end",
        closes("HTTP/1.1 200 OK\r\nContent-Encoding: deflate\r\n\r\n" + deflated(large).chopped(20)),
        failed(TransportError::connectionLost));
    row("closed mid-body", closes("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nabc"),
        failed(TransportError::connectionLost));
    row("closed between chunks",
        closes("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\nContent-Encoding: deflate\r\n\r\n3\r\n" +
               deflated(large).first(3) + "\r\n"),
        failed(TransportError::connectionLost));
    row("closed mid-body of an error", closes("HTTP/1.1 500 Oops\r\nContent-Length: 10\r\n\r\nabc"),
        failed(TransportError::connectionLost));
    row("closed mid-head", closes("HTTP/1.1 200 OK\r\nContent-Le"), failed(TransportError::connectionLost));
    row("closed at once", closes(""), failed(TransportError::connectionLost));
    row(
        "reset", [](QTcpSocket& socket, const QByteArray&) { socket.abort(); },
        failed(TransportError::connectionLost));
    // Qt does not tell these from a connection that was lost.
    row("another protocol", closes("SSH-2.0-OpenSSH_9.2p1\r\n"), failed(TransportError::connectionLost));
    row("another protocol that waits", writes("220 mail.example ESMTP\r\n"),
        failed(TransportError::connectionLost));
}

void NetworkHttpClientTest::answersAndFailures() {
    QFETCH(Script, script);
    QFETCH(HttpResult, expected);
    MisbehavingServer server(script);
    NetworkHttpClient client(loopbackOptions());
    QElapsedTimer watch;
    watch.start();
    const HttpResult result = send(client, get(server.url()));
    QCOMPARE(summary(result), summary(expected));
    QVERIFY(result == expected);
    QVERIFY(watch.elapsed() < 5000);
}

void NetworkHttpClientTest::postIsNeverSentTwice_data() {
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<Script>("script");
    const Script reset = [](QTcpSocket& socket, const QByteArray&) { socket.abort(); };
    QTest::newRow("closed") << QByteArray("abc") << MisbehavingServer::writesAndCloses("");
    QTest::newRow("closed, empty body") << QByteArray() << MisbehavingServer::writesAndCloses("");
    QTest::newRow("reset") << QByteArray("abc") << reset;
    QTest::newRow("reset, large body") << QByteArray(300'000, 'x') << reset;
    QTest::newRow("nonsense") << QByteArray("abc") << MisbehavingServer::writesAndCloses("oops\r\n");
}

void NetworkHttpClientTest::postIsNeverSentTwice() {
    QFETCH(QByteArray, body);
    QFETCH(Script, script);
    MisbehavingServer server(script);
    NetworkHttpClient client(loopbackOptions());
    HttpRequest request = authorised(server.url());
    request.method = HttpMethod::post;
    request.body = body;
    const HttpResult result = send(client, request);
    QCOMPARE(summary(result), summary(failed(TransportError::connectionLost)));
    QCOMPARE(server.requests().size(), 1);
    QVERIFY(server.requests().at(0).endsWith("\r\n\r\n" + body));
}

/// The server closes as soon as the second request comes in, as one does whose patience just ran out.
void NetworkHttpClientTest::getSurvivesAClosedKeptAliveConnection() {
    int count = 0;
    MisbehavingServer server([&count](QTcpSocket& socket, const QByteArray&) {
        if (++count == 2)
            socket.abort();
        else
            socket.write(MisbehavingServer::answer("200 OK", "x"));
    });
    NetworkHttpClient client(loopbackOptions());
    QVERIFY(send(client, get(server.url())) == answered(200, "x"));
    QVERIFY(send(client, get(server.url())) == answered(200, "x"));
    QCOMPARE(server.connectionCount(), 2);
}

void NetworkHttpClientTest::deadlineBoundsTheWholeExchange_data() {
    QTest::addColumn<Script>("script");
    QTest::newRow("silent") << MisbehavingServer::writes("");
    QTest::newRow("dripping head") << Script([](QTcpSocket& socket, const QByteArray&) {
        socket.write("HTTP/1.1 200 OK\r\n");
        auto* timer = new QTimer(&socket);
        timer->callOnTimeout(&socket, [&socket] { socket.write("X-Drip: 1\r\n"); });
        timer->start(5ms);
    });
    QTest::newRow("dripping body") << Script([](QTcpSocket& socket, const QByteArray&) {
        socket.write("HTTP/1.1 200 OK\r\nContent-Length: 1000000\r\n\r\n");
        auto* timer = new QTimer(&socket);
        timer->callOnTimeout(&socket, [&socket] { socket.write("x"); });
        timer->start(5ms);
    });
    QTest::newRow("dripping interim answers") << Script([](QTcpSocket& socket, const QByteArray&) {
        auto* timer = new QTimer(&socket);
        timer->callOnTimeout(&socket, [&socket] { socket.write("HTTP/1.1 100 Continue\r\n\r\n"); });
        timer->start(5ms);
    });
}

void NetworkHttpClientTest::deadlineBoundsTheWholeExchange() {
    QFETCH(Script, script);
    MisbehavingServer server(script);
    NetworkHttpClient client(loopbackOptions());
    HttpRequest request = get(server.url());
    request.timeout = 100ms;
    const HttpResult result = send(client, request);
    QCOMPARE(summary(result), summary(failed(TransportError::timedOut)));
    QTRY_COMPARE(server.openConnectionCount(), 0);
}

void NetworkHttpClientTest::stopEndsAtOnce_data() {
    QTest::addColumn<Script>("script");
    QTest::newRow("before the answer") << MisbehavingServer::writes("");
    QTest::newRow("in the body") << MisbehavingServer::writes(
        "HTTP/1.1 200 OK\r\nContent-Length: 1000000\r\n\r\nabc");
}

void NetworkHttpClientTest::stopEndsAtOnce() {
    QFETCH(Script, script);
    MisbehavingServer server(script);
    NetworkHttpClient client(loopbackOptions());

    std::stop_source early;
    early.request_stop();
    auto refused = client.send(get(server.url()), early.get_token());
    QVERIFY(!refused.isReady());
    QVERIFY(QCoro::waitFor(std::move(refused)) == failed(TransportError::cancelled));
    QCOMPARE(server.connectionCount(), 0);

    std::stop_source stop;
    auto task = client.send(get(server.url()), stop.get_token());
    QTRY_COMPARE(server.requests().size(), 1);
    std::thread([&stop] { stop.request_stop(); }).join();
    QVERIFY(!task.isReady());
    QVERIFY(QCoro::waitFor(std::move(task)) == failed(TransportError::cancelled));
    QTRY_COMPARE(server.openConnectionCount(), 0);
}

void NetworkHttpClientTest::endlessBodyIsCutOff() {
    MisbehavingServer server([](QTcpSocket& socket, const QByteArray&) {
        socket.write("HTTP/1.1 200 OK\r\n\r\n");
        const auto pour = [&socket] { socket.write(QByteArray(65536, 'x')); };
        connect(&socket, &QTcpSocket::bytesWritten, &socket, pour);
        pour();
    });
    NetworkHttpClient client(loopbackOptions());
    QVERIFY(send(client, get(server.url())) == failed(TransportError::tooLarge));
    QTRY_COMPARE(server.openConnectionCount(), 0);
}

void NetworkHttpClientTest::unreachableServers() {
    QTcpServer closed;
    QVERIFY(closed.listen(QHostAddress::LocalHost));
    const QUrl nobody(QStringLiteral("http://127.0.0.1:%1/").arg(closed.serverPort()));
    closed.close();
    NetworkHttpClient client(loopbackOptions());
    QVERIFY(send(client, get(nobody)) == failed(TransportError::connectionRefused));

    // Plain HTTP where TLS is expected.
    MisbehavingServer plain(MisbehavingServer::writes(""));
    QUrl secure = plain.url();
    secure.setScheme(QStringLiteral("https"));
    HttpRequest request = get(secure);
    request.timeout = 100ms;
    QVERIFY(send(client, request) == failed(TransportError::timedOut));
}

void NetworkHttpClientTest::clientGoesWhileRequestsRun() {
    MisbehavingServer server(MisbehavingServer::writes(""));
    auto client = std::make_unique<NetworkHttpClient>(loopbackOptions());
    auto sent = client->send(get(server.url()), {});
    QTRY_COMPARE(server.requests().size(), 1);
    auto justStarted = client->send(get(server.url()), {});
    client.reset();
    QVERIFY(QCoro::waitFor(std::move(sent)) == failed(TransportError::cancelled));
    QVERIFY(QCoro::waitFor(std::move(justStarted)) == failed(TransportError::cancelled));
}

}  // namespace tidemark

QTEST_GUILESS_MAIN(tidemark::NetworkHttpClientTest)
#include "NetworkHttpClientTest.moc"

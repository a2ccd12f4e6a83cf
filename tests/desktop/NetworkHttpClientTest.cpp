#include "desktop/NetworkHttpClient.h"

#include <QCoroTask>
#include <QElapsedTimer>
#include <QFile>
#include <QHostAddress>
#include <QProcess>
#include <QScopeGuard>
#include <QSslCertificate>
#include <QSslKey>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <thread>

#include "tests/fakes/MisbehavingServer.h"

namespace tidemark {

namespace {

using Script = MisbehavingServer::Script;
using namespace std::chrono_literals;

NetworkHttpClient::Options loopbackOptions() {
    return {.userAgent = "Tidemark/1.2.3",
            .insecureLoopback = NetworkHttpClient::InsecureLoopback::allowed,
            .bodyLimit = qint64{1024} * 1024};
}

HttpRequest get(const QUrl& url) {
    return {.url = url, .method = HttpMethod::get, .headers = {}, .body = {}, .timeout = 10s};
}

HttpRequest authorised(const QUrl& url) {
    HttpRequest request = get(url);
    request.headers = {{"authorization", "Bearer secret"}};
    return request;
}

HttpResult send(HttpClient& client, HttpRequest request, std::stop_token stop = {}) {
    return QCoro::waitFor(client.send(std::move(request), std::move(stop)));
}

/// For the failure message.
QString summary(const HttpResult& result) {
    return result ? QStringLiteral("%1, %2 bytes").arg(result->status).arg(result->body.size())
                  : description(result.error());
}

HttpResult failed(TransportError error) {
    return tl::unexpected(error);
}

HttpResult answered(int status, const QByteArray& body) {
    return HttpResponse{.status = status, .body = body};
}

/// The body in the zlib format, as "Content-Encoding: deflate" carries it.
QByteArray deflated(const QByteArray& body) {
    return qCompress(body, 9).sliced(4);
}

/// A private key and a certificate for it, which nobody signed but itself. Made anew for each run.
QSslConfiguration selfSigned(QTemporaryDir& folder) {
    const QString key = folder.filePath(QStringLiteral("key.pem"));
    const QString certificate = folder.filePath(QStringLiteral("certificate.pem"));
    const QStringList arguments{QStringLiteral("req"),
                                QStringLiteral("-x509"),
                                QStringLiteral("-newkey"),
                                QStringLiteral("ec"),
                                QStringLiteral("-nodes"),
                                QStringLiteral("-pkeyopt"),
                                QStringLiteral("ec_paramgen_curve:prime256v1"),
                                QStringLiteral("-days"),
                                QStringLiteral("2"),
                                QStringLiteral("-subj"),
                                QStringLiteral("/CN=localhost"),
                                QStringLiteral("-addext"),
                                QStringLiteral("subjectAltName=IP:127.0.0.1"),
                                QStringLiteral("-keyout"),
                                key,
                                QStringLiteral("-out"),
                                certificate};
    QProcess openssl;
    openssl.start(QStringLiteral("openssl"), arguments);
    if (!openssl.waitForFinished() || openssl.exitCode() != 0)
        qFatal("No certificate: %s", openssl.readAllStandardError().constData());
    QFile keyFile(key);
    std::ignore = keyFile.open(QIODevice::ReadOnly);
    QSslConfiguration tls = QSslConfiguration::defaultConfiguration();
    tls.setPrivateKey(QSslKey(&keyFile, QSsl::Ec));
    tls.setLocalCertificate(QSslCertificate::fromPath(certificate).value(0));
    tls.setPeerVerifyMode(QSslSocket::VerifyNone);
    return tls;
}

}  // namespace

class NetworkHttpClientTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void answersAndFailures_data();
    void answersAndFailures();
    void redirects_data();
    void redirects();
    void addressesThatAreRefused_data();
    void addressesThatAreRefused();
    void requestCarriesNothingOfItsOwn();
    void postIsNeverSentTwice_data();
    void postIsNeverSentTwice();
    void getSurvivesAClosedKeptAliveConnection();
    void deadlineBoundsTheWholeExchange_data();
    void deadlineBoundsTheWholeExchange();
    void stopEndsAtOnce_data();
    void stopEndsAtOnce();
    void endlessBodyIsCutOff();
    void unreachableServers();
    void selfSignedCertificateIsRefused();
    void trustedServer();
    void clientGoesWhileRequestsRun();
};

void NetworkHttpClientTest::answersAndFailures_data() {
    QTest::addColumn<Script>("script");
    QTest::addColumn<HttpResult>("expected");
    const auto row = [](const char* name, Script script, const HttpResult& expected) {
        QTest::newRow(name) << std::move(script) << expected;
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

void NetworkHttpClientTest::redirects_data() {
    QTest::addColumn<QString>("location");
    QTest::addColumn<bool>("isAuthorised");
    QTest::addColumn<HttpResult>("expected");
    const QString here = QStringLiteral("/elsewhere?a=b");
    QTest::newRow("followed") << here << false << answered(200, "there");
    QTest::newRow("never with a token") << here << true << answered(307, "moved");
    QTest::newRow("to a plain address")
        << QStringLiteral("http://example.invalid/") << false << failed(TransportError::insecure);
    QTest::newRow("to a file") << QStringLiteral("file:///etc/hostname") << false
                               << failed(TransportError::insecure);
    QTest::newRow("nowhere") << QString() << false << answered(307, "moved");
    QTest::newRow("in circles") << QStringLiteral("/start") << false << answered(307, "moved");
}

void NetworkHttpClientTest::redirects() {
    QFETCH(QString, location);
    QFETCH(bool, isAuthorised);
    QFETCH(HttpResult, expected);
    MisbehavingServer server([location](QTcpSocket& socket, const QByteArray& request) {
        const QByteArray header = location.isEmpty() ? "" : "Location: " + location.toUtf8() + "\r\n";
        if (request.startsWith("GET /start "))
            socket.write(MisbehavingServer::answer("307 Moved", "moved", header));
        else
            socket.write(MisbehavingServer::answer("200 OK", "there"));
    });
    NetworkHttpClient client(loopbackOptions());
    const QUrl start = server.url(QStringLiteral("/start"));
    const HttpResult result = send(client, isAuthorised ? authorised(start) : get(start));
    QCOMPARE(summary(result), summary(expected));
    QVERIFY(result == expected);
    QVERIFY(server.requests().size() <= 11);
}

void NetworkHttpClientTest::addressesThatAreRefused_data() {
    QTest::addColumn<QString>("url");
    QTest::addColumn<NetworkHttpClient::InsecureLoopback>("loopback");
    using enum NetworkHttpClient::InsecureLoopback;
    QTest::newRow("plain") << QStringLiteral("http://example.invalid/") << allowed;
    QTest::newRow("named like this machine")
        << QStringLiteral("http://localhost.example.invalid/") << allowed;
    QTest::newRow("user part like this machine")
        << QStringLiteral("http://localhost@example.invalid/") << allowed;
    QTest::newRow("loopback when not allowed") << QStringLiteral("http://127.0.0.1:%1/") << refused;
    QTest::newRow("file") << QStringLiteral("file:///etc/hostname") << allowed;
    QTest::newRow("no host") << QStringLiteral("https:///path") << allowed;
    QTest::newRow("empty") << QString() << allowed;
}

void NetworkHttpClientTest::addressesThatAreRefused() {
    QFETCH(QString, url);
    QFETCH(NetworkHttpClient::InsecureLoopback, loopback);
    MisbehavingServer server(MisbehavingServer::writes(MisbehavingServer::answer("200 OK", "")));
    auto options = loopbackOptions();
    options.insecureLoopback = loopback;
    NetworkHttpClient client(options);
    if (url.contains(QLatin1String("%1")))
        url = url.arg(server.url().port());
    QVERIFY(send(client, get(QUrl(url))) == failed(TransportError::insecure));
    QCOMPARE(server.connectionCount(), 0);
}

void NetworkHttpClientTest::requestCarriesNothingOfItsOwn() {
    MisbehavingServer server(MisbehavingServer::writes(
        MisbehavingServer::answer("200 OK", "x", "Set-Cookie: a=b\r\nCache-Control: max-age=900\r\n")));
    NetworkHttpClient client(loopbackOptions());
    HttpRequest post = authorised(server.url(QStringLiteral("/v1/x?a=%2B%20")));
    post.method = HttpMethod::post;
    post.headers.emplace_back("Content-Type", "application/json");
    post.body = "{}";
    QVERIFY(send(client, post) == answered(200, "x"));
    QVERIFY(send(client, get(server.url())) == answered(200, "x"));
    QVERIFY(send(client, get(server.url())) == answered(200, "x"));

    QCOMPARE(server.requests().size(), 3);
    QCOMPARE(server.connectionCount(), 1);
    const QByteArray first = server.requests().at(0).toLower();
    QVERIFY(first.startsWith("post /v1/x?a=%2b%20 http/1.1\r\n"));
    QVERIFY(first.endsWith("\r\n\r\n{}"));
    for (const QByteArray line :
         {"authorization: bearer secret", "content-type: application/json", "user-agent: tidemark/1.2.3"})
        QCOMPARE(first.count("\r\n" + line + "\r\n"), 1);
    const QByteArray last = server.requests().at(2).toLower();
    for (const QByteArray name : {"cookie", "authorization", "if-", "cache", "upgrade", "referer"})
        QVERIFY2(!last.contains("\r\n" + name), last.constData());
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

void NetworkHttpClientTest::selfSignedCertificateIsRefused() {
    QTemporaryDir folder;
    MisbehavingServer server(MisbehavingServer::writes(MisbehavingServer::answer("200 OK", "x")),
                             selfSigned(folder));
    NetworkHttpClient client(loopbackOptions());
    const HttpResult result = send(client, authorised(server.url()));
    QCOMPARE(summary(result), summary(failed(TransportError::insecure)));
    QCOMPARE(server.requests().size(), 0);
}

/// Over TLS that is in order: HTTP/1.1 even when the server prefers its successor, and no way back to plain.
void NetworkHttpClientTest::trustedServer() {
    QTemporaryDir folder;
    QSslConfiguration tls = selfSigned(folder);
    tls.setAllowedNextProtocols({"h2", "http/1.1"});
    const QSslConfiguration before = QSslConfiguration::defaultConfiguration();
    const auto restore = qScopeGuard([&before] { QSslConfiguration::setDefaultConfiguration(before); });
    QSslConfiguration trusting = before;
    trusting.addCaCertificate(tls.localCertificate());
    QSslConfiguration::setDefaultConfiguration(trusting);

    MisbehavingServer plain(MisbehavingServer::writes(MisbehavingServer::answer("200 OK", "plain")));
    const QByteArray location = "Location: " + plain.url().toEncoded() + "\r\n";
    MisbehavingServer server(
        [&location](QTcpSocket& socket, const QByteArray& request) {
            socket.write(request.startsWith("GET /down")
                             ? MisbehavingServer::answer("302 Found", "", location)
                             : MisbehavingServer::answer("200 OK", "safe"));
        },
        tls);
    auto options = loopbackOptions();
    options.insecureLoopback = NetworkHttpClient::InsecureLoopback::refused;
    NetworkHttpClient client(options);
    QVERIFY(send(client, get(server.url())) == answered(200, "safe"));
    QVERIFY(send(client, get(server.url(QStringLiteral("/down")))) == failed(TransportError::insecure));
    QCOMPARE(plain.connectionCount(), 0);
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

Q_DECLARE_METATYPE(tidemark::MisbehavingServer::Script)
Q_DECLARE_METATYPE(tidemark::HttpResult)
Q_DECLARE_METATYPE(tidemark::NetworkHttpClient::InsecureLoopback)

QTEST_GUILESS_MAIN(tidemark::NetworkHttpClientTest)
#include "NetworkHttpClientTest.moc"

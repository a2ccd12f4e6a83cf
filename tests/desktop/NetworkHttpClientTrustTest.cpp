#include "desktop/NetworkHttpClient.h"

#include <QFile>
#include <QProcess>
#include <QScopeGuard>
#include <QSslCertificate>
#include <QSslKey>
#include <QTemporaryDir>
#include <QTest>

#include "tests/desktop/HttpExchange.h"
#include "tests/fakes/MisbehavingServer.h"

namespace tidemark {

namespace {

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

class NetworkHttpClientTrustTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void redirects_data();
    void redirects();
    void addressesThatAreRefused_data();
    void addressesThatAreRefused();
    void requestCarriesNothingOfItsOwn();
    void tokenWithALineBreakIsNotSent();
    void selfSignedCertificateIsRefused();
    void trustedServer();
    void systemProxyIsUsed_data();
    void systemProxyIsUsed();
};

void NetworkHttpClientTrustTest::redirects_data() {
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

void NetworkHttpClientTrustTest::redirects() {
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

void NetworkHttpClientTrustTest::addressesThatAreRefused_data() {
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

void NetworkHttpClientTrustTest::addressesThatAreRefused() {
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

void NetworkHttpClientTrustTest::requestCarriesNothingOfItsOwn() {
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

void NetworkHttpClientTrustTest::tokenWithALineBreakIsNotSent() {
    MisbehavingServer server(MisbehavingServer::writes(MisbehavingServer::answer("200 OK", "x", "")));
    NetworkHttpClient client(loopbackOptions());
    for (const QByteArray token : {"abc\n", "abc\r\nX-Evil: 1", "a\rb", "a\x7f"}) {
        HttpRequest request = get(server.url());
        request.headers = {{"authorization", "Bearer " + token}};
        QVERIFY(send(client, request) == failed(TransportError::malformedHeader));
    }
    QCOMPARE(server.connectionCount(), 0);
}

void NetworkHttpClientTrustTest::selfSignedCertificateIsRefused() {
    QTemporaryDir folder;
    MisbehavingServer server(MisbehavingServer::writes(MisbehavingServer::answer("200 OK", "x")),
                             selfSigned(folder));
    NetworkHttpClient client(loopbackOptions());
    const HttpResult result = send(client, authorised(server.url()));
    QCOMPARE(summary(result), summary(failed(TransportError::insecure)));
    QCOMPARE(server.requests().size(), 0);
}

/// Over TLS that is in order: HTTP/1.1 even when the server prefers its successor, and no way back to plain.
void NetworkHttpClientTrustTest::trustedServer() {
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

void NetworkHttpClientTrustTest::systemProxyIsUsed_data() {
    QTest::addColumn<QByteArray>("status");
    QTest::addColumn<HttpResult>("expected");
    QTest::newRow("wants credentials") << QByteArray("407 Who") << failed(TransportError::proxyFailed);
    QTest::newRow("forbids") << QByteArray("403 Forbidden") << failed(TransportError::offline);
}

/// The proxy sees the way to other machines, without the token, and nothing of what stays on this one.
void NetworkHttpClientTrustTest::systemProxyIsUsed() {
    QFETCH(QByteArray, status);
    QFETCH(HttpResult, expected);
    MisbehavingServer proxy(MisbehavingServer::writesAndCloses(MisbehavingServer::answer(
        status, "", "Proxy-Authenticate: Basic realm=\"x\"\r\nConnection: close\r\n")));
    MisbehavingServer server(MisbehavingServer::writes(MisbehavingServer::answer("200 OK", "x")));
    const auto restore = qScopeGuard([] {
        qunsetenv("http_proxy");
        qunsetenv("https_proxy");
    });
    qputenv("http_proxy", proxy.url().toEncoded());
    qputenv("https_proxy", proxy.url().toEncoded());
    NetworkHttpClient client(loopbackOptions());
    QVERIFY(send(client, get(server.url())) == answered(200, "x"));
    QCOMPARE(proxy.connectionCount(), 0);

    const HttpResult result = send(client, authorised(QUrl(QStringLiteral("https://example.invalid/v1"))));
    QCOMPARE(summary(result), summary(expected));
    QVERIFY(proxy.requests().value(0).startsWith("CONNECT example.invalid:443 "));
    QVERIFY(!proxy.requests().value(0).contains("secret"));
}

}  // namespace tidemark

QTEST_GUILESS_MAIN(tidemark::NetworkHttpClientTrustTest)
#include "NetworkHttpClientTrustTest.moc"

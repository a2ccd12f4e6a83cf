#include <QFile>
#include <QProcess>
#include <QScopeGuard>
#include <QSslCertificate>
#include <QSslKey>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <atomic>
#include <future>

#include "platform/http/NetworkHttpClient.h"
#include "tests/TestProgram.h"
#include "tests/fakes/MisbehavingServer.h"
#include "tests/platform/http/HttpExchange.h"

using namespace tidemark;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

const HttpResult refusal = failed(TransportError::insecure);

/// A private key with a self-signed certificate, generated for each run.
QSslConfiguration selfSigned(QTemporaryDir& folder) {
    const QString key = folder.filePath(u"key.pem"_s);
    const QString certificate = folder.filePath(u"certificate.pem"_s);
    QProcess openssl;
    openssl.start(
        u"openssl"_s,
        u"req -x509 -newkey ec -nodes -pkeyopt ec_paramgen_curve:prime256v1 -days 2 -subj /CN=localhost "
        u"-addext subjectAltName=IP:127.0.0.1"_s.split(u' ') +
            QStringList{u"-keyout"_s, key, u"-out"_s, certificate});
    if (!openssl.waitForFinished(hangLimit) || openssl.exitCode() != 0)
        qFatal("No certificate: %s", openssl.readAllStandardError().constData());
    QFile keyFile(key);
    std::ignore = keyFile.open(QIODevice::ReadOnly);
    QSslConfiguration tls = QSslConfiguration::defaultConfiguration();
    tls.setPrivateKey(QSslKey(&keyFile, QSsl::Ec));
    tls.setLocalCertificate(QSslCertificate::fromPath(certificate).value(0));
    tls.setPeerVerifyMode(QSslSocket::VerifyNone);
    return tls;
}

/// The certificate that `selfSigned` made.
QByteArray authority(const QTemporaryDir& folder) {
    return QFile::encodeName(folder.filePath(u"certificate.pem"_s));
}

}  // namespace

class NetworkHttpClientTrustTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void redirects() {
        QByteArray location;
        MisbehavingServer server([&location](QTcpSocket& socket, const QByteArray& request) {
            if (request.startsWith("GET /start "))
                socket.write(MisbehavingServer::answer("307 Moved", "moved", location));
            else
                socket.write(MisbehavingServer::answer("200 OK", "there"));
        });
        NetworkHttpClient client(loopbackOptions());
        const HttpRequest start = get(server.url(u"/start"_s));
        const HttpResult asItIs = httpAnswer(307, "moved");
        QVERIFY(send(client, start) == asItIs);
        location = "Location: /elsewhere?a=b\r\n";
        QVERIFY(send(client, start) == httpAnswer(200, "there"));
        QVERIFY(send(client, authorised(start.url)) == asItIs);
        location = "Location: http://example.invalid/\r\n";
        QVERIFY(send(client, start) == refusal);
        location = "Location: file:///etc/hostname\r\n";
        QVERIFY(send(client, start) == refusal);
        location = "Location: /start\r\n";  // a loop
        const qsizetype before = server.requests().size();
        QVERIFY(send(client, start) == asItIs);
        QVERIFY(server.requests().size() <= before + 11);
    }

    void addressesThatAreRefused() {
        auto options = loopbackOptions();
        NetworkHttpClient client(options);
        for (const auto& url : {u"http://example.invalid/"_s, u"http://localhost.example.invalid/"_s,
                                u"http://localhost@example.invalid/"_s, u"file:///etc/hostname"_s,
                                u"https:///path"_s, QString()})
            QVERIFY2(send(client, get(QUrl(url))) == refusal, qPrintable(url));
        MisbehavingServer server(MisbehavingServer::writes(MisbehavingServer::answer("200 OK", "")));
        options.insecureLoopback = NetworkHttpClient::InsecureLoopback::refused;
        NetworkHttpClient strict(options);
        QVERIFY(send(strict, get(server.url())) == refusal);
        QCOMPARE(server.connectionCount(), 0);
    }

    void requestCarriesNothingOfItsOwn() {
        MisbehavingServer server(MisbehavingServer::writes(
            MisbehavingServer::answer("200 OK", "x", "Set-Cookie: a=b\r\nCache-Control: max-age=900\r\n")));
        NetworkHttpClient client(loopbackOptions());
        HttpRequest post = authorised(server.url(u"/v1/x?a=%2B%20"_s));
        post.method = HttpMethod::post;
        post.headers.emplace_back("Content-Type", "application/json");
        post.body = "{}";
        QVERIFY(send(client, post) == httpAnswer(200, "x"));
        QVERIFY(send(client, get(server.url())) == httpAnswer(200, "x"));
        QVERIFY(send(client, get(server.url())) == httpAnswer(200, "x"));

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

    void tokenWithALineBreakIsNotSent() {
        MisbehavingServer server(MisbehavingServer::writes(MisbehavingServer::answer("200 OK", "x", "")));
        NetworkHttpClient client(loopbackOptions());
        for (const QByteArray token : {"abc\n", "abc\r\nX-Evil: 1", "a\rb", "a\x7f"}) {
            HttpRequest request = get(server.url());
            request.headers = {{"authorization", "Bearer " + token}};
            QVERIFY(send(client, request) == failed(TransportError::malformedHeader));
        }
        QCOMPARE(server.connectionCount(), 0);
    }

    /// HTTP/1.1 even when the server prefers HTTP/2, and no redirect to plain http.
    void tlsIsTakenSeriously() {
        QTemporaryDir folder;
        QSslConfiguration tls = selfSigned(folder);
        tls.setAllowedNextProtocols({"h2", "http/1.1"});
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
        NetworkHttpClient distrusting(options);
        QVERIFY(send(distrusting, authorised(server.url())) == refusal);
        QCOMPARE(server.requests().size(), 0);

        options.authorities = authority(folder);
        NetworkHttpClient client(options);
        QVERIFY(send(client, get(server.url())) == httpAnswer(200, "safe"));
        QVERIFY(send(client, get(server.url(u"/down"_s))) == refusal);
        QCOMPARE(plain.connectionCount(), 0);
    }

    void aHandshakeThatNeverEndsCostsOnlyItsOwnRequest() {
        QTemporaryDir folder;
        const QSslConfiguration tls = selfSigned(folder);
        MisbehavingServer server(MisbehavingServer::writes(MisbehavingServer::answer("200 OK", "safe")), tls);
        // In front of it, the first connections get no answer to their greeting.
        QTcpServer front;
        bool isSilent = true;
        connect(&front, &QTcpServer::newConnection, &front, [&] {
            QTcpSocket* const near = front.nextPendingConnection();
            if (isSilent)
                return;
            auto* const far = new QTcpSocket(near);
            far->connectToHost(QHostAddress::LocalHost, static_cast<quint16>(server.url().port()));
            connect(near, &QTcpSocket::readyRead, far, [=] { far->write(near->readAll()); });
            connect(far, &QTcpSocket::readyRead, near, [=] { near->write(far->readAll()); });
        });
        QVERIFY(front.listen(QHostAddress::LocalHost));
        auto options = loopbackOptions();
        options.authorities = authority(folder);
        NetworkHttpClient client(options);
        HttpRequest request = get(QUrl(u"https://127.0.0.1:%1/"_s.arg(front.serverPort())));
        request.timeout = 100ms;
        for (int i = 0; i < 3; ++i)
            QVERIFY(send(client, request) == failed(TransportError::timedOut));
        isSilent = false;
        request.timeout = 10s;
        QVERIFY(send(client, request) == httpAnswer(200, "safe"));
    }

    /// The proxy gets requests to other machines, without their token, and none to this machine.
    void systemProxyIsUsed() {
        MisbehavingServer proxy(MisbehavingServer::writesAndCloses(MisbehavingServer::answer(
            "407 Who", "", "Proxy-Authenticate: Basic realm=\"x\"\r\nConnection: close\r\n")));
        MisbehavingServer server(MisbehavingServer::writes(MisbehavingServer::answer("200 OK", "x")));
        const auto restore = qScopeGuard([] {
            qunsetenv("http_proxy");
            qunsetenv("https_proxy");
        });
        qputenv("http_proxy", proxy.url().toEncoded());
        qputenv("https_proxy", proxy.url().toEncoded());
        NetworkHttpClient client(loopbackOptions());
        QVERIFY(send(client, get(server.url())) == httpAnswer(200, "x"));
        QCOMPARE(proxy.connectionCount(), 0);

        const HttpRequest request = authorised(QUrl(u"https://example.invalid/v1"_s));
        QCOMPARE(summary(send(client, request)), summary(failed(TransportError::proxyFailed)));
        QVERIFY(proxy.requests().value(0).startsWith("CONNECT example.invalid:443 "));
        for (const QByteArray& seen : proxy.requests())
            QVERIFY(!seen.contains("secret"));
    }

    /// A proxy script whose server is silent: the answer to the question comes when the test says so.
    void aQuestionForTheProxyHoldsUpOnlyItsOwnRequest() {
        MisbehavingServer server(MisbehavingServer::writes(MisbehavingServer::answer("200 OK", "x")));
        MisbehavingServer proxy(MisbehavingServer::writes(MisbehavingServer::answer("200 OK", "proxied")));
        std::promise<QByteArray> answer;
        std::atomic_int questions = 0;
        NetworkHttpClient::Options options = loopbackOptions();
        options.proxy = [&questions, known = answer.get_future().share()](const QByteArray& origin) {
            ++questions;
            return origin == "https://example.invalid/" ? known.get() : QByteArray();
        };
        NetworkPath path;
        options.networkPath = [&path] { return path; };
        NetworkHttpClient client(options);
        HttpRequest request = authorised(QUrl(u"https://example.invalid/v1"_s));
        request.timeout = 50ms;
        QVERIFY(send(client, request) == failed(TransportError::proxyFailed));
        QVERIFY(send(client, request) == failed(TransportError::proxyFailed));
        QCOMPARE(questions, 1);
        QVERIFY(send(client, get(server.url())) == httpAnswer(200, "x"));

        request.timeout = 10s;
        auto waiting = client.send(request, {});
        answer.set_value(proxy.url().toEncoded());
        QVERIFY(QCoro::waitFor(std::move(waiting)) == failed(TransportError::insecure));  // it speaks no TLS
        QCOMPARE(proxy.connectionCount(), 1);
        QVERIFY(!send(client, request));
        QCOMPARE(questions, 1);
        path.suspended += 1min;
        QVERIFY(!send(client, request));
        QCOMPARE(questions, 2);
    }

    void theProgramDoesNotWaitForAProxyThatIsStillUnknown() {
        const auto never = std::make_shared<std::promise<QByteArray>>();
        NetworkHttpClient::Options options = loopbackOptions();
        options.proxy = [never](const QByteArray&) { return never->get_future().get(); };
        std::optional<NetworkHttpClient> client(std::in_place, options);
        auto waiting = client->send(get(QUrl(u"https://example.invalid/"_s)), {});
        client.reset();
        QVERIFY(QCoro::waitFor(std::move(waiting)) == failed(TransportError::cancelled));
        never->set_value({});
    }

    /// The first request already contains the name and password from the proxy's address.
    void proxyIsTheUsersOwn_data() {
        QTest::addColumn<bool>("staysOpen");  // after its request for credentials
        QTest::newRow("on one connection") << true;
        QTest::newRow("on another connection") << false;
    }
    void proxyIsTheUsersOwn() {
        QFETCH(const bool, staysOpen);
        const QByteArray wanted = "\r\nProxy-Authorization: Basic " + QByteArray("me:pass").toBase64();
        MisbehavingServer proxy([&](QTcpSocket& socket, const QByteArray& request) {
            const bool isKnown = request.contains(wanted);
            socket.write(isKnown ? "HTTP/1.1 502 Far away\r\nContent-Length: 0\r\n\r\n"
                                 : "HTTP/1.1 407 Who\r\nContent-Length: 0\r\nProxy-Authenticate: Basic "
                                   "realm=\"x\"\r\n" +
                                       QByteArray(staysOpen ? "\r\n" : "Connection: close\r\n\r\n"));
            if (!staysOpen)
                socket.disconnectFromHost();
        });
        const auto restore = qScopeGuard([] { qunsetenv("https_proxy"); });
        QUrl url = proxy.url();
        url.setUserName(u"me"_s);
        url.setPassword(u"pass"_s);
        qputenv("https_proxy", url.toEncoded());
        NetworkHttpClient client(loopbackOptions());
        const HttpRequest request = authorised(QUrl(u"https://example.invalid/v1"_s));
        QVERIFY(!send(client, request));
        QVERIFY(!proxy.requests().isEmpty());
        QVERIFY(proxy.requests().constLast().contains(wanted));
        for (const QByteArray& seen : proxy.requests())
            QVERIFY(!seen.contains("secret"));
    }
};

TIDEMARK_TEST(NetworkHttpClientTrustTest)
#include "NetworkHttpClientTrustTest.moc"

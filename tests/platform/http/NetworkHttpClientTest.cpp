#include <QHostAddress>
#include <QPointer>
#include <QTcpServer>
#include <thread>

#include "platform/http/NetworkHttpClient.h"
#include "tests/TestProgram.h"
#include "tests/fakes/MisbehavingServer.h"
#include "tests/platform/http/HttpExchange.h"

using namespace tidemark;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Script = MisbehavingServer::Script;

namespace {

const QByteArray chunked = "Transfer-Encoding: chunked\r\n";
const QByteArray compressed = "Content-Encoding: deflate\r\n";

/// The body in the zlib format, as "Content-Encoding: deflate" carries it.
QByteArray deflated(const QByteArray& body) {
    return qCompress(body, 9).sliced(4);
}

/// Closes the connection without an answer.
void reset(QTcpSocket& socket, const QByteArray& /*request*/) {
    socket.abort();
}

}  // namespace

class NetworkHttpClientTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { m_client = std::make_unique<NetworkHttpClient>(loopbackOptions()); }

    void answersAndFailures_data() {
        QTest::addColumn<Script>("script");
        QTest::addColumn<HttpResult>("expected");
        using enum TransportError;
        const auto answer = &MisbehavingServer::answer;
        const auto writes = &MisbehavingServer::writes;
        const auto closes = &MisbehavingServer::writesAndCloses;
        const QByteArray large(100'000, 'x');
        const QByteArray beyond(1024 * 1024 + 1, 'x');
        const QByteArray bomb = deflated(QByteArray(50'000'000, 'x'));
        const QByteArray cut = deflated(large).chopped(20);

        const auto arrives = [](const QByteArray& name, const Script& script, int status,
                                const QByteArray& body) {
            QTest::newRow(name) << script << httpAnswer(status, body);
        };
        // Statuses for which Qt has its own errors, and others.
        for (const int status : {200, 201, 302, 400, 403, 404, 410, 418, 429, 500, 503, 599}) {
            const QByteArray line = QByteArray::number(status) + " Word";
            arrives(line, writes(answer(line, "{\"error\": 1}", "")), status, "{\"error\": 1}");
        }
        arrives("204", writes("HTTP/1.1 204 No Content\r\n\r\n"), 204, "");
        arrives("401", closes(answer("401 Who", large, "WWW-Authenticate: Negotiate\r\n")), 401, large);
        arrives("body until the end", closes("HTTP/1.1 200 OK\r\n\r\n" + large), 200, large);
        arrives("chunked", writes("HTTP/1.1 200 OK\r\n" + chunked + "\r\n3\r\nabc\r\n0\r\n\r\n"), 200, "abc");
        arrives("compressed", writes(answer("200 OK", deflated(large), compressed)), 200, large);

        arrives("after interim answers",
                writes("HTTP/1.1 102 Processing\r\n\r\nHTTP/1.1 103 Early\r\nLink: </x>\r\n\r\n" +
                       answer("200 OK", "x", "")),
                200, "x");
        arrives("407", writes(answer("407 Who", "x", "Proxy-Authenticate: Basic realm=\"x\"\r\n")), 407, "x");
        // What was refused, or how often to ask, does not depend on the explanation.
        arrives("401 in broken compression", writes(answer("401 Who", "garbage", compressed)), 401, "");
        arrives("429 cut off", closes("HTTP/1.1 429 Slow\r\nContent-Length: 10\r\n\r\nabc"), 429, "");
        arrives("500 too large", writes(answer("500 Oops", beyond, "")), 500, "");

        const auto fails = [](const char* name, const Script& script, TransportError error) {
            QTest::newRow(name) << script << failed(error);
        };
        fails("too large", writes(answer("200 OK", beyond, "")), tooLarge);
        fails("bomb", writes(answer("200 OK", bomb, compressed)), tooLarge);
        fails("broken compression", writes(answer("200 OK", "garbage", compressed)), connectionLost);
        fails("compression nobody asked for", writes(answer("200 OK", "abc", "Content-Encoding: br\r\n")),
              other);
        fails("compression cut off", writes(answer("200 OK", cut, compressed)), connectionLost);
        fails("cut off by the end", closes("HTTP/1.1 200 OK\r\n" + compressed + "\r\n" + cut),
              connectionLost);
        fails("closed mid-body", closes("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nabc"), connectionLost);
        fails("closed between chunks",
              closes("HTTP/1.1 200 OK\r\n" + chunked + compressed + "\r\n3\r\n" + cut.first(3) + "\r\n"),
              connectionLost);
        fails("closed at once", closes(""), connectionLost);
        fails("reset", reset, connectionLost);
        fails("another protocol", writes("220 mail.example ESMTP\r\n"), notHttp);
    }

    void answersAndFailures() {
        QFETCH(const Script, script);
        QFETCH(const HttpResult, expected);
        MisbehavingServer server(script);
        const HttpResult result = send(*m_client, get(server.url()));
        QCOMPARE(summary(result), summary(expected));
        QVERIFY(result == expected);
    }

    void aConnectionThatIsResetCostsOneRequest() {
        MisbehavingServer server(reset);
        QVERIFY(send(*m_client, get(server.url())) == failed(TransportError::connectionLost));
        QCOMPARE(server.requests().size(), 1);
    }

    void postGetsItsRedirectAsTheAnswer() {
        MisbehavingServer server(MisbehavingServer::writes(
            MisbehavingServer::answer("307 Elsewhere", "x", "Location: /elsewhere\r\n")));
        HttpRequest request = authorised(server.url());
        request.method = HttpMethod::post;
        request.body = "{}";
        QVERIFY(send(*m_client, request) == httpAnswer(307, "x"));
        QCOMPARE(server.requests().size(), 1);
    }

    void postIsNeverSentTwice() {
        const QList<std::pair<QByteArray, Script>> cases{
            {"abc", MisbehavingServer::writesAndCloses("")},
            {"", MisbehavingServer::writesAndCloses("")},
            {QByteArray(300'000, 'x'), reset},
            {"abc", MisbehavingServer::writesAndCloses("HTTP/1.1 2")}};
        for (const auto& [body, script] : cases) {
            MisbehavingServer server(script);
            HttpRequest request = authorised(server.url());
            request.method = HttpMethod::post;
            request.body = body;
            const HttpResult result = send(*m_client, request);
            QCOMPARE(summary(result), summary(failed(TransportError::connectionLost)));
            QCOMPARE(server.requests().size(), 1);
            QVERIFY(server.requests().at(0).endsWith("\r\n\r\n" + body));
        }
    }

    /// The server closes the connection when the second request arrives, like one that has just timed out.
    void getSurvivesAClosedKeptAliveConnection() {
        int count = 0;
        MisbehavingServer server([&count](QTcpSocket& socket, const QByteArray&) {
            if (++count == 2)
                socket.abort();
            else
                socket.write(MisbehavingServer::answer("200 OK", "x"));
        });
        QVERIFY(send(*m_client, get(server.url())) == httpAnswer(200, "x"));
        QVERIFY(send(*m_client, get(server.url())) == httpAnswer(200, "x"));
        QCOMPARE(server.connectionCount(), 2);
    }

    void aConnectionThatDiedWithItsNetworkIsNotUsed() {
        MisbehavingServer server(MisbehavingServer::writes(MisbehavingServer::answer("200 OK", "x")));
        NetworkPath path{.suspended = 5h, .addresses = {"\xc0\x00\x02\x01"}};
        NetworkHttpClient::Options options = loopbackOptions();
        options.networkPath = [&path] { return path; };
        NetworkHttpClient client(options);
        const auto connections = [&] {
            return send(client, get(server.url())) == httpAnswer(200, "x") ? server.connectionCount() : -1;
        };
        QCOMPARE(connections(), 1);
        path.suspended += 1ms;  // the two clocks are not read at the same time
        QCOMPARE(connections(), 1);
        path.suspended += 1min;
        QCOMPARE(connections(), 2);
        path.addresses.insert("\x0a\x01\x01\x01");
        QCOMPARE(connections(), 3);
        QCOMPARE(connections(), 3);

        // Pending requests are not affected.
        QPointer<QTcpSocket> late;
        MisbehavingServer slow([&late](QTcpSocket& socket, const QByteArray&) { late = &socket; });
        {
            QCoro::Task<HttpResult> waiting = client.send(get(slow.url()), {});
            QTRY_VERIFY(late);
            path.suspended += 1min;
            QCOMPARE(connections(), 4);
            QCOMPARE(connections(), 4);
            late->write(MisbehavingServer::answer("200 OK", "late"));
            QVERIFY(QCoro::waitFor(std::move(waiting)) == httpAnswer(200, "late"));
        }
        QTRY_COMPARE(slow.openConnectionCount(), 0);
    }

    void deadlineBoundsTheWholeExchange() {
        for (const auto& script :
             {MisbehavingServer::writes(""), MisbehavingServer::drips("HTTP/1.1 200 OK\r\n", "X-Drip: 1\r\n"),
              MisbehavingServer::drips("HTTP/1.1 200 OK\r\nContent-Length: 1000000\r\n\r\n", "x"),
              MisbehavingServer::drips("", "HTTP/1.1 100 Continue\r\n\r\n")}) {
            MisbehavingServer server(script);
            HttpRequest request = get(server.url());
            request.timeout = 100ms;
            const HttpResult result = send(*m_client, request);
            QCOMPARE(summary(result), summary(failed(TransportError::timedOut)));
            QTRY_COMPARE(server.openConnectionCount(), 0);
        }
    }

    void stopEndsAtOnce() {
        MisbehavingServer server(
            MisbehavingServer::writes("HTTP/1.1 200 OK\r\nContent-Length: 1000000\r\n\r\nabc"));
        std::stop_source early;
        early.request_stop();
        auto refused = m_client->send(get(server.url()), early.get_token());
        QVERIFY(!refused.isReady());
        QVERIFY(QCoro::waitFor(std::move(refused)) == failed(TransportError::cancelled));
        QCOMPARE(server.connectionCount(), 0);

        std::stop_source stop;
        auto task = m_client->send(get(server.url()), stop.get_token());
        QTRY_COMPARE(server.requests().size(), 1);
        std::thread([&stop] { stop.request_stop(); }).join();
        QVERIFY(!task.isReady());
        QVERIFY(QCoro::waitFor(std::move(task)) == failed(TransportError::cancelled));
        QTRY_COMPARE(server.openConnectionCount(), 0);
    }

    void endlessBodyIsCutOff() {
        MisbehavingServer server(MisbehavingServer::drips("HTTP/1.1 200 OK\r\n\r\n", QByteArray(65536, 'x')));
        QVERIFY(send(*m_client, get(server.url())) == failed(TransportError::tooLarge));
        QTRY_COMPARE(server.openConnectionCount(), 0);
    }

    void unreachableServers() {
        QTcpServer closed;
        QVERIFY(closed.listen(QHostAddress::LocalHost));
        const QUrl nobody(u"http://127.0.0.1:%1/"_s.arg(closed.serverPort()));
        closed.close();
        QVERIFY(send(*m_client, get(nobody)) == failed(TransportError::connectionRefused));
    }

    void clientGoesWhileRequestsRun() {
        MisbehavingServer server(MisbehavingServer::writes(""));
        auto sent = m_client->send(get(server.url()), {});
        QTRY_COMPARE(server.requests().size(), 1);
        auto justStarted = m_client->send(get(server.url()), {});
        m_client.reset();
        QVERIFY(QCoro::waitFor(std::move(sent)) == failed(TransportError::cancelled));
        QVERIFY(QCoro::waitFor(std::move(justStarted)) == failed(TransportError::cancelled));
    }

private:
    std::unique_ptr<NetworkHttpClient> m_client;
};

TIDEMARK_TEST(NetworkHttpClientTest)
#include "NetworkHttpClientTest.moc"

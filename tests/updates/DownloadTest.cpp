#include "tests/TestProgram.h"
#include "tests/fakes/MisbehavingServer.h"
#include "tests/platform/http/HttpExchange.h"

using namespace tidemark;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Script = MisbehavingServer::Script;
using DownloadResult = tl::expected<int, TransportError>;

namespace {

struct Download {
    QByteArray body;
    DownloadResult status;

    [[nodiscard]] QString summary() const {
        if (status)
            return u"%1, %2 bytes"_s.arg(*status).arg(body.size());
        return description(status.error()) + (body.isEmpty() ? u" Nothing came."_s : u" A part came."_s);
    }
};

}  // namespace

class DownloadTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { m_client = std::make_unique<NetworkHttpClient>(loopbackOptions()); }

    void bodiesArrive_data() {
        QTest::addColumn<Script>("script");
        QTest::addColumn<QString>("expected");
        using enum TransportError;
        const auto answer = &MisbehavingServer::answer;
        const auto writes = &MisbehavingServer::writes;
        const auto closes = &MisbehavingServer::writesAndCloses;
        const QByteArray whole(3'000'000, 'x');
        const QByteArray head = "HTTP/1.1 200 OK\r\n";
        const QByteArray compressed = "Content-Encoding: gzip\r\n";

        // More than the client's own limit for bodies, and exactly the limit of the download.
        QTest::newRow("whole") << writes(answer("200 OK", whole, "")) << u"200, 3000000 bytes"_s;
        QTest::newRow("without a length") << closes(head + "\r\n" + whole) << u"200, 3000000 bytes"_s;
        QTest::newRow("one too many")
            << writes(answer("200 OK", whole + "x", "")) << (description(tooLarge) + u" A part came."_s);
        QTest::newRow("cut") << closes(head + "Content-Length: 3000000\r\n\r\n" + whole.first(1'000'000))
                             << (description(connectionLost) + u" A part came."_s);
        QTest::newRow("error page") << writes(answer("404 Not Found", "Sorry", "")) << u"404, 0 bytes"_s;
        QTest::newRow("compressed") << writes(answer("200 OK", "abc", compressed))
                                    << (description(other) + u" Nothing came."_s);
        QTest::newRow("part") << writes(answer("206 Partial Content", "abc", "")) << u"206, 0 bytes"_s;
        QTest::newRow("redirect to plain http")
            << writes(answer("302 Found", "elsewhere", "Location: http://198.51.100.1/\r\n"))
            << (description(insecure) + u" Nothing came."_s);
    }

    void bodiesArrive() {
        QFETCH(const Script, script);
        MisbehavingServer server(script);
        QTEST(fetch({.url = server.url(), .limit = 3'000'000}).summary(), "expected");
    }

    void redirectsAreFollowed() {
        MisbehavingServer server([](QTcpSocket& socket, const QByteArray& request) {
            socket.write(request.startsWith("GET /there ")
                             ? MisbehavingServer::answer("200 OK", "abc")
                             : MisbehavingServer::answer("302 Found", "elsewhere", "Location: /there\r\n"));
        });
        const Download download = fetch({.url = server.url(), .limit = 10});
        QCOMPARE(download.body, "abc");
        QCOMPARE(download.status.value_or(0), 200);
        // A compressed body would not have the expected length.
        QVERIFY(server.requests().constFirst().toLower().contains("accept-encoding: identity\r\n"));
    }

    /// The whole download takes longer than the server may be silent. The patience is twenty times as long as
    /// the pauses, so that a machine that stalls for a second does not look like silence.
    void onlySilenceEndsIt() {
        const auto patience = 2s;
        MisbehavingServer steady(
            MisbehavingServer::drips("HTTP/1.1 200 OK\r\nContent-Length: 25\r\n\r\n", "x", 100ms, 25));
        QCOMPARE(fetch({.url = steady.url(), .limit = 25, .patience = patience}).summary(),
                 u"200, 25 bytes"_s);
        MisbehavingServer stalled(
            MisbehavingServer::drips("HTTP/1.1 200 OK\r\nContent-Length: 25\r\n\r\n", "x", 100ms, 2));
        QCOMPARE(fetch({.url = stalled.url(), .limit = 25, .patience = patience}).summary(),
                 (description(TransportError::timedOut) + u" A part came."_s));
        QTRY_COMPARE(stalled.openConnectionCount(), 0);
    }

    void sinkAndStopEndIt() {
        MisbehavingServer server(
            MisbehavingServer::drips("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n", "x", 100ms, 100));
        HttpSink full = [](QByteArrayView) { return false; };
        const DownloadResult refused =
            QCoro::waitFor(m_client->download({.url = server.url(), .limit = 100}, std::move(full), {}));
        QVERIFY(refused == tl::unexpected(TransportError::cancelled));
        QTRY_COMPARE(server.openConnectionCount(), 0);

        std::stop_source stop;
        HttpSink sink = [&stop](QByteArrayView) {
            stop.request_stop();
            return true;
        };
        const DownloadResult stopped = QCoro::waitFor(
            m_client->download({.url = server.url(), .limit = 100}, std::move(sink), stop.get_token()));
        QVERIFY(stopped == tl::unexpected(TransportError::cancelled));
        QTRY_COMPARE(server.openConnectionCount(), 0);
    }

private:
    Download fetch(HttpDownload wanted) {
        Download download;
        HttpSink sink = [&download](QByteArrayView piece) {
            download.body.append(piece);
            return true;
        };
        download.status = QCoro::waitFor(m_client->download(std::move(wanted), std::move(sink), {}));
        return download;
    }

    std::unique_ptr<NetworkHttpClient> m_client;
};

TIDEMARK_TEST(DownloadTest)
#include "DownloadTest.moc"

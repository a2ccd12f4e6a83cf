#include <QElapsedTimer>
#include <QHostAddress>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QTcpSocket>
#include <QTest>
#include <algorithm>

#include "sandbox/Sandbox.h"

using namespace tidemark::sandbox;
using namespace Qt::StringLiterals;

namespace {

const QByteArray statusRequest = "GET /api/v2/status.json HTTP/1.1\r\nHost: sandbox\r\n\r\n";

/// A running sandbox whose world stands still.
struct Scene {
    explicit Scene(SandboxOptions options = {}) : sandbox(still(options)), running(sandbox.start()) {}
    explicit Scene(const Fault& fault) : Scene() { sandbox.faults().add(fault); }

    static SandboxOptions still(SandboxOptions options) {
        options.speed = 0;
        return options;
    }

    /// A plain connection: sees every byte as it comes.
    [[nodiscard]] std::unique_ptr<QTcpSocket> connection(const QByteArray& request = statusRequest) const {
        auto socket = std::make_unique<QTcpSocket>();
        socket->connectToHost(QHostAddress::LocalHost, static_cast<quint16>(sandbox.baseUrl().port()));
        socket->write(request);
        const bool connected = socket->waitForConnected(2000);
        while (connected && socket->bytesToWrite() > 0)
            socket->waitForBytesWritten(2000);
        return socket;
    }

    Sandbox sandbox;
    bool running;
};

qsizetype promisedLength(const QByteArray& answer) {
    const qsizetype mark = answer.indexOf("Content-Length: ") + 16;
    return answer.mid(mark, answer.indexOf("\r\n", mark) - mark).toLongLong();
}

QByteArray bodyOf(const QByteArray& answer) {
    return answer.mid(answer.indexOf("\r\n\r\n") + 4);
}

/// The headers and as many bytes of the body as they promise, or what came of them by the end.
QByteArray readAnswer(QTcpSocket& socket) {
    QByteArray bytes;
    const auto complete = [&bytes] {
        return bytes.contains("\r\n\r\n") && bodyOf(bytes).size() >= promisedLength(bytes);
    };
    while (!complete() && socket.waitForReadyRead(3000))
        bytes += socket.readAll();
    return bytes;
}

bool isStatusPage(const QByteArray& answer) {
    return QJsonDocument::fromJson(bodyOf(answer)).object()[u"status"][u"indicator"].toString() == u"none";
}

}  // namespace

class SandboxServerTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void requestArrivesDecodedAndInOrder() {
        Scene scene;
        QVERIFY(scene.running);
        const auto socket = scene.connection(
            "POST /v13/deployments?b=2%261&a=%C3%A9+x&b=&flag HTTP/1.1\r\nHost: sandbox\r\nContent-Length: "
            "4\r\n"
            "Content-Type: application/json\r\nAuthorization: Bearer t\xc3\xa9\r\n\r\nbody");
        QVERIFY(readAnswer(*socket).startsWith("HTTP/1.1 401 "));
        const LoggedRequest logged = scene.sandbox.log().entries().value(0);
        QCOMPARE(logged.method, "POST");
        QCOMPARE(logged.path, u"/v13/deployments"_s);
        const QList<std::pair<QString, QString>> query{
            {u"b"_s, u"2&1"_s}, {u"a"_s, u"é x"_s}, {u"b"_s, QString()}, {u"flag"_s, QString()}};
        QCOMPARE(logged.query, query);
        QCOMPARE(logged.authorization, "Bearer t\xc3\xa9");
        QCOMPARE(logged.contentType, "application/json");
        QCOMPARE(logged.body, "body");
        QCOMPARE(logged.status, 401);
    }

    void connectionIsKeptAliveAlsoForRequestsSentAhead() {
        const Scene scene;
        const auto socket = scene.connection(statusRequest + statusRequest);
        QByteArray bytes;
        while (bytes.count("\"indicator\"") < 2 && socket->waitForReadyRead(3000))
            bytes += socket->readAll();
        QCOMPARE(bytes.count("HTTP/1.1 200 "), 2);
        socket->write(statusRequest);
        QVERIFY(isStatusPage(readAnswer(*socket)));
    }

    /// What the other faults look like to the program is told where it meets them, in the polling tests.
    void statusFaultsAreTheServicesOwn() {
        const auto answer = [](const Fault& fault) { return readAnswer(*Scene(fault).connection()); };
        QVERIFY(bodyOf(answer({.status = 500})).contains("\"error\""));
        QVERIFY(answer({.status = 429}).contains("\r\nRetry-After: 60\r\n"));
        QCOMPARE(bodyOf(answer({.status = 503, .body = "{\"a\":1}"})), "{\"a\":1}");
        const QByteArray moved = answer({.kind = FaultKind::redirect, .status = 307, .location = u"/"_s});
        QVERIFY(moved.startsWith("HTTP/1.1 307 ") && moved.contains("\r\nLocation: /\r\n"));
    }

    void stallHoldsUpNobodyElse() {
        Scene scene({.kind = FaultKind::stall, .times = 40});
        std::vector<std::unique_ptr<QTcpSocket>> stalled(40);
        std::generate(stalled.begin(), stalled.end(), [&scene] { return scene.connection(); });
        QTRY_COMPARE(scene.sandbox.log().total(), 40);
        QCOMPARE(scene.sandbox.log().entries().last().status, 0);
        QVERIFY(isStatusPage(readAnswer(*scene.connection())));
        QVERIFY(!stalled.front()->waitForReadyRead(50));
        QCOMPARE(stalled.front()->state(), QAbstractSocket::ConnectedState);
    }

    void slowAnswersAreWholeInTheEnd() {
        QElapsedTimer timer;
        timer.start();
        const Scene delayed({.kind = FaultKind::delay, .pauseMs = 150});
        QVERIFY(isStatusPage(readAnswer(*delayed.connection())));
        QVERIFY(timer.restart() >= 150);
        const Scene dripping({.kind = FaultKind::drip, .status = 200, .pauseMs = 1});
        const QByteArray answer = readAnswer(*dripping.connection());
        QVERIFY(isStatusPage(answer));
        QVERIFY(timer.elapsed() >= bodyOf(answer).size() - 1);
    }

    void bombUnpacksToItsSize() {
        const Scene scene({.kind = FaultKind::bomb, .bytes = 200'000});
        QNetworkAccessManager network;
        const QNetworkRequest request(scene.sandbox.baseUrl().resolved(QUrl(u"/api/v2/status.json"_s)));
        const std::unique_ptr<QNetworkReply> reply(network.get(request));
        QTRY_VERIFY(reply->isFinished());
        QCOMPARE(reply->readAll(), QByteArray(200'000, ' '));
    }

    void stopEndsWhateverIsUnderWay_data() {
        QTest::addColumn<Fault>("fault");
        QTest::newRow("idle connection") << Fault{.times = 0};
        QTest::newRow("stall") << Fault{.kind = FaultKind::stall};
        QTest::newRow("delay") << Fault{.kind = FaultKind::delay, .pauseMs = 60'000};
        QTest::newRow("drip") << Fault{.kind = FaultKind::drip};
        // Its client does not read, so the server waits for room to write.
        QTest::newRow("huge") << Fault{.kind = FaultKind::huge};
    }

    void stopEndsWhateverIsUnderWay() {
        QFETCH(const Fault, fault);
        Scene scene(fault);
        const auto silent = scene.connection({});
        const auto half = scene.connection("GET /v9/projects HT");
        const auto socket = scene.connection();
        QTRY_COMPARE(scene.sandbox.log().total(), 1);
        QElapsedTimer timer;
        timer.start();
        scene.sandbox.stop();
        QVERIFY2(timer.elapsed() < 1000, qPrintable(QString::number(timer.elapsed())));
        QVERIFY(scene.sandbox.baseUrl().isEmpty());
        QVERIFY(silent->waitForDisconnected(2000));
    }

    void startsAgainAndSeesATakenPort() {
        Scene scene;
        scene.sandbox.stop();
        QVERIFY(scene.sandbox.start());
        QVERIFY(isStatusPage(readAnswer(*scene.connection())));
        Sandbox second({.port = scene.sandbox.baseUrl().port()});
        QVERIFY(!second.start());
        QVERIFY(second.baseUrl().isEmpty());
    }
};

QTEST_GUILESS_MAIN(SandboxServerTest)
#include "SandboxServerTest.moc"

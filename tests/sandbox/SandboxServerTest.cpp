#include <QElapsedTimer>
#include <QHostAddress>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QTcpSocket>

#include "sandbox/Sandbox.h"
#include "tests/TestProgram.h"

using namespace tidemark::sandbox;
using namespace Qt::StringLiterals;

namespace {

const QByteArray statusRequest = "GET /api/v2/status.json HTTP/1.1\r\nHost: sandbox\r\n\r\n";

/// A running sandbox whose world stands still.
struct Scene {
    Scene() : sandbox({.speed = 0}), running(sandbox.start()) {}
    explicit Scene(const Fault& fault) : Scene() { sandbox.faults().add(fault); }

    /// A plain connection: sees every byte as it comes.
    [[nodiscard]] std::unique_ptr<QTcpSocket> connection(const QByteArray& request = statusRequest) const {
        auto socket = std::make_unique<QTcpSocket>();
        socket->connectToHost(QHostAddress::LocalHost, static_cast<quint16>(sandbox.baseUrl().port()));
        socket->write(request);
        const bool connected = socket->waitForConnected(hangLimit);
        while (connected && socket->bytesToWrite() > 0)
            socket->waitForBytesWritten(hangLimit);
        return socket;
    }

    Sandbox sandbox;
    bool running;
};

QByteArray bodyOf(const QByteArray& answer) {
    return answer.mid(answer.indexOf("\r\n\r\n") + 4);
}

/// The headers and as many bytes of the body as they promise, or what came of them by the end.
QByteArray readAnswer(QTcpSocket& socket) {
    QByteArray bytes;
    const auto complete = [&bytes] {
        const qsizetype mark = bytes.indexOf("Content-Length: ") + 16;
        const qsizetype promised = bytes.mid(mark, bytes.indexOf("\r\n", mark) - mark).toLongLong();
        return bytes.contains("\r\n\r\n") && bodyOf(bytes).size() >= promised;
    };
    while (!complete() && socket.waitForReadyRead(hangLimit))
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

    void requestsSentAheadAreAnswered() {
        const Scene scene;
        const auto socket = scene.connection(statusRequest + statusRequest);
        QByteArray bytes;
        while (bytes.count("\"indicator\"") < 2 && socket->waitForReadyRead(hangLimit))
            bytes += socket->readAll();
        QCOMPARE(bytes.count("HTTP/1.1 200 "), 2);
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
        Scene scene({.kind = FaultKind::stall, .times = 1});
        const auto stalled = scene.connection();
        QTRY_COMPARE(scene.sandbox.log().total(), 1);
        QVERIFY(isStatusPage(readAnswer(*scene.connection())));
        QVERIFY(!stalled->waitForReadyRead(50));
        QCOMPARE(stalled->state(), QAbstractSocket::ConnectedState);
    }

    void slowAnswersAreWholeInTheEnd() {
        QElapsedTimer timer;
        timer.start();
        const Scene delayed({.kind = FaultKind::delay, .pauseMs = 50});
        QVERIFY(isStatusPage(readAnswer(*delayed.connection())));
        QVERIFY(timer.restart() >= 50);
        const Scene dripping({.kind = FaultKind::drip, .status = 200, .pauseMs = 1});
        const QByteArray answer = readAnswer(*dripping.connection());
        QVERIFY(isStatusPage(answer));
        QVERIFY(timer.elapsed() >= bodyOf(answer).size() - 1);
    }

    void floodDuringAnAnswerIsCutOff() {
        Scene scene({.kind = FaultKind::stall});
        const auto socket = scene.connection();
        QTRY_COMPARE(scene.sandbox.log().total(), 1);
        const QByteArray flood(1'000'000, ' ');
        int sent = 0;
        while (socket->state() == QAbstractSocket::ConnectedState && sent++ < 100) {
            socket->write(flood);
            socket->waitForBytesWritten(hangLimit);
        }
        QVERIFY2(sent < 100, qPrintable(QString::number(sent)));
    }

    void resetIsNoAnswer() {
        const Scene scene({.kind = FaultKind::reset});
        const auto socket = scene.connection();
        QCOMPARE(readAnswer(*socket), QByteArray());
        QCOMPARE(socket->error(), QAbstractSocket::RemoteHostClosedError);
    }

    void bombUnpacksToItsSize() {
        const Scene scene({.kind = FaultKind::bomb, .bytes = 200'000});
        QNetworkAccessManager network;
        const QNetworkRequest request(scene.sandbox.baseUrl().resolved(QUrl(u"/api/v2/status.json"_s)));
        const std::unique_ptr<QNetworkReply> reply(network.get(request));
        QTRY_VERIFY(reply->isFinished());
        QCOMPARE(reply->readAll(), QByteArray(200'000, ' '));
    }

    void stopEndsWhateverIsUnderWay() {
        // The client of the huge one does not read, so the server waits for room to write.
        for (const auto kind : {FaultKind::stall, FaultKind::delay, FaultKind::drip, FaultKind::huge}) {
            Scene scene({.kind = kind, .pauseMs = 3'600'000});
            const auto silent = scene.connection({});
            const auto half = scene.connection("GET /v9/projects HT");
            const auto socket = scene.connection();
            QTRY_COMPARE(scene.sandbox.log().total(), 1);
            scene.sandbox.stop();
            QVERIFY(silent->waitForDisconnected(hangLimit));
        }
    }
};

TIDEMARK_TEST(SandboxServerTest)
#include "SandboxServerTest.moc"

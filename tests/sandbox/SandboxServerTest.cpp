#include <QElapsedTimer>
#include <QEventLoop>
#include <QHostAddress>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QTcpSocket>
#include <QTest>

#include "sandbox/Sandbox.h"

using namespace tidemark::sandbox;
using namespace Qt::StringLiterals;

namespace {

const QByteArray statusRequest = "GET /api/v2/status.json HTTP/1.1\r\nHost: sandbox\r\n\r\n";

/// A running sandbox whose world stands still.
struct Scene {
    explicit Scene(SandboxOptions options = {}) : sandbox(still(options)), running(sandbox.start()) {}

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

/// Everything up to the end of the connection, or what came by the time a whole second brought nothing.
QByteArray readAll(QTcpSocket& socket) {
    QByteArray bytes = socket.readAll();
    while (socket.waitForReadyRead(1000))
        bytes += socket.readAll();
    return bytes;
}

/// The headers and as many bytes of the body as they promise.
QByteArray readAnswer(QTcpSocket& socket) {
    QByteArray bytes;
    const auto complete = [&bytes] {
        const qsizetype end = bytes.indexOf("\r\n\r\n");
        const qsizetype mark = bytes.indexOf("Content-Length: ");
        const qsizetype length = bytes.mid(mark + 16, bytes.indexOf("\r\n", mark) - mark - 16).toLongLong();
        return end >= 0 && mark >= 0 && bytes.size() >= end + 4 + length;
    };
    while (!complete() && socket.waitForReadyRead(3000))
        bytes += socket.readAll();
    return bytes;
}

QByteArray bodyOf(const QByteArray& answer) {
    return answer.mid(answer.indexOf("\r\n\r\n") + 4);
}

bool isStatusPage(const QByteArray& body) {
    return QJsonDocument::fromJson(body).object()[u"status"][u"indicator"].toString() == u"none";
}

/// A GET the way the program makes it; the reply is finished.
std::unique_ptr<QNetworkReply> fetch(QNetworkAccessManager& network, QNetworkRequest request) {
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    request.setTransferTimeout(5000);
    std::unique_ptr<QNetworkReply> reply(network.get(request));
    QEventLoop loop;
    QObject::connect(reply.get(), &QNetworkReply::finished, &loop, &QEventLoop::quit);
    loop.exec();
    return reply;
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
        QVERIFY(isStatusPage(bodyOf(readAnswer(*socket))));
    }

    void answersThatAreReplaced_data() {
        QTest::addColumn<Fault>("fault");
        QTest::addColumn<QByteArray>("start");
        QTest::addColumn<QByteArray>("contains");
        QTest::newRow("500") << Fault{.status = 500} << QByteArray("HTTP/1.1 500 ")
                             << QByteArray("\"error\"");
        QTest::newRow("429") << Fault{.status = 429} << QByteArray("HTTP/1.1 429 ")
                             << QByteArray("Retry-After: 60\r\n");
        QTest::newRow("own body") << Fault{.status = 503, .body = "{\"a\":1}"} << QByteArray("HTTP/1.1 503 ")
                                  << QByteArray("\r\n\r\n{\"a\":1}");
        QTest::newRow("redirect") << Fault{.kind = FaultKind::redirect, .location = u"http://a.example/"_s}
                                  << QByteArray("HTTP/1.1 302 ")
                                  << QByteArray("Location: http://a.example/\r\n");
        QTest::newRow("307") << Fault{.kind = FaultKind::redirect, .status = 307, .location = u"/"_s}
                             << QByteArray("HTTP/1.1 307 ") << QByteArray("Location: /\r\n");
        QTest::newRow("garbage") << Fault{.kind = FaultKind::garbage} << QByteArray("HTTP/1.1 200 ")
                                 << QByteArray("<!doctype html>");
        QTest::newRow("huge, to a size")
            << Fault{.kind = FaultKind::huge, .bytes = 3'000'000} << QByteArray("HTTP/1.1 200 ")
            << QByteArray("Content-Length: 3000000\r\n");
    }

    void answersThatAreReplaced() {
        QFETCH(Fault, fault);
        QFETCH(QByteArray, start);
        QFETCH(QByteArray, contains);
        Scene scene;
        scene.sandbox.faults().add(fault);
        const QByteArray answer = readAnswer(*scene.connection());
        QVERIFY2(answer.startsWith(start), answer.left(40).constData());
        QVERIFY(answer.contains(contains));
        if (fault.kind == FaultKind::huge)
            QVERIFY(isStatusPage(bodyOf(answer)));
    }

    void stallHoldsUpNobodyElse() {
        Scene scene;
        scene.sandbox.faults().add({.kind = FaultKind::stall, .times = 40});
        std::vector<std::unique_ptr<QTcpSocket>> stalled;
        stalled.reserve(40);
        for (int index = 0; index < 40; ++index)
            stalled.push_back(scene.connection());
        QTRY_COMPARE(scene.sandbox.log().total(), 40);
        QCOMPARE(scene.sandbox.log().entries().last().status, 0);
        QVERIFY(isStatusPage(bodyOf(readAnswer(*scene.connection()))));
        QVERIFY(!stalled.front()->waitForReadyRead(50));
        QCOMPARE(stalled.front()->state(), QAbstractSocket::ConnectedState);
    }

    void delayAnswersLate() {
        Scene scene;
        scene.sandbox.faults().add({.kind = FaultKind::delay, .pauseMs = 150});
        QElapsedTimer timer;
        timer.start();
        const QByteArray answer = readAnswer(*scene.connection());
        QVERIFY(isStatusPage(bodyOf(answer)));
        QVERIFY(timer.elapsed() >= 150);
    }

    void dripComesByteByByte() {
        Scene scene;
        scene.sandbox.faults().add({.kind = FaultKind::drip, .status = 200, .pauseMs = 1});
        QElapsedTimer timer;
        timer.start();
        const QByteArray body = bodyOf(readAnswer(*scene.connection()));
        QVERIFY(isStatusPage(body));
        QVERIFY(timer.elapsed() >= body.size() - 1);
    }

    void cutEndsHalfWay() {
        Scene scene;
        scene.sandbox.faults().add({.kind = FaultKind::cut});
        const auto socket = scene.connection();
        const QByteArray answer = readAll(*socket);
        QCOMPARE(socket->state(), QAbstractSocket::UnconnectedState);
        const qsizetype mark = answer.indexOf("Content-Length: ") + 16;
        const qsizetype promised = answer.mid(mark, answer.indexOf("\r\n", mark) - mark).toLongLong();
        QCOMPARE(bodyOf(answer).size(), promised / 2);
    }

    void hugeHasNoEnd() {
        Scene scene;
        scene.sandbox.faults().add({.kind = FaultKind::huge});
        const auto socket = scene.connection();
        qint64 received = 0;
        while (received < 20'000'000 && socket->waitForReadyRead(3000))
            received += socket->readAll().size();
        QVERIFY(received >= 20'000'000);
        socket->abort();
        QVERIFY(isStatusPage(bodyOf(readAnswer(*Scene().connection()))));
    }

    void bombUnpacksToItsSize() {
        Scene scene;
        scene.sandbox.faults().add({.kind = FaultKind::bomb, .bytes = 200'000});
        QNetworkAccessManager network;
        QNetworkRequest request(scene.sandbox.baseUrl().resolved(QUrl(u"/api/v2/status.json"_s)));
        const auto reply = fetch(network, request);
        QCOMPARE(reply->error(), QNetworkReply::NoError);
        QCOMPARE(reply->readAll(), QByteArray(200'000, ' '));
    }

    void stopEndsWhateverIsUnderWay_data() {
        QTest::addColumn<std::optional<Fault>>("fault");
        QTest::newRow("idle connection") << std::optional<Fault>();
        QTest::newRow("stall") << std::optional(Fault{.kind = FaultKind::stall});
        QTest::newRow("delay") << std::optional(Fault{.kind = FaultKind::delay, .pauseMs = 60'000});
        QTest::newRow("drip") << std::optional(Fault{.kind = FaultKind::drip});
        // Its client does not read, so the server waits for room to write.
        QTest::newRow("huge") << std::optional(Fault{.kind = FaultKind::huge});
    }

    void stopEndsWhateverIsUnderWay() {
        QFETCH(std::optional<Fault>, fault);
        Scene scene;
        if (fault)
            scene.sandbox.faults().add(*fault);
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
        QVERIFY(isStatusPage(bodyOf(readAnswer(*scene.connection()))));
        Sandbox second({.port = scene.sandbox.baseUrl().port()});
        QVERIFY(!second.start());
        QVERIFY(second.baseUrl().isEmpty());
    }

    void thousandsOfProjectsArePagedOverOneConnection() {
        const Scene scene({.accounts = 1, .projects = 2000});
        QNetworkAccessManager network;
        const QByteArray token = "Bearer " + scene.sandbox.accounts().first().token.toUtf8();
        int count = 0;
        QString cursor;
        do {
            const QUrl url(scene.sandbox.baseUrl().toString() + u"/v9/projects?limit=100"_s + cursor);
            QNetworkRequest request(url);
            request.setRawHeader("Authorization", token);
            const QByteArray page = fetch(network, request)->readAll();
            count += static_cast<int>(page.count("\"latestDeployments\""));
            const QByteArray tail = page.mid(page.lastIndexOf("\"next\":") + 7);
            const QByteArray next = tail.left(tail.indexOf(','));
            cursor = next == "null" || page.isEmpty() ? QString() : u"&until="_s + QString::fromLatin1(next);
        } while (!cursor.isEmpty());
        QCOMPARE(count, 2000);
    }
};

QTEST_GUILESS_MAIN(SandboxServerTest)
#include "SandboxServerTest.moc"

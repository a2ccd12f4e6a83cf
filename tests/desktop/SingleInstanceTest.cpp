#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QElapsedTimer>
#include <QProcess>
#include <QTest>
#include <array>
#include <csignal>
#include <memory>

namespace tidemark {
namespace {

const QString identifier = QStringLiteral("com.tidemark.Tidemark-Test");

/// A process that claims the identifier; see instance_probe.cpp.
class Probe {
public:
    explicit Probe(const QStringList& variables = {}) {
        m_process.setEnvironment(QProcess::systemEnvironment() + variables);
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(QStringLiteral(INSTANCE_PROBE), QStringList());
    }
    Probe(const Probe&) = delete;
    Probe& operator=(const Probe&) = delete;
    ~Probe() {
        if (m_isStopped) {
            ::kill(pid(), SIGCONT);
        }
        m_process.closeWriteChannel();
        if (!m_process.waitForFinished()) {
            m_process.kill();
            m_process.waitForFinished();
        }
    }

    [[nodiscard]] QString nextLine() {
        while (!m_process.canReadLine() && m_process.waitForReadyRead(20000)) {
        }
        return QString::fromUtf8(m_process.readLine()).trimmed();
    }
    /// The process stays and answers nobody.
    void stop() {
        ::kill(pid(), SIGSTOP);
        m_isStopped = true;
    }

private:
    [[nodiscard]] pid_t pid() const { return static_cast<pid_t>(m_process.processId()); }

    QProcess m_process;
    bool m_isStopped = false;
};

class SingleInstanceTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void cleanup();
    void secondHandsOverAndEnds_data();
    void secondHandsOverAndEnds();
    void nameIsFreeAfterTheFirst();
    void launcherCallsActivate_data();
    void launcherCallsActivate();
    void exactlyOneOfManyWins();
    void hungFirstDoesNotHoldUpTheSecond();
    void withoutABusStandsAlone();
};

void SingleInstanceTest::cleanup() {
    QTRY_VERIFY(!QDBusConnection::sessionBus().interface()->isServiceRegistered(identifier));
}

void SingleInstanceTest::secondHandsOverAndEnds_data() {
    QTest::addColumn<QStringList>("variables");
    QTest::addColumn<QString>("activation");
    QTest::newRow("no token") << QStringList() << "activated";
    QTest::newRow("activation token")
        << QStringList{QStringLiteral("XDG_ACTIVATION_TOKEN=wayland-1")} << "activated wayland-1";
    QTest::newRow("start-up id") << QStringList{QStringLiteral("DESKTOP_STARTUP_ID=x11_TIME7")}
                                 << "activated x11_TIME7";
    QTest::newRow("both") << QStringList{QStringLiteral("XDG_ACTIVATION_TOKEN=wayland-1"),
                                         QStringLiteral("DESKTOP_STARTUP_ID=x11_TIME7")}
                          << "activated wayland-1";
}

void SingleInstanceTest::secondHandsOverAndEnds() {
    QFETCH(QStringList, variables);
    Probe first;
    QCOMPARE(first.nextLine(), QStringLiteral("first"));
    Probe second(variables);
    QCOMPARE(second.nextLine(), QStringLiteral("second"));
    QTEST(first.nextLine(), "activation");
}

void SingleInstanceTest::nameIsFreeAfterTheFirst() {
    {
        Probe first;
        QCOMPARE(first.nextLine(), QStringLiteral("first"));
    }
    Probe next;
    QCOMPARE(next.nextLine(), QStringLiteral("first"));
}

void SingleInstanceTest::launcherCallsActivate_data() {
    QTest::addColumn<QString>("method");
    QTest::addColumn<QVariantList>("arguments");
    QTest::newRow("Activate") << "Activate" << QVariantList();
    QTest::newRow("Open") << "Open" << QVariantList{QStringList{QStringLiteral("file:///tmp")}};
    QTest::newRow("ActivateAction") << "ActivateAction"
                                    << QVariantList{QStringLiteral("show"), QVariantList()};
}

void SingleInstanceTest::launcherCallsActivate() {
    QFETCH(QString, method);
    QFETCH(QVariantList, arguments);
    Probe first;
    QCOMPARE(first.nextLine(), QStringLiteral("first"));
    QDBusMessage call =
        QDBusMessage::createMethodCall(identifier, QStringLiteral("/com/tidemark/Tidemark_Test"),
                                       QStringLiteral("org.freedesktop.Application"), method);
    arguments.append(QVariantMap{{QStringLiteral("desktop-startup-id"), QStringLiteral("launcher")}});
    call.setArguments(arguments);
    QCOMPARE(QDBusConnection::sessionBus().call(call).type(), QDBusMessage::ReplyMessage);
    QCOMPARE(first.nextLine(), QStringLiteral("activated launcher"));
}

void SingleInstanceTest::exactlyOneOfManyWins() {
    for (int round = 0; round < 10; ++round) {
        std::array<Probe, 3> probes;
        QStringList roles;
        for (Probe& probe : probes) {
            roles.append(probe.nextLine());
        }
        const qsizetype winner = roles.indexOf(QStringLiteral("first"));
        roles.sort();
        QCOMPARE(roles,
                 (QStringList{QStringLiteral("first"), QStringLiteral("second"), QStringLiteral("second")}));
        QCOMPARE(probes.at(winner).nextLine(), QStringLiteral("activated"));
        QCOMPARE(probes.at(winner).nextLine(), QStringLiteral("activated"));
    }
}

void SingleInstanceTest::hungFirstDoesNotHoldUpTheSecond() {
    Probe first;
    QCOMPARE(first.nextLine(), QStringLiteral("first"));
    first.stop();
    QElapsedTimer timer;
    timer.start();
    Probe second;
    QCOMPARE(second.nextLine(), QStringLiteral("second"));
    QVERIFY(timer.elapsed() < 6000);
}

void SingleInstanceTest::withoutABusStandsAlone() {
    Probe probe({QStringLiteral("DBUS_SESSION_BUS_ADDRESS=unix:path=/nonexistent/bus")});
    QCOMPARE(probe.nextLine(), QStringLiteral("standalone"));
}

}  // namespace
}  // namespace tidemark

QTEST_GUILESS_MAIN(tidemark::SingleInstanceTest)
#include "SingleInstanceTest.moc"

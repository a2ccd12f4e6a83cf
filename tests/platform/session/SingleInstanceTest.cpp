#include <array>
#include <csignal>
#include <memory>

#include "tests/fakes/DesktopSession.h"

using namespace Qt::StringLiterals;

namespace {

const QString identifier = u"com.tidemark.Tidemark-Test"_s;

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
        if (m_isStopped)
            ::kill(pid(), SIGCONT);
        m_process.closeWriteChannel();
        if (!m_process.waitForFinished(hangLimit)) {
            m_process.kill();
            m_process.waitForFinished(hangLimit);
        }
    }

    [[nodiscard]] QString nextLine() {
        while (!m_process.canReadLine() && m_process.waitForReadyRead(hangLimit)) {
        }
        return QString::fromUtf8(m_process.readLine()).trimmed();
    }
    /// Suspends the process, so that it does not answer.
    void stop() {
        ::kill(pid(), SIGSTOP);
        m_isStopped = true;
    }

private:
    [[nodiscard]] pid_t pid() const { return static_cast<pid_t>(m_process.processId()); }

    QProcess m_process;
    bool m_isStopped = false;
};

}  // namespace

class SingleInstanceTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { QTRY_VERIFY(!tidemark::desktopsession::isOnTheBus(identifier)); }

    void secondHandsOverAndEnds() {
        Probe first;
        QCOMPARE(first.nextLine(), u"first"_s);
        const auto activationBy = [&first](const QStringList& variables) {
            Probe second(variables);
            return second.nextLine() == u"second" ? first.nextLine() : u"not second"_s;
        };
        const QString wayland = u"XDG_ACTIVATION_TOKEN=wayland-1"_s;
        const QString x11 = u"DESKTOP_STARTUP_ID=x11_TIME7"_s;
        QCOMPARE(activationBy({}), u"activated"_s);
        QCOMPARE(activationBy({wayland}), u"activated wayland-1"_s);
        QCOMPARE(activationBy({x11}), u"activated x11_TIME7"_s);
        QCOMPARE(activationBy({wayland, x11}), u"activated wayland-1"_s);
    }

    void launcherCallsActivate() {
        Probe first;
        QCOMPARE(first.nextLine(), u"first"_s);
        const QVariantMap token{{u"desktop-startup-id"_s, u"launcher"_s}};
        const auto call = [](const QString& method, const QVariantList& arguments) {
            QDBusMessage message = QDBusMessage::createMethodCall(
                identifier, u"/com/tidemark/Tidemark_Test"_s, u"org.freedesktop.Application"_s, method);
            message.setArguments(arguments);
            return QDBusConnection::sessionBus().call(message).type();
        };
        QCOMPARE(call(u"Activate"_s, {token}), QDBusMessage::ReplyMessage);
        QCOMPARE(first.nextLine(), u"activated launcher"_s);
        QCOMPARE(call(u"Open"_s, {QStringList{u"file:///tmp"_s}, token}), QDBusMessage::ReplyMessage);
        QCOMPARE(first.nextLine(), u"activated launcher"_s);
        QCOMPARE(call(u"ActivateAction"_s, {u"show"_s, QVariantList(), token}), QDBusMessage::ReplyMessage);
        QCOMPARE(first.nextLine(), u"activated launcher"_s);
    }

    void exactlyOneOfManyWins() {
        for (int round = 0; round < 10; ++round) {
            std::array<Probe, 3> probes;
            QStringList roles;
            for (Probe& probe : probes)
                roles.append(probe.nextLine());
            const qsizetype winner = roles.indexOf(u"first"_s);
            roles.sort();
            QCOMPARE(roles, (QStringList{u"first"_s, u"second"_s, u"second"_s}));
            QCOMPARE(probes.at(winner).nextLine(), u"activated"_s);
            QCOMPARE(probes.at(winner).nextLine(), u"activated"_s);
        }
    }

    void hungFirstDoesNotHoldUpTheSecond() {
        Probe first;
        QCOMPARE(first.nextLine(), u"first"_s);
        first.stop();
        Probe second;
        QCOMPARE(second.nextLine(), u"second"_s);
    }

    void withoutABusStandsAlone() {
        Probe probe({u"DBUS_SESSION_BUS_ADDRESS=unix:path=/nonexistent/bus"_s});
        QCOMPARE(probe.nextLine(), u"standalone"_s);
    }
};

TIDEMARK_TEST(SingleInstanceTest)
#include "SingleInstanceTest.moc"

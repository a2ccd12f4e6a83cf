#include <QTcpServer>
#include <QTemporaryDir>
#include <csignal>

#include "config/ConfigStore.h"
#include "platform/keyring/SecretServiceKeychain.h"
#include "tests/TestProgram.h"
#include "tests/fakes/DesktopSession.h"
#include "tests/fakes/EmptyBus.h"
#include "tests/platform/keyring/RealKeyring.h"
#include "tests/platform/session/FakeNotificationService.h"

using namespace tidemark;
using namespace tidemark::desktopsession;
using tidemark::sandbox::Sandbox;

/// The program starts before what it needs is there, and may be told to leave at any moment.
class StartAndLeaveTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        startSurroundings(m_sandbox, m_windowManager);
        m_notifications.appear();
        m_prompter.appear();
        realkeyring::start(m_keyring);
    }

    void cleanupTestCase() {
        quit(m_keyring);
        quit(m_windowManager);
    }

    void init() {
        m_folder = std::make_unique<QTemporaryDir>();
        m_prompter.onPrompt = {};
        m_prompter.count = 0;
        m_sandbox->faults().clear();
        m_sandbox->log().clear();
    }

    void cleanup() {
        quit(m_program);
        QCOMPARE(m_program.exitStatus(), QProcess::NormalExit);
        QCOMPARE(m_program.exitCode(), 0);
        if (m_prompter.onPrompt) {
            // It still waits for the answer, and would ask nothing else meanwhile.
            m_keyring.kill();
            m_keyring.waitForFinished(hangLimit);
            realkeyring::start(m_keyring);
        } else if (realkeyring::isLocked()) {
            realkeyring::unlock();
        }
        QVERIFY(!realkeyring::isLocked());
    }

    void tokensAreReadAfterALateUnlock() {
        store();
        realkeyring::lock();
        start();
        QTRY_VERIFY(isPreferencesShown());
        QCOMPARE(m_prompter.count, 1);
        QCOMPARE(projectRequests(), 0);
        realkeyring::unlock();
        QTRY_VERIFY(projectRequests() > 0);
        QCOMPARE(m_prompter.count, 1);
    }

    void aKeyringMayComeLast() {
        store();
        // Nobody else may start it for the program.
        quit(m_keyring);
        const QString name = u"org.freedesktop.secrets"_s;
        QTRY_VERIFY(!isOnTheBus(name));
        auto bus = QDBusConnection::sessionBus();
        QVERIFY(bus.registerService(name));
        start();
        QTRY_VERIFY(isPreferencesShown());
        QCOMPARE(projectRequests(), 0);
        bus.unregisterService(name);
        realkeyring::start(m_keyring);
        QTRY_VERIFY(projectRequests() > 0);
    }

    void withoutATrayItSaysWhatToDo() {
        QTemporaryDir otherFolder;
        EmptyBus bus;
        QProcess onEmptyBus;
        start({u"XDG_CURRENT_DESKTOP=XFCE"_s});
        onEmptyBus.setEnvironment(
            QProcess::systemEnvironment() +
            QStringList{u"XDG_CURRENT_DESKTOP=sway"_s, u"DBUS_SESSION_BUS_ADDRESS="_s + bus.address()});
        onEmptyBus.start(QStringLiteral(KEYRING_PROGRAM),
                         {m_sandbox->baseUrl().toString(), otherFolder.path()});
        QTRY_COMPARE(m_notifications.notifications.size(), 1);
        const QVariantList shown = m_notifications.notifications.constFirst();
        QVERIFY(shown.at(4).toString().contains("Status Tray Plugin"_L1));
        m_notifications.emitSignal(u"ActionInvoked"_s, {m_notifications.nextId - 1, u"default"_s});
        QTRY_VERIFY(!popover().isEmpty());

        QByteArray printed;
        const auto isPrinted = [&] {
            printed += onEmptyBus.readAllStandardError();
            return printed.contains("waybar");
        };
        QTRY_VERIFY(isPrinted());
        // The bus is the session.
        bus.end();
        QVERIFY(onEmptyBus.waitForFinished(hangLimit));
        QCOMPARE(onEmptyBus.exitStatus(), QProcess::NormalExit);
        QCOMPARE(onEmptyBus.exitCode(), 0);
    }

    void itLeavesWhileItWaitsForTheDisplay() {
        QTcpServer display;
        int number = 100;
        while (!display.listen(QHostAddress::LocalHost, static_cast<quint16>(6000 + number)))
            ++number;
        start({u"DISPLAY=127.0.0.1:%1"_s.arg(number)});
        QVERIFY(display.waitForNewConnection(hangLimit));
        m_program.terminate();
        QVERIFY(m_program.waitForFinished(hangLimit));
    }

    void itLeavesInTheMiddleOfAnything_data() {
        QTest::addColumn<QString>("occasion");
        for (const char* occasion :
             {"start", "project list", "question at the start", "question at a save", "silence at a save"})
            QTest::newRow(occasion) << QString::fromLatin1(occasion);
    }

    void itLeavesInTheMiddleOfAnything() {
        QFETCH(const QString, occasion);
        if (occasion.startsWith("question"_L1))
            m_prompter.onPrompt = [] {};
        if (occasion.endsWith("at a save"_L1)) {
            start();
            QTRY_COMPARE(activeTitle(), u"Tidemark Preferences"_s);
            if (occasion == "silence at a save"_L1)
                signal(m_keyring, SIGSTOP);
            else
                realkeyring::lock();
            output(u"xdotool"_s, {u"type"_s, m_sandbox->accounts().first().token});
            output(u"xdotool"_s, {u"key"_s, u"Return"_s});
        } else {
            store();
            m_sandbox->faults().add({.kind = tidemark::sandbox::FaultKind::stall, .pathPrefix = u"/v9"_s});
            if (occasion == "question at the start"_L1)
                realkeyring::lock();
            start();
        }
        if (occasion == "project list"_L1)
            QTRY_VERIFY(projectRequests() > 0);
        else if (occasion == "start"_L1)
            QTRY_VERIFY(isOnTheBus(u"com.tidemark.KeyringProgram"_s));
        else if (occasion == "silence at a save"_L1)
            QTRY_VERIFY(activeTitle() != u"Tidemark Preferences"_s);
        else
            QTRY_COMPARE(m_prompter.count, 1);
        // Logging out and closing a terminal can send several at once.
        for (const int number : {SIGINT, SIGHUP, SIGTERM})
            signal(m_program, number);
        QVERIFY(m_program.waitForFinished(hangLimit));
        signal(m_keyring, SIGCONT);
    }

private:
    /// Runs the program on `m_folder`.
    void start(const QStringList& environment = {}) {
        m_program.setEnvironment(QProcess::systemEnvironment() + environment);
        m_program.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_program.start(QStringLiteral(KEYRING_PROGRAM), {m_sandbox->baseUrl().toString(), m_folder->path()});
        QVERIFY(m_program.waitForStarted(hangLimit));
    }

    static void signal(const QProcess& process, int number) {
        ::kill(static_cast<pid_t>(process.processId()), number);
    }

    /// Stores a usable configuration, the token in the keyring.
    void store() {
        const auto account = m_sandbox->accounts().first();
        SecretServiceKeychain keychain;
        QVERIFY(ConfigStore(m_folder->filePath(u"config.json"_s), keychain)
                    .save({.accounts = {{.id = u"A"_s,
                                         .name = account.name,
                                         .teamId = account.teamId,
                                         .apiToken = account.token}}}));
    }

    [[nodiscard]] qsizetype projectRequests() const { return m_sandbox->log().entries(u"/v9"_s).size(); }

    std::unique_ptr<Sandbox> m_sandbox;
    QProcess m_windowManager;
    QProcess m_keyring;
    QProcess m_program;
    realkeyring::Prompter m_prompter;
    FakeNotificationService m_notifications;
    std::unique_ptr<QTemporaryDir> m_folder;
};

TIDEMARK_TEST(StartAndLeaveTest)
#include "StartAndLeaveTest.moc"

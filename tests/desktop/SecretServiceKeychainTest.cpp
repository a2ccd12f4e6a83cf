#include "desktop/SecretServiceKeychain.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVirtualObject>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>
#include <atomic>
#include <cstdio>
#include <functional>

#include "config/KeychainHelper.h"

using namespace tidemark;
using namespace Qt::StringLiterals;

namespace {

const QString account = u"apiToken-1"_s;

KeychainQuery query(std::optional<bool> synchronizable) {
    return {.service = u"com.tidemark"_s, .account = account, .synchronizable = synchronizable};
}

QVariant callService(const QString& method, const QVariant& argument) {
    auto message = QDBusMessage::createMethodCall(u"org.freedesktop.secrets"_s, u"/org/freedesktop/secrets"_s,
                                                  u"org.freedesktop.Secret.Service"_s, method);
    message.setArguments({argument});
    return QDBusConnection::sessionBus().call(message).arguments().value(0);
}

QDBusObjectPath defaultCollection() {
    return callService(u"ReadAlias"_s, u"default"_s).value<QDBusObjectPath>();
}

void lockKeyring() {
    const QVariant locked = callService(u"Lock"_s, QVariant::fromValue(QList{defaultCollection()}));
    QCOMPARE(qdbus_cast<QList<QDBusObjectPath>>(locked).size(), 1);
}

/// Runs `body` on a worker thread, and this thread's event loop meanwhile.
template <typename Body>
auto onWorker(Body body) {
    decltype(body()) result{};
    const std::unique_ptr<QThread> thread(QThread::create([&] { result = body(); }));
    thread->start();
    while (!thread->wait(QDeadlineTimer(0)))
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    return result;
}

/// Stands in for the program that asks the user for the keyring's password. The user declines.
class Prompter final : public QDBusVirtualObject {
public:
    std::atomic<int> count = 0;
    /// What happens in place of an answer.
    std::function<void()> onPrompt;

    [[nodiscard]] QString introspect(const QString& /*path*/) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        const bool isPrompt = message.member() == "BeginPrompting"_L1;
        if (isPrompt)
            ++count;
        if (!onPrompt)
            connection.send(message.createErrorReply(QDBusError::Failed, u"No"_s));
        else if (isPrompt)
            onPrompt();
        return true;
    }
};

}  // namespace

class SecretServiceKeychainTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        m_daemon.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_daemon.start(u"gnome-keyring-daemon"_s,
                       {u"--unlock"_s, u"--components=secrets"_s, u"--foreground"_s});
        QVERIFY(m_daemon.waitForStarted());
        m_daemon.write("\n");
        m_daemon.closeWriteChannel();
        auto bus = QDBusConnection::sessionBus();
        QTRY_VERIFY(bus.interface()->isServiceRegistered(u"org.freedesktop.secrets"_s));
        QTRY_VERIFY(defaultCollection().path().size() > 1);
        QVERIFY(bus.registerVirtualObject(u"/org/gnome/keyring/Prompter"_s, &m_prompter));
        QVERIFY(bus.registerService(u"org.gnome.keyring.SystemPrompter"_s));
    }

    void cleanupTestCase() {
        m_daemon.terminate();
        QVERIFY(m_daemon.waitForFinished());
    }

    void init() {
        SecretServiceKeychain keychain;
        keychain.deleteMatching(query(std::nullopt));
        QCOMPARE(keychain.copyMatching(query(std::nullopt)), std::nullopt);
    }

    void itemsMatchByAllAttributesNamed() {
        SecretServiceKeychain keychain;
        QVERIFY(keychain.add(query(true), "replaced"));
        QVERIFY(keychain.add(query(true), "synchronizable"));
        QCOMPARE(keychain.copyMatching(query(true)), "synchronizable");
        QCOMPARE(keychain.copyMatching(query(false)), std::nullopt);
        QCOMPARE(keychain.copyMatching(query(std::nullopt)), "synchronizable");
        QVERIFY(keychain.add(query(false), "local"));
        QCOMPARE(keychain.copyMatching(query(true)), "synchronizable");
        QCOMPARE(keychain.copyMatching(query(false)), "local");
        QCOMPARE(keychain.copyMatching({u"com.example"_s, account, {}}), std::nullopt);
    }

    void dataSurvives() {
        for (const QByteArray& data :
             {QByteArray(""), QByteArray("a\0\xff\xfe\n", 5), QByteArray(100'000, 'x')}) {
            QVERIFY(SecretServiceKeychain().add(query(true), data));
            QCOMPARE(SecretServiceKeychain().copyMatching(query(true)), std::optional(data));
        }
    }

    void deletingLeavesOthersAlone() {
        SecretServiceKeychain keychain;
        const KeychainQuery other{u"com.tidemark"_s, u"cloudflareToken"_s, true};
        QVERIFY(keychain.add(other, "other"));
        QVERIFY(keychain.add(query(true), "a"));
        QVERIFY(keychain.add(query(false), "b"));
        keychain.deleteMatching(query(true));
        QCOMPARE(keychain.copyMatching(query(std::nullopt)), "b");
        QCOMPARE(keychain.copyMatching(other), "other");
        keychain.deleteMatching(other);
    }

    void itemOfAnOlderVersionIsMoved() {
        SecretServiceKeychain keychain;
        QVERIFY(keychain.add(query(std::nullopt), "old"));
        QCOMPARE(keychain.copyMatching(query(true)), std::nullopt);
        QCOMPARE(keychain.copyMatching(query(false)), std::nullopt);
        QCOMPARE(KeychainHelper::loadToken(keychain, account), u"old"_s);
        QCOMPARE(keychain.copyMatching(query(true)), "old");
    }

    /// In another process, since this one has its connection to the bus already.
    void withoutAKeyringNothingIsFound() {
        QTemporaryDir folder;
        QFile settings(folder.filePath(u"bus.conf"_s));
        QVERIFY(settings.open(QIODevice::WriteOnly));
        settings.write("<busconfig><type>session</type><listen>unix:dir=" + folder.path().toUtf8() +
                       "</listen><policy context=\"default\"><allow send_destination=\"*\"/>"
                       "<allow receive_type=\"method_return\"/><allow receive_type=\"error\"/>"
                       "</policy></busconfig>");
        settings.close();
        QProcess emptyBus;
        emptyBus.start(u"dbus-daemon"_s,
                       {u"--nofork"_s, u"--print-address"_s, u"--config-file="_s + settings.fileName()});
        QTRY_VERIFY(emptyBus.canReadLine());
        for (const QByteArray& address :
             {emptyBus.readLine().trimmed(), QByteArray("unix:path=/nonexistent/bus")}) {
            QProcess child;
            child.setEnvironment(QProcess::systemEnvironment() +
                                 QStringList{u"DBUS_SESSION_BUS_ADDRESS="_s + QString::fromUtf8(address)});
            child.start(QCoreApplication::applicationFilePath(), {u"--look-up"_s});
            QVERIFY(child.waitForFinished(5000));
            QCOMPARE(child.readAllStandardError(), "");
            QCOMPARE(child.readAllStandardOutput(), "absent\n");
            QCOMPARE(child.exitCode(), 0);
        }
        emptyBus.terminate();
        QVERIFY(emptyBus.waitForFinished());
    }

    /// Nobody can open what was locked, so this comes last.
    void lockedKeyringAsksOncePerRowUntilCancelled() {
        QVERIFY(SecretServiceKeychain().add(query(true), "abc"));
        lockKeyring();
        SecretServiceKeychain keychain;
        const auto lookUp = [&keychain] { return keychain.copyMatching(query(true)); };
        const auto add = [&keychain] { return keychain.add(query(true), "def"); };
        for (const int session : {1, 2}) {
            keychain.beginSession();
            QCOMPARE(onWorker(lookUp), std::nullopt);
            QVERIFY(!onWorker(add));
            QCOMPARE(m_prompter.count, session);
        }

        QElapsedTimer watch;
        m_prompter.onPrompt = [&] {
            watch.start();
            keychain.cancel();
        };
        keychain.beginSession();
        QCOMPARE(onWorker(lookUp), std::nullopt);
        QCOMPARE(m_prompter.count, 3);
        QVERIFY(watch.elapsed() < 1000);
        m_prompter.onPrompt = {};
        QCOMPARE(lookUp(), std::nullopt);
        QVERIFY(!add());
    }

private:
    QProcess m_daemon;
    Prompter m_prompter;
};

int main(int argc, char** argv) {
    if (argc == 2 && qstrcmp(argv[1], "--look-up") == 0) {
        SecretServiceKeychain keychain;
        keychain.deleteMatching(query(std::nullopt));
        const bool isThere = keychain.add(query(true), "x") || keychain.copyMatching(query(true));
        std::puts(isThere ? "found" : "absent");
        return 0;
    }
    QCoreApplication app(argc, argv);
    SecretServiceKeychainTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "SecretServiceKeychainTest.moc"

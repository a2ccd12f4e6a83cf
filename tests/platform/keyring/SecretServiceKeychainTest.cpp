#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QDir>
#include <QProcess>
#include <QThread>
#include <atomic>
#include <cstdio>

#include "config/KeychainHelper.h"
#include "platform/keyring/SecretServiceKeychain.h"
#include "tests/TestProgram.h"
#include "tests/fakes/EmptyBus.h"
#include "tests/platform/keyring/RealKeyring.h"

using namespace tidemark;
using namespace Qt::StringLiterals;

namespace {

const QString account = u"apiToken-1"_s;

KeychainQuery query(std::optional<bool> synchronizable) {
    return {.service = u"com.tidemark"_s, .account = account, .synchronizable = synchronizable};
}

/// Runs `body` on a worker thread while this thread runs its event loop.
template <typename Body>
auto onWorker(Body body) {
    decltype(body()) result{};
    const std::unique_ptr<QThread> thread(QThread::create([&] { result = body(); }));
    thread->start();
    while (!thread->wait(QDeadlineTimer(0)))
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    return result;
}

qsizetype openDescriptors() {
    return QDir(u"/proc/self/fd"_s).entryList(QDir::AllEntries | QDir::System).size();
}

/// In the keyring's place, and lets the time of every call run out, at once.
class SilentService final : public QDBusVirtualObject {
public:
    std::atomic<int> calls = 0;

    SilentService() {
        m_bus.registerVirtualObject(u"/"_s, this, QDBusConnection::SubPath);
        m_bus.registerService(u"org.freedesktop.secrets"_s);
    }
    ~SilentService() override {
        m_bus.unregisterService(u"org.freedesktop.secrets"_s);
        QDBusConnection::disconnectFromBus(m_bus.name());
    }

    [[nodiscard]] QString introspect(const QString& /*path*/) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        ++calls;
        return connection.send(message.createErrorReply(QDBusError::NoReply, u"No answer"_s));
    }

private:
    QDBusConnection m_bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"silent"_s);
};

bool isMissing(const tl::expected<QByteArray, KeychainError>& item) {
    return !item && item.error() == KeychainError::notFound;
}

bool isUnreadable(const tl::expected<QByteArray, KeychainError>& item) {
    return !item && item.error() == KeychainError::unreadable;
}

}  // namespace

class SecretServiceKeychainTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        realkeyring::start(m_daemon);
        m_prompter.appear();
    }

    void cleanupTestCase() {
        m_daemon.terminate();
        QVERIFY(m_daemon.waitForFinished(hangLimit));
    }

    void init() {
        SecretServiceKeychain keychain;
        keychain.deleteMatching(query(std::nullopt));
        QVERIFY(isMissing(keychain.copyMatching(query(std::nullopt))));
    }

    void itemsMatchByAllAttributesNamed() {
        SecretServiceKeychain keychain;
        QVERIFY(keychain.add(query(true), "replaced"));
        QVERIFY(keychain.add(query(true), "synchronizable"));
        QCOMPARE(keychain.copyMatching(query(true)), "synchronizable");
        QVERIFY(isMissing(keychain.copyMatching(query(false))));
        QCOMPARE(keychain.copyMatching(query(std::nullopt)), "synchronizable");
        QVERIFY(keychain.add(query(false), "local"));
        QCOMPARE(keychain.copyMatching(query(true)), "synchronizable");
        QCOMPARE(keychain.copyMatching(query(false)), "local");
        QVERIFY(isMissing(keychain.copyMatching({u"com.example"_s, account, {}})));
    }

    void dataSurvives() {
        for (const QByteArray& data :
             {QByteArray(""), QByteArray("a\0\xff\xfe\n", 5), QByteArray(100'000, 'x')}) {
            QVERIFY(SecretServiceKeychain().add(query(true), data));
            QCOMPARE(SecretServiceKeychain().copyMatching(query(true)), data);
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
        QVERIFY(isMissing(keychain.copyMatching(query(true))));
        QVERIFY(isMissing(keychain.copyMatching(query(false))));
        QCOMPARE(KeychainHelper::loadToken(keychain, account), u"old"_s);
        QCOMPARE(keychain.copyMatching(query(true)), "old");
    }

    void aKeyringThatRestartsIsNoticedAndAskedAnew() {
        SecretServiceKeychain keychain;
        keychain.beginSession(Keychain::Prompting::allowed);
        const KeychainQuery other{u"com.tidemark"_s, u"other"_s, true};
        QVERIFY(keychain.add(query(true), "abc"));
        QVERIFY(isMissing(keychain.copyMatching(other)));
        realkeyring::kill(m_daemon);
        QVERIFY(isUnreadable(keychain.copyMatching(other)));
        realkeyring::start(m_daemon);
        // The new one may have been asked too early to know.
        QVERIFY(isUnreadable(keychain.copyMatching(other)));
        keychain.beginSession(Keychain::Prompting::allowed);
        QCOMPARE(keychain.copyMatching(query(true)), "abc");
        QVERIFY(isMissing(keychain.copyMatching(other)));
        QVERIFY(keychain.add(query(true), "def"));
        QCOMPARE(m_prompter.count, 0);
    }

    void aKeyringThatDoesNotAnswerIsAskedOncePerRow() {
        realkeyring::kill(m_daemon);
        SecretServiceKeychain keychain;
        {
            SilentService silent;
            for (int row = 0; row < 2; ++row) {
                const KeychainSession session(keychain, Keychain::Prompting::allowed);
                const int before = silent.calls;
                QVERIFY(isUnreadable(onWorker([&] { return keychain.copyMatching(query(true)); })));
                const int calls = silent.calls;
                QVERIFY(calls > before);
                QVERIFY(!onWorker([&] { return keychain.add(query(true), "abc"); }));
                QVERIFY(isUnreadable(onWorker([&] { return keychain.copyMatching(query(false)); })));
                QCOMPARE(silent.calls, calls);
            }
        }
        realkeyring::start(m_daemon);
        QVERIFY(keychain.add(query(true), "abc"));
    }

    void restartedKeyringsLeaveNothingOpen() {
        SecretServiceKeychain keychain;
        qsizetype before = 0;
        for (int round = 0; round < 5; ++round) {
            if (round == 1)
                before = openDescriptors();
            QVERIFY(onWorker([&keychain] {
                const KeychainSession session(keychain, Keychain::Prompting::allowed);
                return keychain.add(query(true), "abc");
            }));
            realkeyring::kill(m_daemon);
            realkeyring::start(m_daemon);
        }
        // Fewer than one per round. Threads that are about to end have open descriptors, too.
        QTRY_VERIFY(openDescriptors() < before + 2);
    }

    /// Runs in another process, because this one is connected to the bus already.
    void withoutAKeyringNothingIsFound() {
        const EmptyBus emptyBus;
        for (const QString& address : {emptyBus.address(), u"unix:path=/nonexistent/bus"_s}) {
            QProcess child;
            child.setEnvironment(QProcess::systemEnvironment() +
                                 QStringList{u"DBUS_SESSION_BUS_ADDRESS="_s + address});
            child.start(QCoreApplication::applicationFilePath(), {u"SecretServiceLookUp"_s});
            QVERIFY(child.waitForFinished(hangLimit));
            QCOMPARE(child.readAllStandardError(), "");
            QCOMPARE(child.readAllStandardOutput(), "absent\n");
            QCOMPARE(child.exitCode(), 0);
        }
    }

    void lockedKeyringAsksOncePerRowUntilCancelled() {
        QVERIFY(SecretServiceKeychain().add(query(true), "abc"));
        realkeyring::lock();
        SecretServiceKeychain keychain;
        const auto lookUp = [&keychain] { return keychain.copyMatching(query(true)); };
        const auto add = [&keychain] { return keychain.add(query(true), "def"); };
        for (const int session : {1, 2}) {
            keychain.beginSession(Keychain::Prompting::allowed);
            QVERIFY(isUnreadable(onWorker(lookUp)));
            QVERIFY(!onWorker(add));
            QCOMPARE(m_prompter.count, session);
        }
        keychain.beginSession(Keychain::Prompting::unlessDeclined);
        QVERIFY(isUnreadable(onWorker(lookUp)));
        QCOMPARE(m_prompter.count, 2);

        // Prompts are shown until one is declined.
        SecretServiceKeychain other;
        other.beginSession(Keychain::Prompting::unlessDeclined);
        QVERIFY(isUnreadable(onWorker([&other] { return other.copyMatching(query(true)); })));
        QCOMPARE(m_prompter.count, 3);

        m_prompter.onPrompt = [&] { keychain.cancel(); };
        keychain.beginSession(Keychain::Prompting::allowed);
        QVERIFY(isUnreadable(onWorker(lookUp)));
        QCOMPARE(m_prompter.count, 4);
        m_prompter.onPrompt = {};
        QVERIFY(isUnreadable(lookUp()));
        QVERIFY(!add());
    }

private:
    QProcess m_daemon;
    realkeyring::Prompter m_prompter;
};

TIDEMARK_TEST(SecretServiceKeychainTest)
TIDEMARK_TEST_MAIN(SecretServiceLookUp, [](int, char**) {
    SecretServiceKeychain keychain;
    keychain.deleteMatching(query(std::nullopt));
    const bool isThere = keychain.add(query(true), "x") || keychain.copyMatching(query(true));
    std::puts(isThere ? "found" : "absent");
    return 0;
})
#include "SecretServiceKeychainTest.moc"

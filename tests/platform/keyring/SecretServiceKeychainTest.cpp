#include <QCoreApplication>
#include <QDir>
#include <QProcess>
#include <QThread>
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

    void aKeyringThatRestartsIsNoticedAndAskedAnew() {
        SecretServiceKeychain keychain;
        keychain.beginSession(Keychain::Prompting::allowed);
        QVERIFY(keychain.add(query(true), "abc"));
        QVERIFY(!keychain.wasLost());
        realkeyring::kill(m_daemon);
        QVERIFY(keychain.wasLost());
        realkeyring::start(m_daemon);
        QVERIFY(keychain.wasLost());
        keychain.beginSession(Keychain::Prompting::allowed);
        QCOMPARE(keychain.copyMatching(query(true)), "abc");
        QVERIFY(!keychain.wasLost());
        QVERIFY(keychain.add(query(true), "def"));
        QCOMPARE(m_prompter.count, 0);
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
            QCOMPARE(onWorker(lookUp), std::nullopt);
            QVERIFY(!onWorker(add));
            QCOMPARE(m_prompter.count, session);
        }
        keychain.beginSession(Keychain::Prompting::unlessDeclined);
        QCOMPARE(onWorker(lookUp), std::nullopt);
        QCOMPARE(m_prompter.count, 2);

        // Prompts are shown until one is declined.
        SecretServiceKeychain other;
        other.beginSession(Keychain::Prompting::unlessDeclined);
        QCOMPARE(onWorker([&other] { return other.copyMatching(query(true)); }), std::nullopt);
        QCOMPARE(m_prompter.count, 3);

        m_prompter.onPrompt = [&] { keychain.cancel(); };
        keychain.beginSession(Keychain::Prompting::allowed);
        QCOMPARE(onWorker(lookUp), std::nullopt);
        QCOMPARE(m_prompter.count, 4);
        m_prompter.onPrompt = {};
        QCOMPARE(lookUp(), std::nullopt);
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

#include "desktop/SecretServiceKeychain.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusMetaType>
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

#include "config/KeychainHelper.h"

namespace tidemark {

namespace {

const QString account = QStringLiteral("apiToken-1");

KeychainQuery query(std::optional<bool> synchronizable) {
    return {.service = QStringLiteral("com.tidemark"), .account = account, .synchronizable = synchronizable};
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

/// Stands in for the program that asks the user for the keyring's password.
class Prompter final : public QDBusVirtualObject {
public:
    enum class Mood : quint8 { refuses, neverAnswers };

    Mood mood = Mood::refuses;
    std::atomic<int> count = 0;

    [[nodiscard]] QString introspect(const QString& /*path*/) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        if (message.member() == QLatin1String("BeginPrompting"))
            ++count;
        if (mood == Mood::refuses)
            connection.send(message.createErrorReply(QDBusError::Failed, QStringLiteral("No")));
        return true;
    }
};

}  // namespace

class SecretServiceKeychainTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void init();

    void itemsMatchByAllAttributesNamed();
    void dataSurvives_data();
    void dataSurvives();
    void addingTwiceLeavesOneItem();
    void deletingLeavesOthersAlone();
    void itemOfAnOlderVersionIsMoved();
    void withoutAKeyringNothingIsFound_data();
    void withoutAKeyringNothingIsFound();
    void whileLocked();

private:
    void lockedKeyringAsksOncePerRow();
    void cancelEndsAPrompt();
    static QVariant callService(const QString& method, const QVariant& argument);
    static QDBusObjectPath defaultCollection();
    void lock();

    QProcess m_daemon;
    Prompter m_prompter;
};

void SecretServiceKeychainTest::initTestCase() {
    m_daemon.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_daemon.start(
        QStringLiteral("gnome-keyring-daemon"),
        {QStringLiteral("--unlock"), QStringLiteral("--components=secrets"), QStringLiteral("--foreground")});
    QVERIFY(m_daemon.waitForStarted());
    m_daemon.write("\n");
    m_daemon.closeWriteChannel();
    auto bus = QDBusConnection::sessionBus();
    const QString service = QStringLiteral("org.freedesktop.secrets");
    QTRY_VERIFY(bus.interface()->isServiceRegistered(service));
    QTRY_VERIFY(defaultCollection().path().size() > 1);

    QVERIFY(bus.registerVirtualObject(QStringLiteral("/org/gnome/keyring/Prompter"), &m_prompter));
    QVERIFY(bus.registerService(QStringLiteral("org.gnome.keyring.SystemPrompter")));
}

void SecretServiceKeychainTest::cleanupTestCase() {
    m_daemon.terminate();
    QVERIFY(m_daemon.waitForFinished());
}

void SecretServiceKeychainTest::init() {
    SecretServiceKeychain keychain;
    keychain.deleteMatching(query(std::nullopt));
    QCOMPARE(keychain.copyMatching(query(std::nullopt)), std::nullopt);
}

/// Nobody can open what was locked, so these come last.
void SecretServiceKeychainTest::whileLocked() {
    lockedKeyringAsksOncePerRow();
    cancelEndsAPrompt();
}

QVariant SecretServiceKeychainTest::callService(const QString& method, const QVariant& argument) {
    auto message = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.secrets"),
                                                  QStringLiteral("/org/freedesktop/secrets"),
                                                  QStringLiteral("org.freedesktop.Secret.Service"), method);
    message.setArguments({argument});
    return QDBusConnection::sessionBus().call(message).arguments().value(0);
}

QDBusObjectPath SecretServiceKeychainTest::defaultCollection() {
    return callService(QStringLiteral("ReadAlias"), QStringLiteral("default")).value<QDBusObjectPath>();
}

void SecretServiceKeychainTest::lock() {
    const QVariant locked =
        callService(QStringLiteral("Lock"), QVariant::fromValue(QList{defaultCollection()}));
    QCOMPARE(qdbus_cast<QList<QDBusObjectPath>>(locked).size(), 1);
}

void SecretServiceKeychainTest::itemsMatchByAllAttributesNamed() {
    SecretServiceKeychain keychain;
    QVERIFY(keychain.add(query(true), "synchronizable"));
    QCOMPARE(keychain.copyMatching(query(true)), "synchronizable");
    QCOMPARE(keychain.copyMatching(query(false)), std::nullopt);
    QCOMPARE(keychain.copyMatching(query(std::nullopt)), "synchronizable");
    QVERIFY(keychain.add(query(false), "local"));
    QCOMPARE(keychain.copyMatching(query(true)), "synchronizable");
    QCOMPARE(keychain.copyMatching(query(false)), "local");

    KeychainQuery other = query(std::nullopt);
    other.account = QStringLiteral("apiToken");
    QCOMPARE(keychain.copyMatching(other), std::nullopt);
    other = query(std::nullopt);
    other.service = QStringLiteral("com.example");
    QCOMPARE(keychain.copyMatching(other), std::nullopt);
}

void SecretServiceKeychainTest::dataSurvives_data() {
    QTest::addColumn<QByteArray>("data");
    QTest::newRow("empty") << QByteArray("");
    QTest::newRow("binary") << QByteArray("a\0\xff\xfe\n", 5);
    QTest::newRow("large") << QByteArray(100'000, 'x');
}

void SecretServiceKeychainTest::dataSurvives() {
    QFETCH(QByteArray, data);
    QVERIFY(SecretServiceKeychain().add(query(true), data));
    const auto found = SecretServiceKeychain().copyMatching(query(true));
    QVERIFY(found);
    QCOMPARE(*found, data);
}

void SecretServiceKeychainTest::addingTwiceLeavesOneItem() {
    SecretServiceKeychain keychain;
    KeychainHelper::save(keychain, QStringLiteral("abc"), account);
    KeychainHelper::save(keychain, QStringLiteral("def"), account);
    QVERIFY(keychain.add(query(true), "ghi"));
    QMap<QString, QString> attributes{{QStringLiteral("account"), account}};
    qDBusRegisterMetaType<QMap<QString, QString>>();
    const QVariant unlocked = callService(QStringLiteral("SearchItems"), QVariant::fromValue(attributes));
    QCOMPARE(qdbus_cast<QList<QDBusObjectPath>>(unlocked).size(), 1);
    QCOMPARE(KeychainHelper::loadToken(keychain, account), QStringLiteral("ghi"));
}

void SecretServiceKeychainTest::deletingLeavesOthersAlone() {
    SecretServiceKeychain keychain;
    KeychainQuery other = query(true);
    other.account = QStringLiteral("cloudflareToken");
    QVERIFY(keychain.add(other, "other"));
    QVERIFY(keychain.add(query(true), "a"));
    QVERIFY(keychain.add(query(false), "b"));
    keychain.deleteMatching(query(true));
    QCOMPARE(keychain.copyMatching(query(std::nullopt)), "b");
    QVERIFY(keychain.add(query(true), "a"));
    keychain.deleteMatching(query(std::nullopt));
    QCOMPARE(keychain.copyMatching(query(std::nullopt)), std::nullopt);
    QCOMPARE(keychain.copyMatching(other), "other");
    keychain.deleteMatching(other);
}

void SecretServiceKeychainTest::itemOfAnOlderVersionIsMoved() {
    SecretServiceKeychain keychain;
    QVERIFY(keychain.add(query(std::nullopt), "old"));
    QCOMPARE(keychain.copyMatching(query(true)), std::nullopt);
    QCOMPARE(keychain.copyMatching(query(false)), std::nullopt);
    QCOMPARE(KeychainHelper::loadToken(keychain, account), QStringLiteral("old"));
    QCOMPARE(keychain.copyMatching(query(true)), "old");
    keychain.deleteMatching(query(true));
    QCOMPARE(keychain.copyMatching(query(std::nullopt)), std::nullopt);
}

void SecretServiceKeychainTest::lockedKeyringAsksOncePerRow() {
    QVERIFY(SecretServiceKeychain().add(query(true), "abc"));
    lock();
    m_prompter.mood = Prompter::Mood::refuses;
    m_prompter.count = 0;
    SecretServiceKeychain keychain;
    const auto lookUp = [&keychain] { return keychain.copyMatching(query(true)); };
    keychain.beginSession();
    QCOMPARE(onWorker(lookUp), std::nullopt);
    QCOMPARE(m_prompter.count, 1);
    QCOMPARE(onWorker(lookUp), std::nullopt);
    QVERIFY(!onWorker([&keychain] { return keychain.add(query(true), "def"); }));
    QCOMPARE(m_prompter.count, 1);
    keychain.beginSession();
    QVERIFY(!onWorker([&keychain] { return keychain.add(query(true), "def"); }));
    QCOMPARE(onWorker(lookUp), std::nullopt);
    QCOMPARE(m_prompter.count, 2);
}

void SecretServiceKeychainTest::cancelEndsAPrompt() {
    lock();
    m_prompter.mood = Prompter::Mood::neverAnswers;
    m_prompter.count = 0;
    SecretServiceKeychain keychain;
    std::optional<QByteArray> found = "something";
    const std::unique_ptr<QThread> thread(
        QThread::create([&] { found = keychain.copyMatching(query(true)); }));
    thread->start();
    QTRY_COMPARE(m_prompter.count, 1);
    QElapsedTimer watch;
    watch.start();
    keychain.cancel();
    while (!thread->wait(QDeadlineTimer(0)) && watch.elapsed() < 10000)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    QVERIFY(thread->isFinished());
    QVERIFY(watch.elapsed() < 1000);
    QCOMPARE(found, std::nullopt);
    QCOMPARE(keychain.copyMatching(query(true)), std::nullopt);
    QVERIFY(!keychain.add(query(true), "x"));
}

void SecretServiceKeychainTest::withoutAKeyringNothingIsFound_data() {
    QTest::addColumn<bool>("hasBus");
    QTest::newRow("no bus") << false;
    QTest::newRow("no keyring on the bus") << true;
}

/// In another process, since this one has its connection to the bus already.
void SecretServiceKeychainTest::withoutAKeyringNothingIsFound() {
    QFETCH(bool, hasBus);
    QProcess bus;
    QByteArray address = "unix:path=/nonexistent/bus";
    QTemporaryDir folder;
    if (hasBus) {
        QFile settings(folder.filePath(QStringLiteral("bus.conf")));
        QVERIFY(settings.open(QIODevice::WriteOnly));
        settings.write("<busconfig><type>session</type><listen>unix:dir=" + folder.path().toUtf8() +
                       "</listen><policy context=\"default\"><allow send_destination=\"*\"/>"
                       "<allow receive_type=\"method_return\"/><allow receive_type=\"error\"/>"
                       "</policy></busconfig>");
        settings.close();
        bus.start(QStringLiteral("dbus-daemon"),
                  {QStringLiteral("--nofork"), QStringLiteral("--print-address"),
                   QStringLiteral("--config-file=") + settings.fileName()});
        QTRY_VERIFY(bus.canReadLine());
        address = bus.readLine().trimmed();
    }
    QProcess child;
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), QString::fromUtf8(address));
    child.setProcessEnvironment(environment);
    child.start(QCoreApplication::applicationFilePath(), {QStringLiteral("--look-up")});
    QVERIFY(child.waitForFinished(5000));
    QCOMPARE(child.readAllStandardError(), "");
    QCOMPARE(child.readAllStandardOutput(), "absent\n");
    QCOMPARE(child.exitCode(), 0);
    if (hasBus) {
        bus.terminate();
        QVERIFY(bus.waitForFinished());
    }
}

}  // namespace tidemark

int main(int argc, char** argv) {
    if (argc == 2 && qstrcmp(argv[1], "--look-up") == 0) {
        tidemark::SecretServiceKeychain keychain;
        keychain.deleteMatching(tidemark::query(std::nullopt));
        const bool isThere =
            keychain.add(tidemark::query(true), "x") || keychain.copyMatching(tidemark::query(true));
        std::puts(isThere ? "found" : "absent");
        return 0;
    }
    QCoreApplication app(argc, argv);
    tidemark::SecretServiceKeychainTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "SecretServiceKeychainTest.moc"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include "config/ConfigStore.h"
#include "config/KeychainHelper.h"
#include "tests/fakes/FakeKeychain.h"

using namespace tidemark;
using namespace Qt::StringLiterals;

class ConfigStoreTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        m_folder = std::make_unique<QTemporaryDir>();
        m_path = m_folder->filePath(u"deeper/still/config.json"_s);
        m_keychain = std::make_unique<FakeKeychain>();
    }

    void savesAndLoadsEverything() {
        const AppConfiguration configuration{
            .accounts = {{u"A1"_s, u"Me \"x\" \\ \n é \U0001F680"_s, {}, u"tok-a"_s},
                         {u"A2"_s, u"Team"_s, u"team_1"_s, {}}},
            .cloudflareToken = u"tok-cf"_s,
            .pollingIntervalSeconds = 120,
            .launchAtLogin = true,
            .soundEnabled = false};
        QVERIFY(store().save(configuration));
        QCOMPARE(store().load(), configuration);

        const QByteArray content = read();
        for (const QByteArray secret : {"tok-a", "tok-cf", "apiToken", "cloudflareToken"})
            QVERIFY2(!content.contains(secret), secret.constData());
        qsizetype position = 0;
        for (const QByteArray member :
             {"{\n", "\"accounts\"", "\"id\"", "\"name\"", "\"teamId\"", "\"pollingIntervalSeconds\"",
              "\"launchAtLogin\"", "\"soundEnabled\""}) {
            const auto found = content.indexOf(member, position);
            QVERIFY2(found >= 0, member.constData());
            position = found;
        }
        // The empty token is stored too: nothing older may come back in its place.
        QCOMPARE(KeychainHelper::loadToken(*m_keychain, u"apiToken-A2"_s), QString());

        QVERIFY(store().save({}));
        QVERIFY(QJsonDocument::fromJson(read()).object().value("accounts"_L1).isArray());
    }

    void whatCannotBeUsedIsAbsent_data() {
        QTest::addColumn<QByteArray>("json");
        QTest::addColumn<bool>("loads");
        const QByteArray account = R"({"id":"A1","name":"n","teamId":""})";
        const QByteArray accounts = R"("accounts":[)" + account + "]";
        QTest::newRow("accounts only") << QByteArray("{" + accounts + "}") << true;
        QTest::newRow("nulls") << QByteArray("{" + accounts +
                                             R"(,"pollingIntervalSeconds":null,"soundEnabled":null})")
                               << true;
        QTest::newRow("interval as text")
            << QByteArray("{" + accounts + R"(,"pollingIntervalSeconds":"30"})") << false;
        QTest::newRow("interval fractional")
            << QByteArray("{" + accounts + R"(,"pollingIntervalSeconds":30.5})") << false;
        QTest::newRow("switch as number") << QByteArray("{" + accounts + R"(,"launchAtLogin":1})") << false;
        QTest::newRow("sound as text") << QByteArray("{" + accounts + R"(,"soundEnabled":"yes"})") << false;
        QTest::newRow("array") << QByteArray("[" + account + "]") << false;
        QTest::newRow("cut off") << QByteArray("{" + accounts) << false;
        QTest::newRow("empty") << QByteArray() << false;
        QTest::newRow("account without a token")
            << QByteArray(R"({"accounts":[{"id":"other","name":"n","teamId":""}]})") << false;
    }

    void whatCannotBeUsedIsAbsent() {
        QFETCH(const QByteArray, json);
        KeychainHelper::save(*m_keychain, u"tok"_s, u"apiToken-A1"_s);
        write(json);
        const auto configuration = store().load();
        QTEST(configuration.has_value(), "loads");
        if (configuration)
            QCOMPARE(*configuration, (AppConfiguration{.accounts = {{u"A1"_s, u"n"_s, {}, u"tok"_s}}}));
        QCOMPARE(read(), json);  // loading never writes the file
    }

    void whatIsNoFileIsAbsent() {
        QVERIFY(!store().load());
        QVERIFY(QDir().mkpath(QFileInfo(m_path).path()));
        QVERIFY(QFile::link(u"/dev/zero"_s, m_path));  // without end
        QVERIFY(!store().load());
    }

    void singleAccountLayoutIsMigrated_data() {
        QTest::addColumn<QByteArray>("json");
        QTest::addColumn<QString>("teamId");
        QTest::newRow("no accounts") << QByteArray(R"({"teamId":"team_9","pollingIntervalSeconds":60})")
                                     << u"team_9"_s;
        QTest::newRow("empty accounts")
            << QByteArray(R"({"accounts":[],"teamId":"team_9","pollingIntervalSeconds":60})") << u"team_9"_s;
        QTest::newRow("null accounts")
            << QByteArray(R"({"accounts":null,"pollingIntervalSeconds":60})") << QString();
        QTest::newRow("accounts of a wrong type")
            << QByteArray(R"({"accounts":5,"teamId":7,"pollingIntervalSeconds":60})") << QString();
        QTest::newRow("one account without a team")
            << QByteArray(
                   R"({"accounts":[{"id":"A","name":"a","teamId":""},{"id":"B","name":"b"}],"pollingIntervalSeconds":60})")
            << QString();
    }

    void singleAccountLayoutIsMigrated() {
        QFETCH(const QByteArray, json);
        QFETCH(const QString, teamId);
        m_keychain->insert({u"com.tidemark"_s, u"apiToken"_s, false}, "old-token");
        write(json);
        const auto first = store().load();
        QVERIFY(first);
        const VercelAccount account = first->accounts.first();
        static const QRegularExpression uuid(u"^[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}$"_s);
        QVERIFY(uuid.match(account.id).hasMatch());
        QCOMPARE(first->accounts, (QList<VercelAccount>{{account.id, u"Default"_s, teamId, u"old-token"_s}}));
        QCOMPARE(first->pollingIntervalSeconds, 60);
        QCOMPARE(KeychainHelper::loadToken(*m_keychain, u"apiToken"_s), u"old-token"_s);  // left in place

        QVERIFY(store().load()->accounts.first().id != account.id);  // again and again, until a save
        QVERIFY(store().save(*first));
        QCOMPARE(store().load(), first);
    }

    void aFailedDecodeMigratesNothing() {
        m_keychain->insert({u"com.tidemark"_s, u"apiToken"_s, false}, "old-token");
        write(R"({"teamId":"t","soundEnabled":1})");
        QVERIFY(!store().load());
        QCOMPARE(m_keychain->items().size(), 1);
    }

    void aFailedSaveSaysSoAndKeepsTheOldFile() {
        const AppConfiguration configuration{.accounts = {{u"A1"_s, u"n"_s, {}, u"tok"_s}}};
        // A file where the folder should be.
        QFile blocker(m_folder->filePath(u"deeper"_s));
        QVERIFY(blocker.open(QIODevice::WriteOnly));
        blocker.close();
        const auto result = store().save(configuration);
        QVERIFY(!result);
        QVERIFY(!result.error().isEmpty());
        QCOMPARE(KeychainHelper::loadToken(*m_keychain, u"apiToken-A1"_s), u"tok"_s);  // stored before

        QVERIFY(blocker.remove());
        QVERIFY(QDir().mkpath(m_path));  // a folder where the file should be
        QVERIFY(!store().save(configuration));
    }

    void aMissingKeychainLosesNothingOfTheFile() {
        m_keychain->setMood(FakeKeychain::Mood::unavailable);
        const AppConfiguration configuration{.accounts = {{u"A1"_s, u"n"_s, {}, u"tok"_s}}};
        QVERIFY(store().save(configuration));
        QVERIFY(!store().load());
        QVERIFY(read().contains("\"A1\""));
    }

private:
    ConfigStore store() { return {m_path, *m_keychain}; }

    void write(const QByteArray& content) {
        QVERIFY(QDir().mkpath(QFileInfo(m_path).path()));
        QFile file(m_path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(content);
    }

    QByteArray read() {
        QFile file(m_path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_path;
    std::unique_ptr<FakeKeychain> m_keychain;
};

QTEST_GUILESS_MAIN(ConfigStoreTest)
#include "ConfigStoreTest.moc"

#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTemporaryDir>

#include "config/ConfigStore.h"
#include "config/KeychainHelper.h"
#include "tests/TestProgram.h"
#include "tests/fakes/FakeKeychain.h"
#include "tests/fakes/Files.h"

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
        const AppConfiguration configuration{.accounts = {{u"A1"_s, u"\"Me\""_s, {}, u"tok-a"_s},
                                                          {u"A2"_s, u"a\\b"_s, u"team_1"_s, {}},
                                                          {u"A3"_s, u"\n"_s, {}, {}},
                                                          {u"A4"_s, u"é \U0001F680"_s, {}, {}}},
                                             .cloudflareToken = u"tok-cf"_s,
                                             .pollingIntervalSeconds = 120,
                                             .launchAtLogin = true,
                                             .soundEnabled = false};
        QVERIFY(store().save(configuration));
        QCOMPARE(store().load(), configuration);

        const QByteArray content = read();
        for (const QByteArray secret : {"tok-a", "tok-cf", "apiToken", "cloudflareToken"})
            QVERIFY2(!content.contains(secret), secret.constData());
        QVERIFY(content.contains(
            "\"name\": \"\\n\""));  // unescaped it would not be valid JSON, although Qt reads it
        // People read the file, so its members have a fixed order.
        static const QRegularExpression layout(
            uR"(accounts.*id.*name.*teamId.*id.*pollingIntervalSeconds.*launchAtLogin.*soundEnabled)"_s,
            QRegularExpression::DotMatchesEverythingOption);
        QVERIFY2(layout.match(QString::fromUtf8(content)).hasMatch(), content.constData());
        // The empty token is stored, too, so that no older one is found in its place.
        QCOMPARE(KeychainHelper::loadToken(*m_keychain, u"apiToken-A2"_s), QString());

        QVERIFY(store().save({}));
        QVERIFY(QJsonDocument::fromJson(read()).object().value("accounts"_L1).isArray());
    }

    void whatCannotBeUsedIsAbsent_data() {
        QTest::addColumn<QByteArray>("json");
        QTest::addColumn<bool>("loads");
        const QByteArray account = R"({"id":"A1","name":"n","teamId":""})";
        const auto row = [&account](const char* name, const QByteArray& members, bool loads) {
            QTest::newRow(name) << "{\"accounts\":[" + account + "]" + members << loads;
        };
        row("accounts only", "}", true);
        row("nulls", R"(,"pollingIntervalSeconds":null,"soundEnabled":null})", true);
        row("interval as text", R"(,"pollingIntervalSeconds":"30"})", false);
        row("interval fractional", R"(,"pollingIntervalSeconds":30.5})", false);
        row("switch as number", R"(,"launchAtLogin":1})", false);
        row("cut off", "", false);
        QTest::newRow("old layout, switch as number")
            << QByteArray(R"({"teamId":"t","soundEnabled":1})") << false;
        QTest::newRow("array") << "[" + account + "]" << false;
        QTest::newRow("empty") << QByteArray() << false;
        QTest::newRow("account without a token")
            << QByteArray(R"({"accounts":[{"id":"other","name":"n","teamId":""}]})") << false;
    }

    void whatCannotBeUsedIsAbsent() {
        QFETCH(const QByteArray, json);
        KeychainHelper::save(*m_keychain, u"tok"_s, u"apiToken-A1"_s);
        m_keychain->insert({u"com.tidemark"_s, u"apiToken"_s, false}, "old-token");
        write(json);
        const auto configuration = store().load();
        QTEST(configuration.has_value(), "loads");
        if (configuration)
            QCOMPARE(*configuration, (AppConfiguration{.accounts = {{u"A1"_s, u"n"_s, {}, u"tok"_s}}}));
        QCOMPARE(read(), json);                   // loading does not write the file
        QCOMPARE(m_keychain->items().size(), 2);  // nothing was migrated
    }

    void whatIsNoFileIsAbsent() {
        QVERIFY(!store().load());
        QVERIFY(QDir().mkpath(QFileInfo(m_path).path()));
        QVERIFY(QFile::link(u"/dev/zero"_s, m_path));  // never ends
        QVERIFY(!store().load());
    }

    void singleAccountLayoutIsMigrated_data() {
        QTest::addColumn<QByteArray>("members");
        QTest::addColumn<QString>("teamId");
        const auto row = [](const char* name, const QByteArray& members, const QString& teamId) {
            QTest::newRow(name) << members << teamId;
        };
        row("no accounts", R"("teamId":"team_9")", u"team_9"_s);
        row("empty accounts", R"("accounts":[],"teamId":"team_9")", u"team_9"_s);
        row("null accounts", R"("accounts":null)", {});
        row("accounts of a wrong type", R"("accounts":5,"teamId":7)", {});
        row("one account without a team",
            R"("accounts":[{"id":"A","name":"a","teamId":""},{"id":"B","name":"b"}])", {});
    }

    void singleAccountLayoutIsMigrated() {
        QFETCH(const QByteArray, members);
        QFETCH(const QString, teamId);
        m_keychain->insert({u"com.tidemark"_s, u"apiToken"_s, false}, "old-token");
        write("{" + members + R"(,"pollingIntervalSeconds":60})");
        const auto first = store().load();
        QVERIFY(first);
        const VercelAccount account = first->accounts.first();
        static const QRegularExpression uuid(u"^[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}$"_s);
        QVERIFY(uuid.match(account.id).hasMatch());
        QCOMPARE(first->accounts, (QList<VercelAccount>{{account.id, u"Default"_s, teamId, u"old-token"_s}}));
        QCOMPARE(first->pollingIntervalSeconds, 60);
        QCOMPARE(KeychainHelper::loadToken(*m_keychain, u"apiToken"_s), u"old-token"_s);  // not removed

        QVERIFY(store().load()->accounts.first().id != account.id);  // at each load until a save
        QVERIFY(store().save(*first));
        QCOMPARE(store().load(), first);
    }

    void aFailedSaveSaysSoAndKeepsTheOldFile() {
        const AppConfiguration configuration{.accounts = {{u"A1"_s, u"n"_s, {}, u"tok"_s}}};
        // A file has the name of the folder.
        const QString blocker = m_folder->filePath(u"deeper"_s);
        writeFile(blocker, {});
        const auto result = store().save(configuration);
        QVERIFY(!result);
        QVERIFY(!result.error().isEmpty());
        QCOMPARE(KeychainHelper::loadToken(*m_keychain, u"apiToken-A1"_s),
                 u"tok"_s);  // stored before the error

        QVERIFY(QFile::remove(blocker));
        QVERIFY(QDir().mkpath(m_path));  // a folder has the name of the file
        QVERIFY(!store().save(configuration));
    }

    void aFormerFileOfWhichNothingLivesOnIsKept_data() {
        QTest::addColumn<QByteArray>("former");
        QTest::addColumn<bool>("isKept");
        const QByteArray a1 = R"({"id":"A1","name":"n","teamId":""})";
        const QByteArray a2 = R"({"id":"A2","name":"n","teamId":""})";
        QTest::newRow("other accounts") << "{\"accounts\":[" + a2 + "]}" << true;
        QTest::newRow("an account removed") << "{\"accounts\":[" + a2 + ',' + a1 + "]}" << false;
        QTest::newRow("the single-account layout") << QByteArray(R"({"teamId":"team_9"})") << true;
        QTest::newRow("broken by hand") << "{\"accounts\":[" + a1 + ",]}" << true;
        QTest::newRow("too large to be read") << QByteArray(1024 * 1024 + 1, ' ') << true;
        QTest::newRow("nothing in it") << QByteArray() << false;
    }

    void aFormerFileOfWhichNothingLivesOnIsKept() {
        QFETCH(const QByteArray, former);
        QFETCH(const bool, isKept);
        write(former);
        const AppConfiguration configuration{.accounts = {{u"A1"_s, u"n"_s, {}, u"tok"_s}}};
        QVERIFY(store().save(configuration));
        QCOMPARE(store().load(), configuration);
        QCOMPARE(read(u".bak"_s), isKept ? former : QByteArray());
        QVERIFY(store().save(configuration));
        QVERIFY(!QFile::exists(m_path + u".bak2"_s));
    }

    void whatCannotBeKeptIsNotReplaced() {
        write("broken");
        QVERIFY(QDir().mkpath(m_path + u".bak"_s));  // a folder has the name of the copy
        QVERIFY(!store().save({}));
        QCOMPARE(read(), "broken");
        QVERIFY(QDir().rmdir(m_path + u".bak"_s));
        QVERIFY(store().save({}));
        QCOMPARE(read(u".bak"_s), "broken");
        write("broken anew");
        QVERIFY(store().save({}));
        QCOMPARE(read(u".bak"_s), "broken anew");
        QCOMPARE(QDir(QFileInfo(m_path).path()).entryList(QDir::Files).size(), 2);
    }

    void aMissingKeychainLosesNothingOfTheFile() {
        m_keychain->setMood(FakeKeychain::Mood::unavailable);
        const AppConfiguration configuration{.accounts = {{u"A1"_s, u"n"_s, {}, u"tok"_s}}};
        QVERIFY(store().save(configuration));
        QVERIFY(!store().load());
        QVERIFY(read().contains("\"A1\""));
    }

    void whatCouldNotBeReadIsNotOverwritten() {
        const AppConfiguration configuration{
            .accounts = {{u"A1"_s, u"n"_s, {}, u"tok"_s}, {u"A2"_s, u"n"_s, {}, u"tok2"_s}},
            .cloudflareToken = u"cf"_s};
        QVERIFY(store().save(configuration));
        m_keychain->setMood(FakeKeychain::Mood::dying);
        auto partial = store().load();
        QVERIFY(partial);
        QCOMPARE(partial->accounts[0], configuration.accounts[0]);
        QVERIFY(partial->accounts[1].isTokenUnread && partial->isCloudflareTokenUnread);
        m_keychain->setMood(FakeKeychain::Mood::willing);
        partial->accounts[0].apiToken = u"new"_s;
        QVERIFY(store().save(*partial));
        AppConfiguration expected = configuration;
        expected.accounts[0].apiToken = u"new"_s;
        QCOMPARE(store().load(), expected);
        QCOMPARE(partial->completedBy(expected), expected);
    }

private:
    ConfigStore store() { return {m_path, *m_keychain}; }

    void write(const QByteArray& content) { writeFile(m_path, content); }
    QByteArray read(const QString& suffix = {}) { return contentsOf(m_path + suffix); }

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_path;
    std::unique_ptr<FakeKeychain> m_keychain;
};

TIDEMARK_TEST(ConfigStoreTest)
#include "ConfigStoreTest.moc"

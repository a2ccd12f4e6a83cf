#include "config/KeychainHelper.h"
#include "tests/TestProgram.h"
#include "tests/fakes/FakeKeychain.h"

using namespace tidemark;
using namespace Qt::StringLiterals;
using Mood = FakeKeychain::Mood;
using Items = QList<FakeKeychain::Item>;

namespace {

const QString account = u"cloudflareToken"_s;

KeychainQuery attributes(std::optional<bool> synchronizable) {
    return {.service = u"com.tidemark"_s, .account = account, .synchronizable = synchronizable};
}

}  // namespace

class KeychainHelperTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { m_keychain = std::make_unique<FakeKeychain>(); }

    void savedTokenReplacesAllOthers_data() {
        QTest::addColumn<Mood>("mood");
        QTest::addColumn<bool>("synchronizable");
        QTest::newRow("synchronizable") << Mood::willing << true;
        QTest::newRow("fallback") << Mood::refusesSynchronizable << false;
    }

    void savedTokenReplacesAllOthers() {
        QFETCH(const Mood, mood);
        QFETCH(const bool, synchronizable);
        const FakeKeychain::Item unrelated{{u"com.tidemark"_s, u"apiToken-1"_s, true}, "unrelated"};
        const FakeKeychain::Item foreign{{u"com.example"_s, account, true}, "foreign"};
        insert({{attributes(true), "old"}, {attributes(true), "older"}, {attributes(false), "other"}});
        insert({unrelated, foreign});
        m_keychain->setMood(mood);
        KeychainHelper::save(*m_keychain, u"abc"_s, account);
        QCOMPARE(m_keychain->items(), (Items{unrelated, foreign, {attributes(synchronizable), "abc"}}));
        QCOMPARE(KeychainHelper::loadItem(*m_keychain, account, synchronizable), u"abc"_s);
        QVERIFY(!KeychainHelper::loadItem(*m_keychain, account, !synchronizable));
    }

    void anUnchangedTokenIsNotWritten() {
        insert({{attributes(true), "abc"}, {{u"com.tidemark"_s, u"apiToken-1"_s, true}, "later"}});
        KeychainHelper::save(*m_keychain, u"abc"_s, account);
        QCOMPARE(m_keychain->items().first().data, "abc");  // written anew, it would be the last one
    }

    void aTokenIsThereAtAnyTime() {
        insert({{attributes(true), "old"}, {attributes(false), "old"}});
        QList<QByteArrayList> seen;
        m_keychain->onChange = [&] {
            QByteArrayList tokens;
            for (const auto& item : m_keychain->items())
                tokens.append(item.data);
            seen.append(tokens);
        };
        KeychainHelper::save(*m_keychain, u"new"_s, account);
        QVERIFY(!seen.isEmpty());
        for (const auto& tokens : seen)
            QVERIFY(!tokens.isEmpty());
        QCOMPARE(m_keychain->items(), (Items{{attributes(true), "new"}}));
    }

    void aSaveThatCannotSucceed() {
        insert({{attributes(true), "old"}});
        KeychainHelper::save(*m_keychain, QString(QChar(0xd800)),
                             account);  // no valid text, so nothing changes
        QCOMPARE(load(), u"old"_s);
        m_keychain->setMood(Mood::unavailable);
        KeychainHelper::save(*m_keychain, u"abc"_s, account);
        QCOMPARE(KeychainHelper::loadToken(*m_keychain, account).error(), KeychainError::unreadable);
        QCOMPARE(m_keychain->items().size(), 1);
        m_keychain->setMood(Mood::refusesAdds);  // but accepts deletions
        KeychainHelper::save(*m_keychain, u"abc"_s, account);
        QVERIFY(m_keychain->items().isEmpty());
    }

    void textSurvives() {
        const QStringList texts{QString(), u"zß水🍰"_s, u"a\0b"_s, u"\ufeffa"_s};
        for (const QString& text : texts) {
            KeychainHelper::save(*m_keychain, text, account);
            QCOMPARE(m_keychain->items().value(0).data, text.toUtf8());
            QCOMPARE(load(), text);
        }
    }

    void tokenIsSoughtInOrder() {
        const FakeKeychain::Item local{attributes(false), "local"};
        const QList<std::pair<Items, QString>> rows{
            {{local, {attributes(true), "a"}}, u"a"_s},
            {{{attributes(std::nullopt), "legacy"}, local}, u"local"_s},
            {{{attributes(true), ""}, local}, u""_s},  // also a token
            {{{attributes(true), "\xff"}, local}, u"local"_s}};
        for (const auto& [items, token] : rows) {
            init();
            insert(items);
            QCOMPARE(load().value_or(u"absent"_s), token);
            QCOMPARE(m_keychain->items(), items);
        }
    }

    void legacyItemIsMoved() {
        for (const QByteArray data : {"abc", ""}) {
            init();
            insert({{attributes(std::nullopt), data}});
            QCOMPARE(load(), QString::fromUtf8(data));
            QCOMPARE(m_keychain->items(), (Items{{attributes(true), data}}));
        }
    }

    /// The legacy lookup also matches the broken items, and deletes all that it matched.
    void undecodableDataIsAbsent() {
        insert({{attributes(true), "\xc3("}, {attributes(false), "\xed\xa0\x80"}});
        QCOMPARE(load(), std::nullopt);
        QVERIFY(m_keychain->items().isEmpty());
    }

    void cancelLosesNoToken() {
        insert({{attributes(false), "abc"}});
        m_keychain->cancel();
        // The program quits during a save, which is still completed.
        KeychainHelper::save(*m_keychain, u"def"_s, account);
        QCOMPARE(m_keychain->items(), (Items{{attributes(true), "def"}}));
        QCOMPARE(load(), std::nullopt);
    }

private:
    void insert(const Items& items) {
        for (const auto& [attributes, data] : items)
            m_keychain->insert(attributes, data);
    }
    /// Nothing when there is none, or when it cannot be read.
    std::optional<QString> load() {
        const auto token = KeychainHelper::loadToken(*m_keychain, account);
        return token ? std::optional(*token) : std::nullopt;
    }

    std::unique_ptr<FakeKeychain> m_keychain;
};

TIDEMARK_TEST(KeychainHelperTest)
#include "KeychainHelperTest.moc"

#include "config/KeychainHelper.h"

#include <QTest>

#include "tests/fakes/FakeKeychain.h"

namespace tidemark {

namespace {

const QString account = QStringLiteral("cloudflareToken");
const QString other = QStringLiteral("apiToken-1");
using Mood = FakeKeychain::Mood;

KeychainQuery attributes(std::optional<bool> synchronizable) {
    return {.service = QStringLiteral("com.tidemark"), .account = account, .synchronizable = synchronizable};
}

}  // namespace

class KeychainHelperTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void savedTokenReplacesAllOthers_data();
    void savedTokenReplacesAllOthers();
    void refusedAddsLoseTheOldItems();
    void textThatIsNotUnicodeChangesNothing();
    void textSurvives_data();
    void textSurvives();
    void tokenIsSoughtInOrder_data();
    void tokenIsSoughtInOrder();
    void legacyItemIsMoved_data();
    void legacyItemIsMoved();
    void undecodableDataIsAbsent();
    void unavailableStoreIsAbsent();
    void cancelLosesNoToken();
};

void KeychainHelperTest::savedTokenReplacesAllOthers_data() {
    QTest::addColumn<Mood>("mood");
    QTest::addColumn<bool>("synchronizable");
    QTest::newRow("synchronizable") << Mood::willing << true;
    QTest::newRow("fallback") << Mood::refusesSynchronizable << false;
}

void KeychainHelperTest::savedTokenReplacesAllOthers() {
    QFETCH(Mood, mood);
    QFETCH(bool, synchronizable);
    FakeKeychain keychain;
    keychain.insert(attributes(true), "old");
    keychain.insert(attributes(true), "older");
    keychain.insert(attributes(false), "other");
    keychain.insert({attributes(true).service, other, true}, "unrelated");
    keychain.insert({QStringLiteral("com.example"), account, true}, "foreign");
    keychain.setMood(mood);

    KeychainHelper::save(keychain, QStringLiteral("abc"), account);

    const QList<FakeKeychain::Item> expected{
        {{attributes(true).service, other, true}, "unrelated"},
        {{QStringLiteral("com.example"), account, true}, "foreign"},
        {attributes(synchronizable), "abc"},
    };
    QCOMPARE(keychain.items(), expected);
    QCOMPARE(KeychainHelper::loadItem(keychain, account, synchronizable), QStringLiteral("abc"));
    QCOMPARE(KeychainHelper::loadItem(keychain, account, !synchronizable), std::nullopt);
}

void KeychainHelperTest::refusedAddsLoseTheOldItems() {
    FakeKeychain keychain;
    keychain.insert(attributes(true), "old");
    keychain.setMood(Mood::refusesAdds);
    KeychainHelper::save(keychain, QStringLiteral("abc"), account);
    QVERIFY(keychain.items().isEmpty());
}

void KeychainHelperTest::textThatIsNotUnicodeChangesNothing() {
    FakeKeychain keychain;
    keychain.insert(attributes(true), "old");
    KeychainHelper::save(keychain, QString(QChar(0xd800)), account);
    QCOMPARE(KeychainHelper::loadToken(keychain, account), QStringLiteral("old"));
}

void KeychainHelperTest::textSurvives_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("data");
    QTest::newRow("empty") << QString() << QByteArray("");
    QTest::newRow("beyond the basic plane") << QStringLiteral("zß水🍰") << QByteArray("zß水🍰");
    QTest::newRow("zero inside") << QStringLiteral("a\0b").left(3) << QByteArray("a\0b", 3);
    QTest::newRow("byte order mark") << QStringLiteral("\ufeffa")
                                     << QByteArray(
                                            "\xef\xbb\xbf"
                                            "a");
}

void KeychainHelperTest::textSurvives() {
    QFETCH(QString, text);
    QFETCH(QByteArray, data);
    FakeKeychain keychain;
    KeychainHelper::save(keychain, text, account);
    QCOMPARE(keychain.items().value(0).data, data);
    QCOMPARE(KeychainHelper::loadToken(keychain, account), text);
}

void KeychainHelperTest::tokenIsSoughtInOrder_data() {
    using Item = std::pair<std::optional<bool>, QByteArray>;
    QTest::addColumn<QList<Item>>("items");
    QTest::addColumn<QString>("token");
    QTest::newRow("synchronizable first") << QList<Item>{{false, "b"}, {true, "a"}} << QStringLiteral("a");
    QTest::newRow("the other next") << QList<Item>{{std::nullopt, "c"}, {false, "b"}} << QStringLiteral("b");
    QTest::newRow("empty text stops") << QList<Item>{{true, ""}, {false, "b"}} << QStringLiteral("");
    QTest::newRow("undecodable is passed")
        << QList<Item>{{true, "\xff"}, {false, "b"}} << QStringLiteral("b");
}

void KeychainHelperTest::tokenIsSoughtInOrder() {
    using Item = std::pair<std::optional<bool>, QByteArray>;
    QFETCH(QList<Item>, items);
    QFETCH(QString, token);
    FakeKeychain keychain;
    for (const auto& [synchronizable, data] : std::as_const(items))
        keychain.insert(attributes(synchronizable), data);
    const auto before = keychain.items();
    QCOMPARE(KeychainHelper::loadToken(keychain, account), token);
    QCOMPARE(keychain.items(), before);
}

void KeychainHelperTest::legacyItemIsMoved_data() {
    QTest::addColumn<Mood>("mood");
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<bool>("synchronizable");
    QTest::newRow("token") << Mood::willing << QByteArray("abc") << true;
    QTest::newRow("empty token") << Mood::willing << QByteArray("") << true;
    QTest::newRow("fallback") << Mood::refusesSynchronizable << QByteArray("abc") << false;
}

void KeychainHelperTest::legacyItemIsMoved() {
    QFETCH(Mood, mood);
    QFETCH(QByteArray, data);
    QFETCH(bool, synchronizable);
    FakeKeychain keychain;
    keychain.insert(attributes(std::nullopt), data);
    keychain.setMood(mood);
    QCOMPARE(KeychainHelper::loadToken(keychain, account), QString::fromUtf8(data));
    const QList<FakeKeychain::Item> expected{{attributes(synchronizable), data}};
    QCOMPARE(keychain.items(), expected);
}

/// The legacy lookup matches the broken items too, and deletes what it matched.
void KeychainHelperTest::undecodableDataIsAbsent() {
    FakeKeychain keychain;
    keychain.insert(attributes(true), "\xc3(");
    keychain.insert(attributes(false), "\xed\xa0\x80");
    QCOMPARE(KeychainHelper::loadItem(keychain, account, true), std::nullopt);
    QCOMPARE(KeychainHelper::loadToken(keychain, account), std::nullopt);
    QVERIFY(keychain.items().isEmpty());
}

void KeychainHelperTest::unavailableStoreIsAbsent() {
    FakeKeychain keychain;
    keychain.insert(attributes(true), "abc");
    keychain.setMood(Mood::unavailable);
    QCOMPARE(KeychainHelper::loadToken(keychain, account), std::nullopt);
    KeychainHelper::save(keychain, QStringLiteral("def"), account);
    QCOMPARE(keychain.items().size(), 1);
}

void KeychainHelperTest::cancelLosesNoToken() {
    FakeKeychain keychain;
    keychain.insert(attributes(false), "abc");
    keychain.cancel();
    // The program quits in the middle of a save: what was begun is finished.
    KeychainHelper::save(keychain, QStringLiteral("def"), account);
    QCOMPARE(keychain.items(), (QList<FakeKeychain::Item>{{attributes(true), "def"}}));
    QCOMPARE(KeychainHelper::loadToken(keychain, account), std::nullopt);
}

}  // namespace tidemark

QTEST_GUILESS_MAIN(tidemark::KeychainHelperTest)
#include "KeychainHelperTest.moc"

#include "desktop/UserDefaults.h"

#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

namespace tidemark {

namespace {

const QString key = QStringLiteral("key");

}  // namespace

class UserDefaultsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void valuesSurviveARestart_data();
    void valuesSurviveARestart();
    void otherTypesReadAsEmpty();
    void lastOfManyWritesWins();
    void newFileIsPrivate();
    void unreadableFileStartsEmpty_data();
    void unreadableFileStartsEmpty();
    void failedWriteIsTriedAgain();
    void settingIsQuick();

private:
    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_path;
};

void UserDefaultsTest::init() {
    m_folder = std::make_unique<QTemporaryDir>();
    m_path = m_folder->filePath(QStringLiteral("new/Tidemark/state.ini"));
}

void UserDefaultsTest::valuesSurviveARestart_data() {
    QTest::addColumn<QVariant>("value");
    QByteArray bytes;
    for (int i = 0; i < 256; ++i)
        bytes.append(static_cast<char>(i));
    const auto row = [](const char* name, const auto& value) {
        QTest::newRow(name) << QVariant::fromValue(value);
    };
    row("bytes", bytes);
    row("no bytes", QByteArray());
    row("json", QByteArray(R"([{"id":"prj_1","name":"a, b; \"c\"","accountId":"@x"}])"));
    row("true", true);
    row("false", false);
    row("empty list", QStringList());
    row("list of one", QStringList{QStringLiteral("a")});
    row("list of one with commas", QStringList{QStringLiteral("a, b")});
    row("list of one empty string", QStringList{QString()});
    row("list", QStringList{QString(), QStringLiteral("@Invalid()"), QStringLiteral("ä;=\n\"")});
    row("map", QVariantMap{{QStringLiteral("prj_1"), QStringLiteral("a.example")}, {QString(), QString()}});
    row("empty map", QVariantMap());
}

void UserDefaultsTest::valuesSurviveARestart() {
    QFETCH(QVariant, value);
    for (const bool isRestarted : {false, true}) {
        UserDefaults defaults(m_path);
        if (!isRestarted)
            defaults.setValue(key, value);
        switch (value.typeId()) {
            case QMetaType::QByteArray:
                QCOMPARE(defaults.data(key), value.toByteArray());
                break;
            case QMetaType::Bool:
                QCOMPARE(defaults.boolean(key), value.toBool());
                break;
            case QMetaType::QStringList:
                QCOMPARE(defaults.stringArray(key), value.toStringList());
                break;
            default:
                QCOMPARE(defaults.value(key), value);
        }
    }
}

void UserDefaultsTest::otherTypesReadAsEmpty() {
    UserDefaults defaults(m_path);
    QVERIFY(!defaults.value(key).isValid());
    QVERIFY(!defaults.boolean(key));
    defaults.setValue(key, QVariantMap{{key, 1}});
    QVERIFY(defaults.stringArray(key).isEmpty());
    QVERIFY(defaults.data(key).isEmpty());
    QVERIFY(!defaults.boolean(key));
    defaults.setValue(key, QStringLiteral("yes"));
    QVERIFY(!defaults.boolean(key));
}

void UserDefaultsTest::lastOfManyWritesWins() {
    {
        UserDefaults defaults(m_path);
        for (int i = 0; i <= 200; ++i) {
            defaults.setValue(key, QByteArray::number(i));
            defaults.setValue(QString::number(i % 3), true);
        }
    }
    const UserDefaults again(m_path);
    QCOMPARE(again.data(key), "200");
    QVERIFY(again.boolean(QStringLiteral("2")));
}

void UserDefaultsTest::newFileIsPrivate() {
    UserDefaults defaults(m_path);
    defaults.setValue(key, true);
    defaults.waitForWrites();
    const auto permissions = QFileInfo(m_path).permissions();
    QVERIFY(!(permissions & (QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther)));
}

void UserDefaultsTest::unreadableFileStartsEmpty_data() {
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("nonsense") << QByteArray("\xff\xfe[[[\0\n=\n", 9);
    QTest::newRow("cut off") << QByteArray("[General]\nkey=\"@ByteArr");
    QTest::newRow("wrong type") << QByteArray("[General]\nkey=@Variant(\\0\\0)\n");
}

void UserDefaultsTest::unreadableFileStartsEmpty() {
    QFETCH(QByteArray, content);
    m_path = m_folder->filePath(QStringLiteral("state.ini"));
    QFile file(m_path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(content);
    file.close();
    {
        UserDefaults defaults(m_path);
        QVERIFY(defaults.data(key).isEmpty());
        defaults.setValue(key, QByteArray("x"));
    }
    const UserDefaults again(m_path);
    QCOMPARE(again.data(key), "x");
}

/// The folder cannot be made while a file stands in its place.
void UserDefaultsTest::failedWriteIsTriedAgain() {
    QFile obstacle(m_folder->filePath(QStringLiteral("new")));
    const QString other = QStringLiteral("other");
    {
        UserDefaults defaults(m_path);
        QVERIFY(obstacle.open(QIODevice::WriteOnly));
        defaults.setValue(key, QByteArray("kept"));
        defaults.waitForWrites();
        QVERIFY(obstacle.remove());
        defaults.setValue(other, true);
        defaults.waitForWrites();
        QCOMPARE(UserDefaults(m_path).data(key), "kept");

        QVERIFY(QDir(m_folder->filePath(QStringLiteral("new"))).removeRecursively());
        QVERIFY(obstacle.open(QIODevice::WriteOnly));
        defaults.setValue(key, QByteArray("at the end"));
        defaults.waitForWrites();
        QVERIFY(obstacle.remove());
    }
    const UserDefaults again(m_path);
    QCOMPARE(again.data(key), "at the end");
    QVERIFY(again.boolean(other));
}

/// Even while the disk is busy with the write before.
void UserDefaultsTest::settingIsQuick() {
    UserDefaults defaults(m_path);
    QStringList ids;
    for (int i = 0; i < 2000; ++i)
        ids.append(QStringLiteral("prj_0123456789abcdefghij%1").arg(i));
    const QByteArray projects(250'000, '"');
    qint64 best = std::numeric_limits<qint64>::max();
    for (int round = 0; round < 5; ++round) {
        QElapsedTimer watch;
        watch.start();
        defaults.setValue(QStringLiteral("cachedProjects"), projects);
        defaults.setValue(QStringLiteral("trackedIds"), ids);
        defaults.setValue(QStringLiteral("seenProjectIds"), ids);
        best = std::min(best, watch.nsecsElapsed());
    }
    qInfo("%lld microseconds for three values", best / 1000);
    QVERIFY(best < 1'000'000);
}

}  // namespace tidemark

QTEST_GUILESS_MAIN(tidemark::UserDefaultsTest)
#include "UserDefaultsTest.moc"

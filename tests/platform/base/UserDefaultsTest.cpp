#include <QTemporaryDir>
#include <numeric>

#include "platform/base/UserDefaults.h"
#include "tests/TestProgram.h"
#include "tests/fakes/Files.h"

using namespace tidemark;
using namespace Qt::StringLiterals;

namespace {

const QString key = u"key"_s;

}  // namespace

class UserDefaultsTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        m_folder = std::make_unique<QTemporaryDir>();
        m_path = m_folder->filePath(u"new/Tidemark/state.ini"_s);
    }

    void valuesSurviveARestart() {
        int starts = 0;
        const auto restarted = [this, &starts](const QVariant& value) {
            // Reads a copy, because QSettings caches the values of a file by its path.
            const QString copy = m_folder->filePath(QString::number(++starts));
            UserDefaults(m_path).setValue(key, value);
            QFile::copy(m_path, copy);
            return UserDefaults(copy);
        };
        QVERIFY(restarted(true).boolean(key));
        QVERIFY(!restarted(false).boolean(key));
        QByteArray everyByte(256, '\0');
        std::iota(everyByte.begin(), everyByte.end(), '\0');
        const QByteArray json = "[{\"id\":\"prj_1\",\"name\":\"a, b; \\\"c\\\"\",\"accountId\":\"@x\"}]";
        for (const QByteArray& data : {everyByte, json, QByteArray()})
            QCOMPARE(restarted(data).data(key), data);
        for (const QStringList& list :
             {QStringList(), QStringList{u"a"_s}, QStringList{u"a, b"_s}, QStringList{QString()},
              QStringList{QString(), u"@Invalid()"_s, u"ä;=\n\""_s}})
            QCOMPARE(restarted(list).stringArray(key), list);
        for (const QVariantMap& map :
             {QVariantMap(), QVariantMap{{u"prj_1"_s, u"a.example"_s}, {QString(), QString()}}})
            QCOMPARE(restarted(map).value(key), QVariant(map));
    }

    void otherTypesReadAsEmpty() {
        UserDefaults defaults(m_path);
        QVERIFY(!defaults.value(key).isValid());
        QVERIFY(!defaults.boolean(key));
        defaults.setValue(key, QVariantMap{{key, 1}});
        QVERIFY(defaults.stringArray(key).isEmpty());
        QVERIFY(defaults.data(key).isEmpty());
        QVERIFY(!defaults.boolean(key));
        defaults.setValue(key, u"yes"_s);
        QVERIFY(!defaults.boolean(key));
    }

    void manyWritesEndInOnePrivateFile() {
        {
            UserDefaults defaults(m_path);
            for (int i = 0; i <= 200; ++i) {
                defaults.setValue(key, QByteArray::number(i));
                defaults.setValue(QString::number(i % 3), true);
            }
        }
        const UserDefaults again(m_path);
        QCOMPARE(again.data(key), "200");
        QVERIFY(again.boolean(u"2"_s));
        QCOMPARE(QFile::permissions(m_path) & (QFile::ReadGroup | QFile::ReadOther), QFile::Permissions());
    }

    void unreadableFileStartsEmpty() {
        m_path = m_folder->filePath(u"state.ini"_s);
        for (const QByteArray& content :
             {QByteArray("\xff\xfe[[[\0\n=\n", 9), QByteArray("[General]\nkey=\"@ByteArr"),
              QByteArray("[General]\nkey=@Variant(\\0\\0)\n")}) {
            writeFile(m_path, content);
            {
                UserDefaults defaults(m_path);
                QVERIFY(defaults.data(key).isEmpty());
                defaults.setValue(key, QByteArray("x"));
            }
            QCOMPARE(UserDefaults(m_path).data(key), "x");
        }
    }

    /// The folder cannot be created while a file has its name.
    void failedWriteIsTriedAgain() {
        QFile obstacle(m_folder->filePath(u"new"_s));
        const QString other = u"other"_s;
        {
            UserDefaults defaults(m_path);
            QVERIFY(obstacle.open(QIODevice::WriteOnly));
            defaults.setValue(key, QByteArray("kept"));
            defaults.waitForWrites();
            QVERIFY(obstacle.remove());
            defaults.setValue(other, true);
            defaults.waitForWrites();
            QCOMPARE(UserDefaults(m_path).data(key), "kept");

            QVERIFY(QDir(m_folder->filePath(u"new"_s)).removeRecursively());
            QVERIFY(obstacle.open(QIODevice::WriteOnly));
            defaults.setValue(key, QByteArray("at the end"));
            defaults.waitForWrites();
            QVERIFY(obstacle.remove());
        }
        const UserDefaults again(m_path);
        QCOMPARE(again.data(key), "at the end");
        QVERIFY(again.boolean(other));
    }

private:
    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_path;
};

TIDEMARK_TEST(UserDefaultsTest)
#include "UserDefaultsTest.moc"

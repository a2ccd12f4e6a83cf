#include <QTemporaryDir>

#include "platform/base/FileWriting.h"
#include "tests/TestProgram.h"
#include "tests/fakes/Files.h"

using namespace tidemark;
using namespace Qt::StringLiterals;

namespace {

constexpr auto ownerOnly = QFile::ReadOwner | QFile::WriteOwner;

}  // namespace

class FileWritingTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aFullDiskLeavesTheOldContents() {
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"config.json"_s);
        QVERIFY(replaceFile(path, "old", ownerOnly));
        // All at once, and as a rest that no longer fits.
        for (const rlim_t room : {0, 100}) {
            const FileSizeLimit full(room);
            const auto written = replaceFile(path, QByteArray(538, 'x'), ownerOnly);
            QVERIFY(!written);
            QVERIFY(!written.error().isEmpty());
        }
        QCOMPARE(contentsOf(path), "old");
        QCOMPARE(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden), QStringList{u"config.json"_s});
    }

    void aFolderThatCannotBeWrittenToIsAnError() {
        QVERIFY(!replaceFile(u"/proc/nowhere/config.json"_s, "new", ownerOnly));
    }

    void contentsAndPermissionsAreReplaced() {
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"a file"_s);
        QVERIFY(replaceFile(path, "old", ownerOnly | QFile::ReadOther));
        QVERIFY(replaceFile(path, {}, ownerOnly));
        QCOMPARE(contentsOf(path), "");
        QVERIFY(!QFile::permissions(path).testFlag(QFile::ReadOther));
    }

    void aLinkStaysALink() {
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"config.json"_s);
        const QString real = folder.filePath(u"dotfiles.json"_s);
        QVERIFY(replaceFile(real, "old", ownerOnly));
        QVERIFY(QFile::link(real, path));
        QVERIFY(replaceFile(path, "new", ownerOnly));
        QVERIFY(QFileInfo(path).isSymLink());
        QCOMPARE(contentsOf(real), "new");
    }
};

TIDEMARK_TEST(FileWritingTest)
#include "FileWritingTest.moc"

#include <sys/resource.h>

#include <QDir>
#include <QTemporaryDir>
#include <csignal>
#include <tuple>

#include "platform/base/FileWriting.h"
#include "tests/TestProgram.h"

using namespace tidemark;
using namespace Qt::StringLiterals;

namespace {

constexpr auto ownerOnly = QFile::ReadOwner | QFile::WriteOwner;

QByteArray contentOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(no file)");
}

/// While it lives, files cannot grow beyond a size: writing more fails as on a full disk.
class FullDisk {
public:
    explicit FullDisk(rlim_t size) {
        ::getrlimit(RLIMIT_FSIZE, &m_former);
        const rlimit limit{.rlim_cur = size, .rlim_max = m_former.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
        m_formerHandler = std::signal(SIGXFSZ, SIG_IGN);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;
    ~FullDisk() {
        ::setrlimit(RLIMIT_FSIZE, &m_former);
        std::ignore = std::signal(SIGXFSZ, m_formerHandler);
    }

private:
    rlimit m_former{};
    void (*m_formerHandler)(int) = nullptr;
};

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
            const FullDisk full(room);
            const auto written = replaceFile(path, QByteArray(538, 'x'), ownerOnly);
            QVERIFY(!written);
            QVERIFY(!written.error().isEmpty());
        }
        QCOMPARE(contentOf(path), "old");
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
        QCOMPARE(contentOf(path), "");
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
        QCOMPARE(contentOf(real), "new");
    }
};

TIDEMARK_TEST(FileWritingTest)
#include "FileWritingTest.moc"

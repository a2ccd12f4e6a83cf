#include <sys/stat.h>

#include <QFileInfo>
#include <QSignalSpy>
#include <QTemporaryDir>

#include "sandbox/Sandbox.h"
#include "sandbox/UpdateService.h"
#include "tests/TestProgram.h"
#include "tests/fakes/FakeWorkspace.h"
#include "tests/fakes/Files.h"
#include "tests/fakes/ManualClock.h"
#include "tests/platform/http/HttpExchange.h"
#include "updates/Updater.h"

using namespace tidemark;
using namespace Qt::StringLiterals;
using Stage = Updater::Stage;

namespace {

const QByteArray oldProgram = "the old program";
constexpr mode_t oldPermissions = 0751;
const QString newVersion = u"9.1.0"_s;

mode_t permissions(const QString& path) {
    struct stat state{};
    return ::stat(QFile::encodeName(path).constData(), &state) == 0 ? state.st_mode & 07777 : 0;
}

QStringList entries(const QString& folder) {
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
}

}  // namespace

/// The updater with a real HTTP client and the sandbox's releases.
class UpdaterTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_sandbox.start()); }

    void init() {
        m_folder = std::make_unique<QTemporaryDir>();
        m_workspace = std::make_unique<FakeWorkspace>();
        m_program = folder(u"opt"_s) + u"/Tidemark.AppImage"_s;
        writeFile(m_program, oldProgram);
        QCOMPARE(::chmod(QFile::encodeName(m_program).constData(), oldPermissions), 0);
    }

    void cleanup() { m_updater.reset(); }

    void goodUpdateReplacesTheProgram() {
        const QString link = folder(u"bin"_s) + u"/tidemark"_s;
        QVERIFY(QFile::link(m_program, link));
        writeFile(folder(u"opt"_s) + u"/.tidemark-update-abc123.part"_s, "of an interrupted download");
        QFile running(m_program);
        QVERIFY(running.open(QIODevice::ReadOnly));

        start(u"appcast.xml?size=3000000"_s, link);
        const QSignalSpy restarts(m_updater.get(), &Updater::restartRequested);
        m_updater->restart();
        offer();
        QCOMPARE(m_updater->release()->displayVersion, newVersion);
        QVERIFY(m_updater->release()->notes.startsWith(u"What is new\n\n• The popover"_s));
        qint64 received = -1;
        QList<Stage> stages;
        connect(m_updater.get(), &Updater::changed, this, [&] {
            if (stages.isEmpty() || stages.constLast() != m_updater->stage())
                stages.append(m_updater->stage());
            QVERIFY(m_updater->bytesReceived() >= received && m_updater->bytesReceived() <= 3'000'000);
            received = m_updater->bytesReceived();
        });
        m_updater->install();
        QVERIFY(!m_updater->canCheckForUpdates());
        QTRY_VERIFY(m_updater->canCheckForUpdates());

        QCOMPARE(stages, QList({Stage::downloading, Stage::verifying, Stage::installed}));
        QCOMPARE(received, 3'000'000);
        QCOMPARE(contentsOf(m_program), sandbox::UpdateService::archive(newVersion, 3'000'000));
        QCOMPARE(permissions(m_program), oldPermissions);
        QCOMPARE(QFile::symLinkTarget(link), m_program);
        QCOMPARE(entries(folder(u"opt"_s)), QStringList{u"Tidemark.AppImage"_s});
        // The running program keeps its old file open.
        QCOMPARE(running.readAll(), oldProgram);
        m_updater->restart();
        QCOMPARE(restarts.size(), 1);

        // The release is not installed again.
        m_updater->dismiss();
        checkNow();
        QCOMPARE(m_updater->stage(), Stage::installed);
        QCOMPARE(m_updater->release()->version, newVersion);
    }

    void packageIsHandedOver() {
        const QString cache = m_folder->path() + u"/cache/updates"_s;
        writeFile(cache + u"/tidemark-0.5.deb"_s, "of an earlier update");
        start(u"appcast.xml"_s, QString());
        offer();
        m_updater->install();
        QTRY_COMPARE(m_updater->stage(), Stage::handedOver);
        const QString package = cache + u"/tidemark-9.1.0.deb"_s;
        QCOMPARE(m_workspace->files, QStringList{package});
        QCOMPARE(contentsOf(package), sandbox::UpdateService::archive(newVersion, 200'000));
        QCOMPARE(entries(cache), QStringList{u"tidemark-9.1.0.deb"_s});
        // Only the next start will show whether the user has installed the package.
        checkNow();
        QCOMPARE(m_updater->stage(), Stage::available);
    }

    void refusals_data() {
        using enum UpdateError;
        QTest::addColumn<QString>("feed");
        QTest::addColumn<UpdateError>("error");
        QTest::addColumn<bool>("isOffered");
        const auto atCheck = [](const char* name, const QString& feed, UpdateError error) {
            QTest::newRow(name) << feed << error << false;
        };
        const auto atInstallation = [](const char* name, const QString& feed, UpdateError error) {
            QTest::newRow(name) << feed << error << true;
        };
        atCheck("no feed", u"nothing.xml"_s, feedUnreachable);
        atCheck("nobody there", u"http://127.0.0.1:9/appcast.xml"_s, feedUnreachable);
        atCheck("http feed", u"http://updates.example/appcast.xml"_s, feedInsecure);
        atCheck("file feed", u"file:///etc/passwd"_s, feedInsecure);
        atCheck("oversized feed", u"oversized.xml"_s, feedTooLarge);
        atCheck("malformed feed", u"malformed.xml"_s, feedMalformed);
        atInstallation("tampered", u"tampered.xml"_s, signatureWrong);
        atInstallation("wrong key", u"wrong-key.xml"_s, signatureWrong);
        atInstallation("cut", u"cut.xml?size=2000000"_s, archiveCut);
        atInstallation("short", u"short.xml"_s, archiveCut);
        atInstallation("long", u"long.xml"_s, archiveCut);
        atInstallation("missing", u"missing.xml"_s, archiveUnreachable);
    }

    void refusals() {
        QFETCH(const QString, feed);
        QFETCH(const UpdateError, error);
        QFETCH(const bool, isOffered);
        start(feed, m_program);
        if (isOffered) {
            offer();
            m_updater->install();
        } else {
            m_updater->checkForUpdates();
        }
        QTRY_VERIFY(m_updater->canCheckForUpdates());
        QCOMPARE(m_updater->stage(), Stage::failed);
        QCOMPARE(m_updater->error(), error);
        QVERIFY(m_updater->errorDescription().endsWith(u'.'));
        QVERIFY(!m_updater->errorDescription().contains(u"127.0.0.1"_s));
        verifyNothingHappened();
        QCOMPARE(m_updater->lastUpdateCheckDate().has_value(), isOffered);
    }

    void onlyNewerReleasesAreOffered() {
        const auto stageOf = [this](const QString& running, const QString& feed) {
            start(feed, m_program, running);
            checkNow();
            const Stage stage = m_updater->stage();
            m_updater->dismiss();
            return m_updater->stage() == Stage::idle ? stage : Stage::failed;
        };
        QCOMPARE(stageOf(u"1.0"_s, u"older.xml"_s), Stage::upToDate);
        QCOMPARE(stageOf(u"9.1"_s, u"appcast.xml"_s), Stage::upToDate);
        QCOMPARE(stageOf(u"10.0"_s, u"appcast.xml"_s), Stage::upToDate);
        QCOMPARE(stageOf(u"9.1-rc3"_s, u"appcast.xml"_s), Stage::available);
        QCOMPARE(stageOf(u"1.0"_s, u"prerelease.xml"_s), Stage::upToDate);
        QCOMPARE(stageOf(u"9.1-alpha"_s, u"prerelease.xml"_s), Stage::available);
    }

    void programThatCannotBeReplaced() {
        // Missing, a folder, and in a folder in which even root cannot write.
        for (const auto& [program, folder] : {std::pair(u"/nowhere/Tidemark.AppImage"_s, u"/nowhere"_s),
                                              {u"/usr/bin"_s, u"/usr"_s},
                                              {u"/proc/version"_s, u"/proc"_s}}) {
            start(u"appcast.xml"_s, program);
            offer();
            m_sandbox.log().clear();
            m_updater->install();
            QTRY_COMPARE(m_updater->stage(), Stage::failed);
            QCOMPARE(m_updater->error(), UpdateError::notReplaceable);
            QVERIFY(m_updater->errorDescription().contains(u" in %1."_s.arg(folder)));
            // The failure is reported before the download.
            QVERIFY(m_sandbox.log().entries().isEmpty());
        }
    }

    void fullDisk() {
        start(u"appcast.xml?size=2000000"_s, m_program);
        offer();
        const FileSizeLimit limit(1'000'000);
        m_updater->install();
        QTRY_VERIFY(m_updater->canCheckForUpdates());
        QCOMPARE(m_updater->error(), UpdateError::diskFull);
        QVERIFY(m_updater->errorDescription().contains(folder(u"opt"_s)));
        verifyNothingHappened();
    }

    void cancelledDownloadLeavesNothing() {
        start(u"slow.xml"_s, m_program);
        startDownload();
        m_updater->dismiss();
        QCOMPARE(m_updater->stage(), Stage::idle);
        QVERIFY(m_updater->canCheckForUpdates());
        // Starts another installation while the first one is still ending.
        offer();
        QTRY_COMPARE(entries(folder(u"opt"_s)).size(), 1);
        verifyNothingHappened();
        QCOMPARE(m_updater->stage(), Stage::available);
    }

    void quitInTheMiddleLeavesNothing() {
        start(u"slow.xml"_s, m_program);
        startDownload();
        m_updater.reset();
        verifyNothingHappened();

        start(u"slow.xml"_s, m_program);
        m_updater->checkForUpdates();
        m_updater.reset();
    }

    /// Another program replaces the file during the download.
    void onlyWhatWasCheckedIsInstalled() {
        start(u"slow.xml?seconds=1"_s, m_program);
        startDownload();
        const QString part = entries(folder(u"opt"_s)).constFirst();
        QVERIFY(part.endsWith(u".part"_s));
        const QString path = folder(u"opt"_s) + u'/' + part;
        QCOMPARE(permissions(path), mode_t{0600});
        QVERIFY(QFile::remove(path));
        writeFile(path, "something else");
        QTRY_VERIFY(m_updater->canCheckForUpdates());
        QCOMPARE(m_updater->error(), UpdateError::notReplaceable);
        QCOMPARE(contentsOf(m_program), oldProgram);
    }

private:
    QString folder(const QString& name) {
        QDir().mkpath(m_folder->filePath(name));
        return m_folder->filePath(name);
    }

    void start(const QString& feed, const QString& program, const QString& version = u"1.0"_s) {
        const QUrl url = m_sandbox.updateFeed().resolved(QUrl(feed));
        m_updater = std::make_unique<Updater>(Updater::Services{
            .http = m_http,
            .clock = m_clock,
            .workspace = *m_workspace,
            .bundle = {.identifier = {},
                       .version = version,
                       .feedUrl = url.toString(),
                       .publicKey = m_sandbox.updatePublicKey()},
            .installedForm = {.appImagePath = program, .cacheFolder = m_folder->path() + u"/cache/updates"_s},
            .settingsPath = m_folder->filePath(u"updates.ini"_s)});
    }

    void checkNow() {
        m_updater->checkForUpdates();
        QTRY_VERIFY(m_updater->canCheckForUpdates());
    }

    void offer() {
        checkNow();
        QCOMPARE(m_updater->stage(), Stage::available);
    }

    void startDownload() {
        offer();
        m_updater->install();
        QTRY_VERIFY(m_updater->bytesReceived() > 0);
        QCOMPARE(entries(folder(u"opt"_s)).size(), 2);
    }

    void verifyNothingHappened() {
        QCOMPARE(contentsOf(m_program), oldProgram);
        QCOMPARE(entries(folder(u"opt"_s)), QStringList{u"Tidemark.AppImage"_s});
        QVERIFY(m_workspace->files.isEmpty());
    }

    sandbox::Sandbox m_sandbox;
    NetworkHttpClient m_http{loopbackOptions()};
    ManualClock m_clock;
    std::unique_ptr<FakeWorkspace> m_workspace;
    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_program;
    std::unique_ptr<Updater> m_updater;
};

TIDEMARK_TEST(UpdaterTest)
#include "UpdaterTest.moc"

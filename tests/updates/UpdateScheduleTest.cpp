#include <QSignalSpy>
#include <QTemporaryDir>

#include "tests/TestProgram.h"
#include "tests/fakes/FakeHttpClient.h"
#include "tests/fakes/FakeWorkspace.h"
#include "tests/fakes/Files.h"
#include "tests/fakes/ManualClock.h"
#include "updates/Updater.h"

using namespace tidemark;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Stage = Updater::Stage;

namespace {

const QString feedPath = u"/appcast.xml"_s;
const QByteArray signature = QByteArray(64, 's').toBase64();

struct Release {
    QByteArray version;
    QByteArray archive = "<enclosure url='/t.deb' length='10' sparkle:edSignature='" + signature + "'/>";
};

HttpResult feed(const QList<Release>& releases) {
    QByteArray items;
    for (const auto& [version, archive] : releases)
        items += "<item><sparkle:version>" + version + "</sparkle:version>" + archive + "</item>";
    return httpAnswer(
        200, "<rss xmlns:sparkle='http://www.andymatuschak.org/xml-namespaces/sparkle'><channel>" + items +
                 "</channel></rss>");
}

}  // namespace

/// When the updater checks, and which outcomes it presents.
class UpdateScheduleTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        m_folder = std::make_unique<QTemporaryDir>();
        m_http = std::make_unique<FakeHttpClient>();
        m_clock = std::make_unique<ManualClock>();
        publish({{"1.0"}});
        launch();
    }

    void cleanup() { m_updater.reset(); }

    void checksSoonAfterTheStartAndThenDaily() {
        QVERIFY(!m_updater->lastUpdateCheckDate());
        m_updater->start();
        m_clock->advance(10s);
        QCOMPARE(checks(), 0);
        m_clock->advance(1min);
        QCOMPARE(checks(), 1);
        const auto date = m_updater->lastUpdateCheckDate();
        QVERIFY(date && m_clock->now() - *date < 1min);
        m_clock->advance(23h);
        QCOMPARE(checks(), 1);
        m_clock->advance(1h);
        QCOMPARE(checks(), 2);
        m_clock->advance(240h);
        QCOMPARE(checks(), 12);
        // Finding no release is not presented.
        QCOMPARE(m_presentations->size(), 0);
        QCOMPARE(m_updater->stage(), Stage::idle);
    }

    void lastCheckCountsFromOneRunToTheNext() {
        checkNow();
        const auto date = m_updater->lastUpdateCheckDate();
        m_clock->advance(20h);
        launch();
        QCOMPARE(m_updater->lastUpdateCheckDate(), date);
        m_updater->start();
        m_clock->advance(3h);
        QCOMPARE(checks(), 1);
        m_clock->advance(1h);
        QCOMPARE(checks(), 2);
    }

    void clockThatWasWrong() {
        checkNow();
        m_clock->setNow(m_clock->now() - 24h * 365);
        launch();
        m_updater->start();
        m_clock->advance(1min);
        QCOMPARE(checks(), 2);
        // The clock is set ahead while the program runs.
        m_clock->setNow(m_clock->now() + 72h);
        m_clock->advance(6h);
        QCOMPARE(checks(), 3);
    }

    void damagedSettingsAreDefaults() {
        m_updater.reset();
        writeFile(settingsPath(), "[General]\nlastUpdateCheckDate=yesterday\nskippedVersion=@Variant(x\n");
        launch();
        QVERIFY(!m_updater->lastUpdateCheckDate());
        QVERIFY(m_updater->automaticallyChecksForUpdates());
        m_updater->start();
        m_clock->advance(1min);
        QCOMPARE(checks(), 1);
    }

    void failedChecksAreSilentAndRepeated() {
        m_http->answer(HttpMethod::get, feedPath, httpAnswer(503));
        m_updater->start();
        m_clock->advance(1min);
        QCOMPARE(checks(), 1);
        QVERIFY(!m_updater->lastUpdateCheckDate());
        m_clock->advance(30min);
        QCOMPARE(checks(), 1);
        m_clock->advance(30min);
        QCOMPARE(checks(), 2);
        QCOMPARE(m_presentations->size(), 0);
        QCOMPARE(m_updater->stage(), Stage::idle);
        publish({{"2.0"}});
        m_clock->advance(1h);
        QCOMPARE(m_updater->stage(), Stage::available);
        m_updater->dismiss();
        m_clock->advance(23h);
        QCOMPARE(checks(), 3);
    }

    void switchingOffAndOn() {
        m_updater->start();
        m_updater->setAutomaticallyChecksForUpdates(false);
        m_clock->advance(100h);
        QCOMPARE(checks(), 0);
        launch();
        QVERIFY(!m_updater->automaticallyChecksForUpdates());
        m_updater->start();
        m_clock->advance(100h);
        QCOMPARE(checks(), 0);
        QVERIFY(m_clock->pendingSleeps().isEmpty());

        m_updater->setAutomaticallyChecksForUpdates(true);
        m_clock->advance(1min);
        QCOMPARE(checks(), 1);
        m_http->hold(HttpMethod::get, feedPath);
        m_clock->advance(24h);
        QVERIFY(!m_updater->canCheckForUpdates());
        m_updater->setAutomaticallyChecksForUpdates(false);
        QVERIFY(m_updater->canCheckForUpdates());
        publish({{"2.0"}});
        m_http->release(HttpMethod::get, feedPath);
        m_clock->advance(1min);
        QCOMPARE(m_updater->stage(), Stage::idle);
    }

    void laterIsAskedAgainAndSkippedIsNot() {
        publish({{"2.0"}});
        m_updater->start();
        m_clock->advance(1min);
        QCOMPARE(m_presentations->size(), 1);
        QCOMPARE(m_updater->stage(), Stage::available);
        // The stage that the user sees does not change.
        m_clock->advance(48h);
        QCOMPARE(checks(), 1);
        m_updater->dismiss();
        m_clock->advance(24h);
        QCOMPARE(m_presentations->size(), 2);
        m_updater->skipThisVersion();
        QCOMPARE(m_updater->stage(), Stage::idle);
        launch();
        m_updater->start();
        m_clock->advance(24h);
        QVERIFY(checks() > 2);
        QCOMPARE(m_presentations->size(), 0);

        checkNow();
        QCOMPARE(m_updater->stage(), Stage::available);
        m_updater->dismiss();
        publish({{"2.0"}, {"2.1"}, {"1.9"}});
        m_clock->advance(48h);
        QCOMPARE(m_presentations->size(), 2);
        QCOMPARE(m_updater->release()->version, u"2.1"_s);
    }

    void userTakesOverAScheduledCheck() {
        m_http->hold(HttpMethod::get, feedPath);
        m_updater->start();
        m_clock->advance(1min);
        QCOMPARE(m_updater->stage(), Stage::idle);
        QVERIFY(!m_updater->canCheckForUpdates());
        // Dismissing does not cancel a scheduled check.
        m_updater->dismiss();
        m_updater->checkForUpdates();
        m_updater->checkForUpdates();
        QCOMPARE(m_updater->stage(), Stage::checking);
        m_http->release(HttpMethod::get, feedPath);
        ManualClock::settle();
        QCOMPARE(m_updater->stage(), Stage::upToDate);
        QCOMPARE(checks(), 1);
    }

    void dismissedCheckSaysNothing() {
        m_http->hold(HttpMethod::get, feedPath);
        m_updater->checkForUpdates();
        QCOMPARE(m_updater->stage(), Stage::checking);
        QCOMPARE(m_presentations->size(), 1);
        m_updater->dismiss();
        QVERIFY(m_updater->canCheckForUpdates());
        m_http->release(HttpMethod::get, feedPath);
        ManualClock::settle();
        QCOMPARE(m_updater->stage(), Stage::idle);
        QVERIFY(!m_updater->lastUpdateCheckDate());
    }

    void releasesThatCannotBeHad_data() {
        using enum UpdateError;
        QTest::addColumn<QByteArray>("archive");
        QTest::addColumn<UpdateError>("error");
        const QByteArray signedBy = " sparkle:edSignature='" + signature + "'/>";
        const auto row = [](const char* name, const QByteArray& archive, UpdateError error) {
            QTest::newRow(name) << archive << error;
        };
        row("other form", "<enclosure url='/t.AppImage' length='10'" + signedBy, noFittingArchive);
        row("no archive", "", noFittingArchive);
        row("http", "<enclosure url='http://updates.example/t.deb' length='10'" + signedBy, archiveInsecure);
        row("too large", "<enclosure url='/t.deb' length='268435457'" + signedBy, archiveTooLarge);
        row("no length", "<enclosure url='/t.deb'" + signedBy, feedMalformed);
        row("no signature", "<enclosure url='/t.deb' length='10'/>", archiveUnsigned);
        row("rubbish for one", "<enclosure url='/t.deb' length='10' sparkle:edSignature='AAAA'/>",
            archiveUnsigned);
        row("newer system",
            "<sparkle:minimumSystemVersion>2.999</sparkle:minimumSystemVersion><enclosure url='/t.deb' "
            "length='10'" +
                signedBy,
            needsNewerSystem);
    }

    /// A failure is presented for a check by the user, but not for a scheduled one.
    void releasesThatCannotBeHad() {
        QFETCH(const QByteArray, archive);
        publish({{"2.0", archive}});
        checkNow();
        QCOMPARE(m_updater->stage(), Stage::failed);
        QTEST(m_updater->error(), "error");
        m_updater->dismiss();
        m_updater->start();
        m_clock->advance(25h);
        QCOMPARE(m_updater->stage(), Stage::idle);
        QCOMPARE(checks(), 2);
    }

    void newestThatFitsIsOffered() {
        publish({{"1.9"}, {"1.10"}, {"3.0", ""}, {"2.0-beta"}, {"0.1"}});
        checkNow();
        QCOMPARE(m_updater->release()->version, u"1.10"_s);
    }

private:
    [[nodiscard]] QString settingsPath() const { return m_folder->filePath(u"updates.ini"_s); }
    [[nodiscard]] qsizetype checks() const { return m_http->count(HttpMethod::get, feedPath); }

    void publish(const QList<Release>& releases) {
        m_http->answer(HttpMethod::get, feedPath, feed(releases));
    }

    void checkNow() {
        m_updater->checkForUpdates();
        ManualClock::settle();
        QVERIFY(m_updater->canCheckForUpdates());
    }

    /// Restarts the program with the stored settings.
    void launch() {
        m_updater.reset();
        m_updater = std::make_unique<Updater>(
            Updater::Services{.http = *m_http,
                              .clock = *m_clock,
                              .workspace = m_workspace,
                              .bundle = {.identifier = {},
                                         .version = u"1.0"_s,
                                         .feedUrl = u"https://updates.example"_s + feedPath,
                                         .publicKey = QString::fromLatin1(QByteArray(32, 'k').toBase64())},
                              .installedForm = {.appImagePath = {}, .cacheFolder = m_folder->path()},
                              .settingsPath = settingsPath()});
        m_presentations = std::make_unique<QSignalSpy>(m_updater.get(), &Updater::presentationRequested);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<FakeHttpClient> m_http;
    std::unique_ptr<ManualClock> m_clock;
    FakeWorkspace m_workspace;
    std::unique_ptr<Updater> m_updater;
    std::unique_ptr<QSignalSpy> m_presentations;
};

TIDEMARK_TEST(UpdateScheduleTest)
#include "UpdateScheduleTest.moc"

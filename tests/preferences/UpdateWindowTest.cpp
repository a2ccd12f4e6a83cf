#include <QFile>
#include <QSignalSpy>

#include "tests/TestProgram.h"
#include "tests/preferences/UpdateScene.h"

using namespace tidemark;

class UpdateWindowTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { m_scene = std::make_unique<UpdateScene>(); }
    void cleanup() { m_scene.reset(); }

    void theNewestVersionIsUpToDate() {
        m_scene->check("1.4.2");
        QVERIFY(m_scene->see(u"Tidemark is up to date"_s));
        QVERIFY(!m_scene->see(u"Install"_s));
        m_scene->press(Qt::Key_Return);
        QTRY_VERIFY(!m_scene->screen().rootObject());
        QCOMPARE(m_scene->updates.controller()->stage(), Updater::Stage::idle);
    }

    void whatIsNewIsShown() {
        m_scene->check("1.10");
        QVERIFY(m_scene->see(u"Tidemark 1.10 is available"_s));
        QVERIFY(m_scene->see(u"You have 1.4.2."_s));
        QVERIFY(m_scene->see(u"Faster.\nSmaller."_s));
        for (const QString& button : {u"Skip This Version"_s, u"Later"_s, u"Install"_s})
            QVERIFY2(m_scene->see(button, QAccessible::Button), qPrintable(button));
    }

    void aFailureIsTold() {
        m_scene->http.answer(HttpMethod::get, UpdateScene::feed, httpAnswer(500));
        m_scene->updates.checkForUpdates();
        QTRY_VERIFY(m_scene->see(u"Could not check for updates"_s));
        QVERIFY(m_scene->see(m_scene->updates.controller()->errorDescription()));
    }

    void aDownloadIsCancelledByTheButtonAndByClosing_data() {
        QTest::addColumn<bool>("byButton");
        QTest::newRow("button") << true;
        QTest::newRow("closing") << false;
    }

    void aDownloadIsCancelledByTheButtonAndByClosing() {
        QFETCH(const bool, byButton);
        m_scene->http.answer(HttpMethod::get, UpdateScene::archive, httpAnswer(200, "x"));
        m_scene->http.hold(HttpMethod::get, UpdateScene::archive);
        m_scene->check("1.5");
        m_scene->press(Qt::Key_I, Qt::AltModifier);
        QTRY_VERIFY(m_scene->see(u"Downloading Tidemark 1.5"_s));
        // Once too often.
        m_scene->press(Qt::Key_Return);
        QVERIFY(m_scene->see(u"Downloading Tidemark 1.5"_s));
        if (byButton)
            m_scene->click(u"Cancel"_s);
        else
            m_scene->screen().close();
        QTRY_VERIFY(m_scene->updates.controller()->canCheckForUpdates());
        QCOMPARE(m_scene->http.pendingCount(), 0);
        QVERIFY(!m_scene->screen().isVisible());
    }

    void aWrongSignatureIsToldAndNothingIsReplaced() {
        m_scene->http.answer(HttpMethod::get, UpdateScene::archive, httpAnswer(200, "x"));
        m_scene->check("1.5");
        m_scene->click(u"Install"_s);
        QTRY_VERIFY(m_scene->see(u"The update was not installed"_s));
        QFile program(m_scene->folder.filePath(u"Tidemark"_s));
        QVERIFY(program.open(QIODevice::ReadOnly));
        QCOMPARE(program.readAll(), "old");
    }

    void aGoodUpdateIsInstalledAndStarted() {
        QSignalSpy restarts(m_scene->updates.controller(), &Updater::restartRequested);
        m_scene->http.answer(HttpMethod::get, UpdateScene::archive, httpAnswer(200, signedArchive));
        m_scene->check("1.5");
        m_scene->press(Qt::Key_Return);
        QTRY_VERIFY(m_scene->see(u"Tidemark 1.5 is installed"_s));
        m_scene->click(u"Restart Now"_s);
        QCOMPARE(restarts.count(), 1);
    }

    void aPackageIsHandedToTheSystemsInstaller() {
        m_scene = std::make_unique<UpdateScene>(Build::package);
        m_scene->http.answer(HttpMethod::get, UpdateScene::package, httpAnswer(200, signedArchive));
        m_scene->check("1.5");
        m_scene->press(Qt::Key_Return);
        QTRY_VERIFY(m_scene->see(u"Tidemark 1.5 is ready to be installed"_s));
        QCOMPARE(m_scene->workspace.files.size(), 1);
        QVERIFY(!m_scene->see(u"Restart Now"_s));
    }

    void whatCameUnaskedLeavesKeysAlone() {
        m_scene->http.answer(HttpMethod::get, UpdateScene::feed, httpAnswer(200, feedWith("1.5")));
        m_scene->clock.advance(std::chrono::minutes(1));
        QTRY_VERIFY(m_scene->screen().isVisible());
        m_scene->press(Qt::Key_Return);
        m_scene->press(Qt::Key_Space);
        m_scene->press(Qt::Key_I, Qt::AltModifier);
        m_scene->press(Qt::Key_K, Qt::AltModifier);
        QVERIFY(m_scene->screen().isVisible());
        QVERIFY(m_scene->see(u"Tidemark 1.5 is available"_s));
        m_scene->press(Qt::Key_Tab);
        QCOMPARE(m_scene->focused(), u"Install"_s);
        m_scene->press(Qt::Key_L, Qt::AltModifier);
        QVERIFY(!m_scene->screen().isVisible());
    }

    void aFailedCheckIsNotTakenForAFailedInstallation() {
        m_scene->check("1.5");
        m_scene->http.answer(HttpMethod::get, UpdateScene::feed, httpAnswer(500));
        m_scene->updates.checkForUpdates();
        QTRY_VERIFY(m_scene->see(u"Could not check for updates"_s));
    }

    void skippingClosesAndAsksForNothingMore() {
        m_scene->check("1.5");
        m_scene->click(u"Skip This Version"_s);
        QTRY_VERIFY(!m_scene->screen().rootObject());
        // Two days of the schedule.
        m_scene->clock.advance(std::chrono::hours(48));
        ManualClock::settle();
        QVERIFY(!m_scene->screen().isVisible());
    }

private:
    std::unique_ptr<UpdateScene> m_scene;
};

TIDEMARK_TEST_MAIN(UpdateWindowTest, runViewTest<UpdateWindowTest>)
#include "UpdateWindowTest.moc"

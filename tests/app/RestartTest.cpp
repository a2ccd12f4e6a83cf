
#include "tests/TestProgram.h"
#include "tests/fakes/DesktopSession.h"

using namespace tidemark::desktopsession;
using tidemark::sandbox::Sandbox;

/// What the desktop's services do to each other: they die, return, and come late. The program stays.
class RestartTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() {
        startSurroundings(m_sandbox, m_windowManager);
        // Or the bus starts one for the first notification, of which we would know nothing.
        startDaemon();
    }

    void init() { setStates({u"READY"_s, u"READY"_s, u"READY"_s}); }

    void cleanup() {
        quit(m_demo);
        QCOMPARE(m_demo.exitStatus(), QProcess::NormalExit);
        QCOMPARE(m_demo.exitCode(), 0);
        killAndWait(m_panel, watcherName);
    }

    void cleanupTestCase() {
        quit(m_daemon);
        quit(m_windowManager);
    }

    void itemsComeBackWithThePanel_data() {
        QTest::addColumn<QString>("panel");
        QTest::newRow("XFCE") << QStringLiteral(TESTS_FOLDER "/start-panel");
        QTest::newRow("LXQt") << QStringLiteral(TESTS_FOLDER "/start-lxqt-panel");
    }

    void itemsComeBackWithThePanel() {
        QFETCH(const QString, panel);
        launchPanel(m_panel, panel);
        startDemo();
        QTRY_COMPARE(itemProperty(u"Title"_s), QVariant(u"Tidemark — 3 live"_s));
        killAndWait(m_panel, watcherName);
        // Nobody sees this change at the time.
        setStates({u"ERROR"_s, u"READY"_s, u"BUILDING"_s});
        launchPanel(m_panel, panel);
        QTRY_COMPARE(itemProperty(u"Title"_s), QVariant(u"Tidemark — 1 error"_s));
        for (int i = 0; i < 2; ++i) {
            const auto project = m_sandbox->world()->projectAt(i);
            const QString title = project.name + u": "_s + project.deployments.first().state;
            QTRY_COMPARE(itemProperty(u"Title"_s, u"tidemark-"_s + project.id), QVariant(title));
        }
    }

    void notificationsArriveAfterTheDaemonsRestart() {
        launchPanel(m_panel, QStringLiteral(TESTS_FOLDER "/start-panel"));
        restartDaemon();
        startDemo();
        const auto isAnnounced = [this](int index) {
            const auto project = m_sandbox->world()->projectAt(index);
            QTRY_COMPARE(itemProperty(u"Title"_s, u"tidemark-"_s + project.id),
                         QVariant(project.name + u": READY"_s));
            m_sandbox->world()->setState(project.id, u"ERROR"_s);
            QTRY_COMPARE(output(u"dunstctl"_s, {u"count"_s, u"displayed"_s}), u"1"_s);
        };
        isAnnounced(0);
        if (QTest::currentTestFailed())
            return;
        restartDaemon();
        isAnnounced(1);
    }

    void withoutATrayThePopoverIsAWindowUntilOneAppears() {
        startDemo();
        QTRY_VERIFY(isOnTheBus(u"com.tidemark.Demo"_s));
        QProcess second;
        tidemark::desktopsession::startDemo(second, QStringLiteral(DEMO), *m_sandbox, {});
        QVERIFY(second.waitForFinished(hangLimit));
        QTRY_VERIFY(!popover().isEmpty());
        QVERIFY(QRect(0, 0, 1280, 800).contains(popover()));
        output(u"xdotool"_s, {u"key"_s, u"Escape"_s});
        QTRY_VERIFY(popover().isEmpty());
        launchPanel(m_panel, QStringLiteral(TESTS_FOLDER "/start-panel"));
        QTRY_COMPARE(itemProperty(u"Title"_s), QVariant(u"Tidemark — 3 live"_s));
    }

private:
    static inline const QString daemonName = u"org.freedesktop.Notifications"_s;

    void setStates(const QStringList& states) {
        for (int i = 0; i < states.size(); ++i) {
            const QString id = m_sandbox->world()->projectAt(i).id;
            m_sandbox->world()->push(id, {.state = states.at(i)});
        }
    }

    void startDemo() {
        tidemark::desktopsession::startDemo(m_demo, QStringLiteral(DEMO), *m_sandbox,
                                            {u"--pinned"_s, u"2"_s});
        QVERIFY(m_demo.waitForStarted(hangLimit));
    }

    void startDaemon() {
        m_daemon.start(u"dunst"_s, QStringList());
        QVERIFY(m_daemon.waitForStarted(hangLimit));
        QTRY_VERIFY(isOnTheBus(daemonName));
    }

    void restartDaemon() {
        killAndWait(m_daemon, daemonName);
        startDaemon();
    }

    std::unique_ptr<Sandbox> m_sandbox;
    QProcess m_windowManager;
    QProcess m_panel;
    QProcess m_daemon;
    QProcess m_demo;
};

TIDEMARK_TEST(RestartTest)
#include "RestartTest.moc"

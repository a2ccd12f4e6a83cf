#include <QTemporaryDir>

#include "platform/tray/DBusMenu.h"
#include "tests/TestProgram.h"
#include "tests/fakes/DesktopSession.h"
#include "tests/fakes/Files.h"

using namespace Qt::StringLiterals;
using namespace tidemark::desktopsession;
using tidemark::sandbox::Sandbox;

namespace {

/// The last entry of the menu that the item with this bus name exports.
int lastMenuEntry(const QString& service) {
    QDBusMessage get =
        QDBusMessage::createMethodCall(service, u"/MenuBar"_s, u"com.canonical.dbusmenu"_s, u"GetLayout"_s);
    get << 0 << 1 << QStringList();
    const QDBusMessage reply = QDBusConnection::sessionBus().call(get, QDBus::Block, hangLimit);
    const auto layout = qdbus_cast<tidemark::DBusMenuLayout>(reply.arguments().value(1));
    return layout.children.isEmpty()
               ? 0
               : qdbus_cast<tidemark::DBusMenuLayout>(layout.children.last().variant()).id;
}

}  // namespace

/// The programs as they are shipped, in a panel that people run.
class ProgramTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { startSurroundings(m_sandbox, m_windowManager); }

    void cleanupTestCase() { quit(m_windowManager); }

    void cleanup() {
        quit(m_demo);
        QCOMPARE(m_demo.exitStatus(), QProcess::NormalExit);
        QCOMPARE(m_demo.exitCode(), 0);  // with the sanitizers' approval
        stopPanel();
    }

    void theItemFollowsTheStates_data() {
        QTest::addColumn<QString>("panel");
        QTest::newRow("XFCE") << u"/start-panel"_s;
        QTest::newRow("LXQt") << u"/start-lxqt-panel"_s;
    }

    void theItemFollowsTheStates() {
        QFETCH(const QString, panel);
        // Before anything else runs: a program that starts at login is often first.
        startDemo(2);
        startPanel(panel);
        const auto shows = [this](const QStringList& states, const QString& summary) {
            for (int i = 0; i < 3; ++i)
                m_sandbox->world()->push(m_sandbox->world()->projectAt(i).id, {.state = states.at(i)});
            const QString title = summary.isEmpty() ? u"Tidemark"_s : u"Tidemark — "_s + summary;
            QTRY_COMPARE(itemProperty(u"Title"_s), QVariant(title));
            QTRY_COMPARE(itemProperty(u"XAyatanaLabel"_s), QVariant(summary));
        };
        shows({u"READY"_s, u"READY"_s, u"READY"_s}, u"3 live"_s);
        shows({u"READY"_s, u"READY"_s, u"MYSTERIOUS"_s}, QString());
        stopPanel();
        // Nobody sees this change at the time.
        const QStringList states{u"ERROR"_s, u"READY"_s, u"BUILDING"_s};
        for (int i = 0; i < 3; ++i)
            m_sandbox->world()->push(m_sandbox->world()->projectAt(i).id, {.state = states.at(i)});
        startPanel(panel);
        shows(states, u"1 error"_s);
        for (int i = 0; i < 2; ++i) {
            const auto project = m_sandbox->world()->projectAt(i);
            QTRY_COMPARE(itemProperty(u"Title"_s, u"tidemark-"_s + project.id),
                         QVariant(project.name + u": "_s + states.at(i)));
        }
    }

    void aChangeIsAnnouncedAndOpensItsPage() {
        // In place of a browser.
        const QString opener = m_folder.filePath(u"xdg-open"_s);
        tidemark::writeFile(opener,
                            "#!/bin/sh\nprintf %s \"$1\" >\"$0.tmp\" && mv \"$0.tmp\" \"$0.opened\"\n");
        QFile::setPermissions(opener, QFile::ReadOwner | QFile::ExeOwner);
        QProcess daemon;
        daemon.start(u"dunst"_s, QStringList());
        QTRY_VERIFY(isOnTheBus(u"org.freedesktop.Notifications"_s));
        // Of the tests before, whose notifications the bus may have started the daemon for.
        const auto count = [](const QString& kind) { return output(u"dunstctl"_s, {u"count"_s, kind}); };
        output(u"dunstctl"_s, {u"close-all"_s});
        QTRY_COMPARE(count(u"displayed"_s) + count(u"waiting"_s), u"00"_s);
        const auto project = m_sandbox->world()->projectAt(0);
        m_sandbox->world()->push(project.id, {.state = u"BUILDING"_s});
        startPanel();
        startDemo(1);
        const QString pill = u"tidemark-"_s + project.id;
        QTRY_COMPARE(itemProperty(u"Title"_s, pill), QVariant(project.name + u": BUILDING"_s));
        m_sandbox->world()->setState(project.id, u"READY"_s);
        QTRY_COMPARE(count(u"displayed"_s), u"1"_s);
        QVERIFY(output(u"dunstctl"_s, {u"action"_s, u"0"_s}).isEmpty());
        const QString opened = opener + u".opened"_s;
        QTRY_VERIFY(QFile::exists(opened));
        QCOMPARE(QString::fromUtf8(tidemark::contentsOf(opened)),
                 m_sandbox->world()->projectAt(0).deployments.first().inspectorUrl);

        // "Quit Tidemark" ends it in order.
        QDBusMessage click = QDBusMessage::createMethodCall(itemProperty({}, pill).toString(), u"/MenuBar"_s,
                                                            u"com.canonical.dbusmenu"_s, u"Event"_s);
        const QVariant data = QVariant::fromValue(QDBusVariant(0));
        click << lastMenuEntry(itemProperty({}, pill).toString()) << u"clicked"_s << data << 0U;
        QDBusConnection::sessionBus().send(click);
        QVERIFY(m_demo.waitForFinished(hangLimit));
        quit(daemon);
    }

    void aClickOnTheItemOpensThePopover() {
        startPanel();
        startDemo();
        QTRY_COMPARE(itemProperty(u"XAyatanaLabel"_s).isValid(), true);
        // Until the panel has settled the item may still move; a click that missed it is repeated.
        for (int attempt = 0; attempt < 6 && popover().isEmpty(); ++attempt) {
            clickAt(itemPlace);
            (void)QTest::qWaitFor([] { return !popover().isEmpty(); }, hangLimit / 6);
        }
        const QRect window = popover();
        QCOMPARE(window.width(), 268);
        QVERIFY(window.left() <= itemPlace.x() && window.right() < 1280);
        QVERIFY(window.top() >= panelSize && window.top() < panelSize + 10);
        clickAt({300, 500});
        QTRY_VERIFY(popover().isEmpty());
        // The click that closes it does not open it again.
        clickAt(itemPlace);
        QTRY_VERIFY(!popover().isEmpty());
        clickAt(itemPlace);
        QTRY_VERIFY(popover().isEmpty());
        QVERIFY(!QTest::qWaitFor([] { return !popover().isEmpty(); }, 1000));
        clickAt(itemPlace);
        QTRY_VERIFY(!popover().isEmpty());
        output(u"xdotool"_s, {u"key"_s, u"Escape"_s});
        QTRY_VERIFY(popover().isEmpty());

        // Started again, it comes up where nobody clicked.
        QProcess second;
        second.start(QStringLiteral(DEMO), {u"--address"_s, m_sandbox->baseUrl().toString()});
        QVERIFY(second.waitForFinished(hangLimit));
        QCOMPARE(second.exitStatus(), QProcess::NormalExit);
        QCOMPARE(second.exitCode(), 0);
        QTRY_VERIFY(!popover().isEmpty());
    }

    void theFirstStartIsDoneWithTheKeyboardAlone() {
        startDemo(0, {u"--first-start"_s});
        QTRY_VERIFY(isPreferencesShown());
        QTRY_COMPARE(activeTitle(), u"Tidemark Preferences"_s);
        const auto account = m_sandbox->accounts().first();
        // Into the token's field, and on to that of the team: past the button that shows the token.
        output(u"xdotool"_s, {u"type"_s, account.token});
        output(u"xdotool"_s, {u"key"_s, u"Tab"_s, u"Tab"_s});
        if (!account.teamId.isEmpty())
            output(u"xdotool"_s, {u"type"_s, account.teamId});
        m_sandbox->log().clear();
        output(u"xdotool"_s, {u"key"_s, u"Return"_s});
        QTRY_VERIFY(m_sandbox->log().total() > 0);
        QTRY_VERIFY(!isPreferencesShown());
    }

    void theShippedProgramTakesNoOption() {
        startPanel();
        QProcess program;
        program.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        program.start(QStringLiteral(PROGRAM),
                      {u"--address"_s, m_sandbox->baseUrl().toString(), u"--help"_s});
        m_sandbox->log().clear();
        QTRY_COMPARE(itemProperty(u"Title"_s).toString(), u"Tidemark"_s);
        QVERIFY(isOnTheBus(u"com.tidemark.Tidemark"_s));
        QCOMPARE(m_sandbox->log().total(), 0);
        quit(program);
        QCOMPARE(program.exitCode(), 0);
    }

private:
    static constexpr int panelSize = 30;
    /// At the panel's end, where the item is when it is the only one.
    static constexpr QPoint itemPlace{1265, 15};

    static void clickAt(QPoint place) {
        output(u"xdotool"_s,
               {u"mousemove"_s, QString::number(place.x()), QString::number(place.y()), u"click"_s, u"1"_s});
    }

    void startDemo(int pinned = 0, const QStringList& more = {}) {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"PATH"_s, m_folder.path() + u':' + environment.value(u"PATH"_s));
        environment.insert(u"CANBERRA_DRIVER"_s, u"null"_s);
        m_demo.setProcessEnvironment(environment);
        m_demo.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_demo.start(
            QStringLiteral(DEMO),
            QStringList{u"--address"_s, m_sandbox->baseUrl().toString(), u"--seed"_s, u"3"_s, u"--projects"_s,
                        u"3"_s, u"--interval"_s, u"1"_s, u"--pinned"_s, QString::number(pinned)} +
                more);
        QVERIFY(m_demo.waitForStarted(hangLimit));
    }

    void startPanel(const QString& script = u"/start-panel"_s) {
        m_panel.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        launchPanel(m_panel, QStringLiteral(TESTS_FOLDER) + script, {QString::number(panelSize)});
    }

    void stopPanel() { killAndWait(m_panel, watcherName); }

    std::unique_ptr<Sandbox> m_sandbox;
    QProcess m_windowManager;
    QProcess m_panel;
    QProcess m_demo;
    /// Comes first in the program's search path.
    QTemporaryDir m_folder;
};

TIDEMARK_TEST(ProgramTest)
#include "ProgramTest.moc"

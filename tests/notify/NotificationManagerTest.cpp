#include "notify/NotificationManager.h"
#include "tests/fakes/FakeNotificationCenter.h"
#include "tests/fakes/FakeSoundPlayer.h"
#include "tests/fakes/FakeWorkspace.h"
#include "tests/fakes/ManualClock.h"

#include <QTest>

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

Deployment deploymentIn(const QString& state, std::optional<QString> inspectorUrl = std::nullopt) {
    Deployment deployment;
    deployment.state = state;
    deployment.inspectorUrl = std::move(inspectorUrl);
    return deployment;
}

/// A manager with everything around it.
struct Scene {
    explicit Scene(const QString& identifier = u"com.example.App"_s)
        : manager(center, sounds, workspace, clock, {.identifier = identifier}) {}

    void see(const QString& projectId, const QString& state,
             std::optional<QString> inspectorUrl = std::nullopt) {
        manager.checkAndNotify(projectId, u"Shop"_s, deploymentIn(state, std::move(inspectorUrl)));
    }
    [[nodiscard]] QStringList bodies() const {
        QStringList result;
        for (const auto& request : center.requests)
            result.append(request.body);
        return result;
    }

    FakeNotificationCenter center;
    FakeSoundPlayer sounds;
    FakeWorkspace workspace;
    ManualClock clock;
    NotificationManager manager;
};

class NotificationManagerTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void announcesEveryChangeOfState_data();
    void announcesEveryChangeOfState();
    void announcesOnlyChanges();
    void soundSwitchLeavesNotificationsAlone();
    void asksForPermissionAtTheFirstChange();
    void identifierHoldsTheTime_data();
    void identifierHoldsTheTime();
    void clickOpensTheInspector_data();
    void clickOpensTheInspector();
    void withoutBundleIdentifierOnlyRemembers();
};

void NotificationManagerTest::announcesEveryChangeOfState_data() {
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("after");
    QTest::addColumn<QString>("body");
    QTest::addColumn<QStringList>("sounds");
    const QStringList none;
    QTest::newRow("goes live") << "BUILDING"
                               << "READY"
                               << "⏳ Building  →  ✅ Ready" << QStringList{u"Glass"_s};
    QTest::newRow("fails") << "BUILDING"
                           << "ERROR"
                           << "⏳ Building  →  ❌ Failed" << QStringList{u"Basso"_s};
    QTest::newRow("is canceled") << "QUEUED"
                                 << "CANCELED"
                                 << "⏳ Queued  →  🚫 Canceled" << QStringList{u"Basso"_s};
    QTest::newRow("builds again") << "READY"
                                  << "BUILDING"
                                  << "✅ Ready  →  ⏳ Building" << none;
    QTest::newRow("same emoji, other state") << "QUEUED"
                                             << "INITIALIZING"
                                             << "⏳ Queued  →  ⏳ Initializing" << none;
    QTest::newRow("no state that we know") << "READY"
                                           << "ready"
                                           << "✅ Ready  →  ⚪ Unknown" << none;
    QTest::newRow("out of the unknown") << ""
                                        << "READY"
                                        << "⚪ Unknown  →  ✅ Ready" << QStringList{u"Glass"_s};
    QTest::newRow("failed, then canceled") << "ERROR"
                                           << "CANCELED"
                                           << "❌ Failed  →  🚫 Canceled" << QStringList{u"Basso"_s};
}

void NotificationManagerTest::announcesEveryChangeOfState() {
    QFETCH(QString, before);
    QFETCH(QString, after);
    QFETCH(QString, body);
    Scene scene;
    scene.see(u"prj_1"_s, before);
    QVERIFY(scene.center.requests.isEmpty());
    scene.see(u"prj_1"_s, after);
    const NotificationRequest expected{
        .identifier = u"prj_1-1700000000.0"_s, .title = u"Shop"_s, .body = body, .userInfo = {}};
    QCOMPARE(scene.center.requests, QList{expected});
    QTEST(scene.sounds.names, "sounds");
}

void NotificationManagerTest::announcesOnlyChanges() {
    Scene scene;
    for (const auto& project : {u"a"_s, u"b"_s}) {
        scene.see(project, u"READY"_s);
        scene.see(project, u"READY"_s);
    }
    // Two texts that name no state are the same state.
    scene.see(u"c"_s, u"PAUSED"_s);
    scene.see(u"c"_s, u""_s);
    QCOMPARE(scene.bodies(), QStringList());

    scene.see(u"a"_s, u"ERROR"_s);
    scene.see(u"a"_s, u"ERROR"_s);
    scene.see(u"b"_s, u"READY"_s);
    scene.see(u"a"_s, u"READY"_s);
    const QStringList expected{u"✅ Ready  →  ❌ Failed"_s, u"❌ Failed  →  ✅ Ready"_s};
    QCOMPARE(scene.bodies(), expected);
}

void NotificationManagerTest::soundSwitchLeavesNotificationsAlone() {
    Scene scene;
    QVERIFY(scene.manager.soundEnabled());
    scene.see(u"a"_s, u"BUILDING"_s);
    scene.manager.setSoundEnabled(false);
    scene.see(u"a"_s, u"READY"_s);
    QCOMPARE(scene.bodies(), QStringList{u"⏳ Building  →  ✅ Ready"_s});
    QCOMPARE(scene.sounds.names, QStringList());
    scene.manager.setSoundEnabled(true);
    scene.see(u"a"_s, u"ERROR"_s);
    QCOMPARE(scene.sounds.names, QStringList{u"Basso"_s});
}

void NotificationManagerTest::asksForPermissionAtTheFirstChange() {
    Scene scene;
    scene.see(u"a"_s, u"BUILDING"_s);
    scene.see(u"b"_s, u"BUILDING"_s);
    QCOMPARE(scene.center.authorizations, 0);
    for (const auto& project : {u"a"_s, u"b"_s}) {
        scene.see(project, u"READY"_s);
        QCOMPARE(scene.center.authorizations, 1);
    }
}

void NotificationManagerTest::identifierHoldsTheTime_data() {
    QTest::addColumn<qint64>("milliseconds");
    QTest::addColumn<QString>("identifier");
    QTest::newRow("whole seconds") << qint64(1'700'000'000'000) << "a-1700000000.0";
    QTest::newRow("milliseconds") << qint64(1'700'000'000'123) << "a-1700000000.123";
    QTest::newRow("no trailing zeros") << qint64(1'700'000'000'500) << "a-1700000000.5";
    QTest::newRow("no exponent when large") << qint64(9'000'000'000'000'000) << "a-9000000000000.0";
    QTest::newRow("no exponent when small") << qint64(1) << "a-0.001";
    QTest::newRow("a clock that was never set") << qint64(0) << "a-0.0";
    QTest::newRow("before 1970") << qint64(-1500) << "a--1.5";
}

void NotificationManagerTest::identifierHoldsTheTime() {
    QFETCH(qint64, milliseconds);
    Scene scene;
    scene.clock.setNow(Clock::TimePoint(std::chrono::milliseconds(milliseconds)));
    scene.see(u"a"_s, u"BUILDING"_s);
    scene.see(u"a"_s, u"READY"_s);
    QTEST(scene.center.requests.constFirst().identifier, "identifier");
}

void NotificationManagerTest::clickOpensTheInspector_data() {
    QTest::addColumn<std::optional<QString>>("inspectorUrl");
    QTest::addColumn<bool>("opens");
    const auto row = [](const char* name, const std::optional<QString>& url, bool opens) {
        QTest::newRow(name) << url << opens;
    };
    row("https", u"https://vercel.com/team/shop/dpl_1?tab=logs#end"_s, true);
    row("http and a port", u"http://localhost:3000/x"_s, true);
    row("capitals", u"HTTPS://VERCEL.COM/a"_s, true);
    row("none", std::nullopt, false);
    row("empty", u""_s, false);
    row("relative", u"/team/shop"_s, false);
    row("no scheme", u"vercel.com/team"_s, false);
    row("no host", u"https:///etc/passwd"_s, false);
    row("opaque", u"https:vercel.com"_s, false);
    row("script", u"javascript:alert(1)"_s, false);
    row("file", u"file:///etc/passwd"_s, false);
    row("another program's", u"vscode://file/etc/passwd"_s, false);
    row("scheme that begins alike", u"httpsx://vercel.com/"_s, false);
    row("space before", u" https://vercel.com/"_s, false);
    row("line end", u"https://vercel.com/\n--new-window"_s, false);
    row("space within", u"https://vercel.com/a b"_s, false);
    row("NUL", u"https://vercel.com/"_s + QChar(u'\0'), false);
    row("bad port", u"https://vercel.com:99999/"_s, false);
    row("bad host", u"https://ver[cel.com/"_s, false);
    row("an option", u"--version"_s, false);
}

void NotificationManagerTest::clickOpensTheInspector() {
    QFETCH(std::optional<QString>, inspectorUrl);
    QFETCH(bool, opens);
    Scene scene;
    scene.see(u"a"_s, u"BUILDING"_s, u"https://vercel.com/an/earlier/one"_s);
    scene.see(u"a"_s, u"READY"_s, inspectorUrl);
    NotificationCenter::UserInfo expected;
    if (inspectorUrl)
        expected.insert(u"inspectorUrl"_s, *inspectorUrl);
    QCOMPARE(scene.center.requests.constFirst().userInfo, expected);

    scene.center.click(0);
    QCOMPARE(scene.workspace.urls, opens ? QList{QUrl(*inspectorUrl)} : QList<QUrl>());
    QCOMPARE(scene.workspace.files, QStringList());
}

void NotificationManagerTest::withoutBundleIdentifierOnlyRemembers() {
    Scene scene{QString()};
    scene.see(u"a"_s, u"BUILDING"_s);
    scene.see(u"a"_s, u"READY"_s);
    QCOMPARE(scene.bodies(), QStringList());
    QCOMPARE(scene.center.authorizations, 0);
    QCOMPARE(scene.sounds.names, QStringList());
    QVERIFY(!scene.center.handler);
}

}  // namespace
}  // namespace tidemark

QTEST_GUILESS_MAIN(tidemark::NotificationManagerTest)
#include "NotificationManagerTest.moc"

#include <array>

#include "notify/NotificationManager.h"
#include "tests/TestProgram.h"
#include "tests/fakes/FakeNotificationCenter.h"
#include "tests/fakes/FakeSoundPlayer.h"
#include "tests/fakes/FakeWorkspace.h"
#include "tests/fakes/ManualClock.h"

namespace tidemark {
namespace {

using namespace Qt::StringLiterals;

/// A manager with its services.
struct Scene {
    explicit Scene(const QString& identifier = u"com.example.App"_s)
        : manager(center, sounds, workspace, clock, {.identifier = identifier}) {}

    void see(const QString& projectId, const QString& state,
             const std::optional<QString>& inspectorUrl = std::nullopt) {
        manager.checkAndNotify(projectId, u"Shop"_s, {.state = state, .inspectorUrl = inspectorUrl});
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
    void announcesEveryChangeOfState() {
        const QList<std::array<QString, 4>> rows{
            {u"BUILDING"_s, u"READY"_s, u"⏳ Building  →  ✅ Ready"_s, u"Glass"_s},
            {u"BUILDING"_s, u"ERROR"_s, u"⏳ Building  →  ❌ Failed"_s, u"Basso"_s},
            {u"ERROR"_s, u"CANCELED"_s, u"❌ Failed  →  🚫 Canceled"_s, u"Basso"_s},
            {u"QUEUED"_s, u"INITIALIZING"_s, u"⏳ Queued  →  ⏳ Initializing"_s, {}},
            {u"READY"_s, u"ready"_s, u"✅ Ready  →  ⚪ Unknown"_s, {}},
            {u""_s, u"READY"_s, u"⚪ Unknown  →  ✅ Ready"_s, u"Glass"_s}};
        for (const auto& [before, after, body, sound] : rows) {
            Scene scene;
            scene.see(u"prj_1"_s, before);
            QVERIFY(scene.center.requests.isEmpty());
            QCOMPARE(scene.center.authorizations, 0);
            scene.see(u"prj_1"_s, after);
            const NotificationRequest request = scene.center.requests.constFirst();
            QCOMPARE(request.identifier, u"prj_1-1700000000.0"_s);
            QCOMPARE(request.title, u"Shop"_s);
            QCOMPARE(request.body, body);
            QCOMPARE(scene.sounds.names.join(u' '), sound);
        }
    }

    void announcesOnlyChanges() {
        Scene scene;
        for (const auto& project : {u"a"_s, u"b"_s}) {
            scene.see(project, u"READY"_s);
            scene.see(project, u"READY"_s);
        }
        // Two unknown texts are the same state.
        scene.see(u"c"_s, u"PAUSED"_s);
        scene.see(u"c"_s, u""_s);
        QCOMPARE(scene.bodies(), QStringList());

        scene.see(u"a"_s, u"ERROR"_s);
        scene.see(u"a"_s, u"ERROR"_s);
        scene.see(u"b"_s, u"READY"_s);
        scene.manager.setSoundEnabled(false);
        scene.see(u"a"_s, u"READY"_s);
        const QStringList expected{u"✅ Ready  →  ❌ Failed"_s, u"❌ Failed  →  ✅ Ready"_s};
        QCOMPARE(scene.bodies(), expected);
        QCOMPARE(scene.sounds.names, QStringList{u"Basso"_s});
        QCOMPARE(scene.center.authorizations, 1);
    }

    void identifierHoldsTheTime() {
        const auto identifier = [](qint64 milliseconds) {
            Scene scene;
            scene.clock.setNow(Clock::TimePoint(std::chrono::milliseconds(milliseconds)));
            scene.see(u"a"_s, u"BUILDING"_s);
            scene.see(u"a"_s, u"READY"_s);
            return scene.center.requests.constFirst().identifier;
        };
        QCOMPARE(identifier(1'700'000'000'123), u"a-1700000000.123"_s);
        QCOMPARE(identifier(1'700'000'000'500), u"a-1700000000.5"_s);
        QCOMPARE(identifier(9'000'000'000'000'000), u"a-9000000000000.0"_s);  // no exponent
        QCOMPARE(identifier(1), u"a-0.001"_s);
        QCOMPARE(identifier(-1500), u"a--1.5"_s);
    }

    void clickOpensTheInspector() {
        const auto opened = [](const std::optional<QString>& inspectorUrl) {
            Scene scene;
            scene.see(u"a"_s, u"BUILDING"_s, u"https://vercel.com/an/earlier/one"_s);
            scene.see(u"a"_s, u"READY"_s, inspectorUrl);
            scene.center.click(0);
            return scene.workspace.urls;
        };
        for (const auto& page : {u"https://vercel.com/team/shop/dpl_1?tab=logs#end"_s,
                                 u"http://localhost:3000/x"_s, u"HTTPS://VERCEL.COM/a"_s})
            QCOMPARE(opened(page), QList{QUrl(page)});
        QCOMPARE(opened(std::nullopt), QList<QUrl>());
        for (const auto& refused :
             {u""_s, u"/team/shop"_s, u"vercel.com/team"_s, u"https:///etc/passwd"_s, u"https:vercel.com"_s,
              u"javascript:alert(1)"_s, u"file:///etc/passwd"_s, u"vscode://file/etc/passwd"_s,
              u"httpsx://vercel.com/"_s, u" https://vercel.com/"_s, u"https://vercel.com/\n--new-window"_s,
              u"https://vercel.com/a b"_s, u"https://vercel.com/"_s + QChar(u'\0'),
              u"https://vercel.com:99999/"_s, u"https://ver[cel.com/"_s, u"--version"_s})
            QVERIFY2(opened(refused).isEmpty(), qPrintable(refused));
    }

    void buttonsDoWhatTheySay() {
        Scene scene;
        QStringList redeployed;
        const auto titles = [&scene] {
            QStringList result;
            for (const auto& action : scene.center.requests.constLast().actions)
                result.append(action.title);
            return result.join(u' ');
        };
        scene.see(u"a"_s, u"BUILDING"_s);
        scene.see(u"a"_s, u"ERROR"_s);
        QCOMPARE(titles(), u"Redeploy"_s);
        scene.center.click(0, u"redeploy"_s);  // there is no handler
        scene.manager.setHandlers({.open = {}, .redeploy = [&](const QString& id) { redeployed += id; }});
        scene.center.click(0, u"redeploy"_s);
        QCOMPARE(redeployed, QStringList{u"a"_s});
        scene.see(u"a"_s, u"READY"_s, u"https://vercel.com/a"_s);
        QCOMPARE(titles(), u" Open"_s);  // the first is the click
        scene.center.click(1, u"open"_s);
        QCOMPARE(scene.workspace.urls, QList{QUrl(u"https://vercel.com/a"_s)});
        scene.see(u"a"_s, u"ERROR"_s, u"https://vercel.com/b"_s);
        scene.center.click(2, u"redeploy"_s);
        QCOMPARE(redeployed.size(), 2);
        QCOMPARE(scene.workspace.urls.size(), 1);
        scene.see(u"a"_s, u"CANCELED"_s, u"file:///etc/passwd"_s);
        QCOMPARE(titles(), QString());
    }

    void announcementsOpenTheProgram() {
        using Opens = NotificationManager::Opens;
        Scene scene;
        QList<Opens> opened;
        scene.manager.announce(u"Title"_s, u"Text"_s, Opens::preferences);
        scene.center.click(0);  // there is no handler
        scene.manager.setHandlers({.open = [&](Opens what) { opened += what; }, .redeploy = {}});
        scene.center.click(0);
        scene.manager.announce(u"Title"_s, u"Text"_s, Opens::popover);
        scene.center.click(1);
        QCOMPARE(opened, (QList{Opens::preferences, Opens::popover}));
        QVERIFY(scene.workspace.urls.isEmpty() && scene.sounds.names.isEmpty());
    }

    void withoutBundleIdentifierNothingIsAnnounced() {
        Scene scene{QString()};
        scene.see(u"a"_s, u"BUILDING"_s);
        scene.see(u"a"_s, u"READY"_s);
        QCOMPARE(scene.bodies(), QStringList());
        QCOMPARE(scene.center.authorizations, 0);
        QCOMPARE(scene.sounds.names, QStringList());
        QVERIFY(!scene.center.handler);
    }
};

}  // namespace
}  // namespace tidemark

TIDEMARK_TEST(tidemark::NotificationManagerTest)
#include "NotificationManagerTest.moc"

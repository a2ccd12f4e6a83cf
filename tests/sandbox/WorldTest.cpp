#include "sandbox/World.h"

#include <QSet>
#include <QTest>

using namespace tidemark::sandbox;
using namespace Qt::StringLiterals;

namespace {

constexpr qint64 start = 1'700'000'000'000;
constexpr qint64 minute = 60'000;
constexpr qint64 hour = 60 * minute;

/// A world on a clock that the test moves.
struct WorldScene {
    explicit WorldScene(SandboxOptions options = {}) {
        options.now = [this] { return now; };
        world = std::make_unique<World>(options);
    }

    void pass(qint64 ms) {
        now += ms;
        world->advance();
    }

    qint64 now = start;
    std::unique_ptr<World> world;
};

QList<Deployment> newest(const World& world) {
    QList<Deployment> all;
    for (int index = 0; index < world.projectCount(); ++index)
        all.append(world.projectAt(index).deployments.value(0));
    return all;
}

QList<QList<Deployment>> histories(const World& world) {
    QList<QList<Deployment>> all;
    for (int index = 0; index < world.projectCount(); ++index)
        all.append(world.projectAt(index).deployments);
    return all;
}

/// Follows a project's newest deployment until it no longer changes.
QStringList statesLived(WorldScene& scene, const QString& project) {
    QStringList states;
    for (int second = 0; second < 600; ++second) {
        const QString state = scene.world->project(project)->deployments.first().state;
        if (states.isEmpty() || states.last() != state)
            states.append(state);
        scene.pass(1000);
    }
    return states;
}

}  // namespace

class WorldTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void equalSeedsGiveEqualWorlds() {
        WorldScene one({.seed = 7});
        WorldScene same({.seed = 7});
        WorldScene other({.seed = 8});
        one.pass(6 * hour);
        same.pass(6 * hour);
        other.pass(6 * hour);
        QCOMPARE(histories(*one.world), histories(*same.world));
        QCOMPARE(one.world->accounts(), same.world->accounts());
        QCOMPARE(one.world->zones(), same.world->zones());
        QVERIFY(histories(*one.world) != histories(*other.world));
        QVERIFY(one.world->cloudflareToken() != other.world->cloudflareToken());
    }

    void lookingOftenChangesNothing() {
        WorldScene watched;
        WorldScene left;
        for (int step = 0; step < 2000; ++step)
            watched.pass(18'000);
        left.pass(10 * hour);
        QCOMPARE(histories(*watched.world), histories(*left.world));
    }

    void pushByHandDoesNotDisturbTheSchedule() {
        WorldScene played;
        WorldScene left;
        const QString quiet = u"trail_log"_s;
        QVERIFY(played.world->project(quiet)->quiet);
        QVERIFY(played.world->push(quiet));
        played.pass(5 * hour);
        left.pass(5 * hour);
        QCOMPARE(newest(*played.world).mid(0, 11), newest(*left.world).mid(0, 11));
    }

    void opensWithSomethingOfEverything() {
        const WorldScene scene({.speed = 0});
        QSet<QString> states;
        for (const Deployment& deployment : newest(*scene.world))
            states.insert(deployment.state);
        QCOMPARE(states, QSet<QString>({u"READY"_s, u"BUILDING"_s, u"QUEUED"_s, u"ERROR"_s, u"CANCELED"_s,
                                        QString()}));  // the last was never deployed
    }

    void historiesAreBelievable() {
        WorldScene scene({.seed = 3, .projects = 60});
        scene.pass(20 * hour);
        for (const QList<Deployment>& history : histories(*scene.world)) {
            QVERIFY(history.size() <= 40);
            for (qsizetype index = 0; index < history.size(); ++index) {
                const Deployment& each = history.at(index);
                QVERIFY(each.created <= scene.now);
                QVERIFY(index == 0 || each.created < history.at(index - 1).created);
                QCOMPARE(each.ready != 0, each.state == u"READY");
                QVERIFY(each.ready == 0 || (each.created < each.buildingAt && each.buildingAt < each.ready));
                QVERIFY(each.ready <= scene.now);
            }
        }
    }

    void namesAndIdsAreDistinct() {
        const WorldScene scene({.projects = 3000, .speed = 0});
        QSet<QString> seen;
        qint64 previous = std::numeric_limits<qint64>::max();
        for (int index = 0; index < scene.world->projectCount(); ++index) {
            const Project& project = scene.world->projectAt(index);
            seen.insert(project.id);
            seen.insert(project.name);
            QVERIFY2(project.updated < previous, "pages are cut at these");
            previous = project.updated;
        }
        QCOMPARE(seen.size(), 6000);
    }

    void lifeRunsItsCourse_data() {
        QTest::addColumn<QString>("outcome");
        QTest::newRow("ready") << u"READY"_s;
        QTest::newRow("error") << u"ERROR"_s;
        QTest::newRow("canceled") << u"CANCELED"_s;
    }

    void lifeRunsItsCourse() {
        QFETCH(QString, outcome);
        for (quint64 seed = 1; seed < 9; ++seed) {
            WorldScene scene({.seed = seed});
            const QString project = scene.world->addProject(u"fresh"_s, 1);
            QVERIFY(scene.world->push(project, {.outcome = outcome}));
            const QStringList states = statesLived(scene, project);
            const QStringList full{u"QUEUED"_s, u"INITIALIZING"_s, u"BUILDING"_s, outcome};
            const QStringList brief{u"QUEUED"_s, outcome};
            QVERIFY2(states == full || (outcome == u"CANCELED" && states == brief),
                     qPrintable(states.join(u' ')));
        }
    }

    void speedCompressesTheWallClock() {
        WorldScene slow;
        WorldScene fast({.speed = 10});
        for (WorldScene* scene : {&slow, &fast}) {
            const QString project = scene->world->addProject(u"fresh"_s, 0);
            QVERIFY(scene->world->push(project, {.outcome = u"READY"_s}));
            scene->pass(hour);
        }
        const Deployment& longer = slow.world->projectAt(0).deployments.first();
        const Deployment& shorter = fast.world->projectAt(0).deployments.first();
        QCOMPARE(longer.state, u"READY"_s);
        const qint64 whole = longer.ready - longer.created;
        QVERIFY(std::abs(whole / 10 - (shorter.ready - shorter.created)) <= 1);
    }

    void speedZeroFreezesAndALaterSpeedGoesOn() {
        WorldScene scene({.speed = 0});
        QVERIFY(scene.world->push(u"storefront"_s));
        const auto before = histories(*scene.world);
        scene.pass(10 * hour);
        QCOMPARE(histories(*scene.world), before);
        scene.world->setSpeed(1);
        scene.pass(10 * minute);
        const Deployment& pushed = scene.world->project(u"storefront"_s)->deployments.first();
        QVERIFY(pushed.state != u"QUEUED");
        scene.world->setSpeed(0);
        const auto after = histories(*scene.world);
        scene.pass(10 * hour);
        QCOMPARE(histories(*scene.world), after);
    }

    void stateSetByHandStays() {
        WorldScene scene;
        const QString project = u"trail_log"_s;  // deploys by nobody else
        QVERIFY(!scene.world->setState(project, u"READY"_s));
        QVERIFY(scene.world->push(project));
        QVERIFY(scene.world->setState(project, u"BUILDING"_s));
        scene.pass(3 * hour);
        QCOMPARE(scene.world->project(project)->deployments.first().state, u"BUILDING"_s);
        QVERIFY(scene.world->setState(project, u"READY"_s));
        const Deployment& newest = scene.world->project(project)->deployments.first();
        QCOMPARE(newest.ready, scene.now);
        QVERIFY(!newest.alias.isEmpty());
        QVERIFY(!scene.world->setState(u"nobody"_s, u"READY"_s));
    }

    void redeployTakesOverTheSource() {
        WorldScene scene({.speed = 0});
        const Deployment source = scene.world->project(u"journal"_s)->deployments.at(2);
        const std::optional<QString> uid = scene.world->redeploy(source.uid);
        QVERIFY(uid);
        const Deployment& made = scene.world->project(u"journal"_s)->deployments.first();
        QCOMPARE(made.uid, *uid);
        QVERIFY(made.uid != source.uid);
        QCOMPARE(made.state, u"QUEUED"_s);
        QCOMPARE(made.commit, source.commit);
        QCOMPARE(made.target, source.target);
        QVERIFY(!scene.world->redeploy(u"dpl_unknown"_s));
    }

    void projectsComeAndGo() {
        WorldScene scene;
        const quint64 revision = scene.world->project(u"docs"_s)->revision;
        const QString id = scene.world->addProject(u"fresh"_s, 1, u"prj_mine"_s);
        QCOMPARE(id, u"prj_mine"_s);
        QCOMPARE(scene.world->projectAt(0).name, u"fresh"_s);
        QVERIFY(scene.world->renameProject(u"docs"_s, u"handbook"_s));
        QVERIFY(scene.world->project(u"docs"_s) == nullptr);
        QVERIFY(scene.world->project(u"handbook"_s)->revision > revision);
        QVERIFY(scene.world->push(id));
        QVERIFY(scene.world->removeProject(id));
        QVERIFY(!scene.world->removeProject(id));
        scene.pass(hour);  // what was scheduled for it must not matter
        QVERIFY(scene.world->project(id) == nullptr);
        while (scene.world->projectCount() > 0)
            QVERIFY(scene.world->removeProject(scene.world->projectAt(0).id));
        scene.pass(hour);
    }

    void clockSetBackAndLongSleepAreSurvived() {
        WorldScene scene({.speed = 100});
        scene.pass(hour);
        const auto before = histories(*scene.world);
        scene.pass(-30 * minute);
        QCOMPARE(histories(*scene.world), before);
        scene.pass(hour * 24 * 400);
        for (const Deployment& deployment : newest(*scene.world))
            QVERIFY(deployment.created <= scene.now);
        const auto after = histories(*scene.world);
        scene.pass(hour);
        QVERIFY(histories(*scene.world) != after);
    }
};

QTEST_GUILESS_MAIN(WorldTest)
#include "WorldTest.moc"

#include <QSet>

#include "sandbox/World.h"
#include "tests/TestProgram.h"

using namespace tidemark::sandbox;
using namespace Qt::StringLiterals;

namespace {

constexpr qint64 minute = 60'000;
constexpr qint64 hour = 60 * minute;
const QString quiet = u"trail_log"_s;  // deploys by nobody else

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
    [[nodiscard]] const Deployment& newest(const QString& project) const {
        return world->project(project)->deployments.first();
    }
    [[nodiscard]] QList<QList<Deployment>> histories() const {
        QList<QList<Deployment>> all;
        for (int index = 0; index < world->projectCount(); ++index)
            all.append(world->projectAt(index).deployments);
        return all;
    }

    qint64 now = 1'700'000'000'000;
    std::unique_ptr<World> world;
};

/// Follows a project's newest deployment until it no longer changes.
QStringList statesLived(WorldScene& scene, const QString& project) {
    QStringList states;
    for (int second = 0; second < 600; ++second) {
        const QString state = scene.newest(project).state;
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
    void seedAndTimeAloneMakeTheWorld() {
        WorldScene one({.seed = 7});
        WorldScene lookedAt({.seed = 7});
        WorldScene other({.seed = 8});
        one.pass(6 * hour);
        other.pass(6 * hour);
        for (int step = 0; step < 1200; ++step)
            lookedAt.pass(18'000);
        QCOMPARE(one.histories(), lookedAt.histories());
        QCOMPARE(one.world->accounts(), lookedAt.world->accounts());
        QCOMPARE(one.world->zones(), lookedAt.world->zones());
        QVERIFY(one.histories() != other.histories());

        // A push by hand does not disturb the schedule.
        WorldScene played({.seed = 7});
        QVERIFY(played.world->push(quiet));
        played.pass(6 * hour);
        QCOMPARE(played.newest(u"storefront"_s), one.newest(u"storefront"_s));
    }

    void opensWithSomethingOfEverything() {
        QSet<QString> states;
        for (const QList<Deployment>& history : WorldScene({.speed = 0}).histories())
            states.insert(history.value(0).state);
        const QString neverDeployed;
        QCOMPARE(states, QSet<QString>({u"READY"_s, u"BUILDING"_s, u"QUEUED"_s, u"ERROR"_s, u"CANCELED"_s,
                                        neverDeployed}));
    }

    void historiesAreBelievable() {
        WorldScene scene({.seed = 3, .projects = 60});
        scene.pass(20 * hour);
        for (const QList<Deployment>& history : scene.histories()) {
            QVERIFY(history.size() <= 40);
            qint64 later = scene.now + 1;
            for (const Deployment& each : history) {
                QVERIFY(each.created < later);
                later = each.created;
                QCOMPARE(each.ready != 0, each.state == u"READY");
                QVERIFY(each.ready == 0 || each.created < each.ready);
                QVERIFY(each.ready <= scene.now);
            }
        }
    }

    void lifeRunsItsCourse() {
        for (const QString& outcome : {u"READY"_s, u"ERROR"_s, u"CANCELED"_s}) {
            WorldScene scene;
            QVERIFY(scene.world->push(quiet, {.outcome = outcome}));
            const QString lived = statesLived(scene, quiet).join(u' ');
            const bool isBrief = outcome == u"CANCELED" && lived == u"QUEUED CANCELED";
            QVERIFY2(isBrief || lived == u"QUEUED INITIALIZING BUILDING "_s + outcome, qPrintable(lived));
        }
    }

    void speedCompressesTheWallClock() {
        const auto buildTime = [](double speed) {
            WorldScene scene({.speed = speed});
            scene.world->push(quiet, {.outcome = u"READY"_s});
            scene.pass(hour);
            return scene.newest(quiet).ready - scene.newest(quiet).created;
        };
        QVERIFY(std::abs(buildTime(1) / 10 - buildTime(10)) <= 1);

        WorldScene scene({.speed = 0});
        QVERIFY(scene.world->push(u"storefront"_s));
        for (const int speed : {0, 1, 0}) {
            const auto before = scene.histories();
            scene.world->setSpeed(speed);
            scene.pass(10 * minute);
            QCOMPARE(scene.histories() == before, speed == 0);
        }
    }

    void projectsComeAndGo() {
        WorldScene scene;
        QVERIFY(scene.world->push(scene.world->addProject(u"fresh"_s, 1)));
        while (scene.world->projectCount() > 0)
            QVERIFY(scene.world->removeProject(scene.world->projectAt(0).id));
        scene.pass(hour);  // what was scheduled for them must not matter
    }
};

TIDEMARK_TEST(WorldTest)
#include "WorldTest.moc"

#include <QSignalSpy>

#include "tests/TestProgram.h"
#include "tests/app/Rig.h"

using namespace tidemark;

namespace {

const QString rateLimitedText = u"Rate limited — backing off"_s;

QStringList withoutDomains(QStringList timeline) {
    timeline.removeIf([](const QString& note) { return note.contains("domain of"_L1); });
    return timeline;
}

}  // namespace

class DeploymentPollerTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { m_rig = std::make_unique<Rig>(); }
    void cleanup() { m_rig.reset(); }

    void theFirstCycleIsSpacedTheLaterOnesAreNot() {
        start({Rig::account(u"A"_s)}, {u"p1"_s, u"p2"_s, u"p3"_s});
        m_rig->clock.advance(70s);
        QCOMPARE(withoutDomains(m_rig->takeTimeline()),
                 (QStringList{u"0 list A"_s, u"0 p1"_s, u"2 p2"_s, u"4 p3"_s, u"34 p1"_s, u"34 p2"_s,
                              u"34 p3"_s, u"64 p1"_s, u"64 p2"_s, u"64 p3"_s}));
    }

    void aRateLimitedProjectEndsALaterCycle() {
        start({Rig::account(u"A"_s)}, {u"p1"_s, u"p2"_s, u"p3"_s});
        m_rig->answerDeployments(u"p2"_s, httpAnswer(429));
        m_rig->clock.advance(5s);
        // In the first cycle all are polled all the same.
        QCOMPARE(withoutDomains(m_rig->takeTimeline()),
                 (QStringList{u"0 list A"_s, u"0 p1"_s, u"2 p2"_s, u"4 p3"_s}));
        QCOMPARE(m_rig->state().errors(), (QHash<QString, QString>{{u"p2"_s, rateLimitedText}}));
        QVERIFY(!m_rig->state().lastCheckedAt().contains(u"p2"_s));

        m_rig->clock.advance(30s);
        QCOMPARE(m_rig->takeTimeline(), (QStringList{u"34 p1"_s, u"34 p2"_s}));
        m_rig->answerDeployments(u"p2"_s, {u"ERROR"_s});
        m_rig->clock.advance(89s);  // 60 s of rest and one interval, less what has passed
        QCOMPARE(withoutDomains(m_rig->takeTimeline()), (QStringList{u"124 p1"_s, u"124 p2"_s, u"124 p3"_s}));
        QVERIFY(m_rig->state().errors().isEmpty());
    }

    void nothingToPollSendsNothing() {
        start({Rig::account(u"A"_s)}, {});
        m_rig->takeTimeline();
        m_rig->state().setTracked(u"vanished"_s, true);
        m_rig->clock.advance(100s);
        QCOMPARE(m_rig->takeTimeline(), QStringList());
        QCOMPARE(m_rig->clock.pendingSleeps(), (QList<std::chrono::nanoseconds>{30s, 300s, 3600s}));
        QVERIFY(m_rig->state().errors().isEmpty());
    }

    void changesTakeEffectFromTheNextCycle() {
        start({Rig::account(u"A"_s)}, {u"p1"_s, u"p2"_s});
        m_rig->clock.advance(10s);
        m_rig->takeTimeline();
        m_rig->state().setTracked(u"p1"_s, false);
        m_rig->clock.advance(30s);
        QCOMPARE(m_rig->takeTimeline(), QStringList{u"32 p2"_s});
    }

    void aProjectJustTrackedOrPinnedIsPolledAtOnce() {
        start({Rig::account(u"A"_s)}, {u"p1"_s, u"p2"_s});
        m_rig->clock.advance(10s);
        m_rig->state().setTracked(u"p1"_s, false);
        m_rig->takeTimeline();
        m_rig->state().setTracked(u"p1"_s, true);
        m_rig->state().setIndividual(u"p2"_s, true);  // known already
        m_rig->settle();
        QCOMPARE(m_rig->takeTimeline(), QStringList{u"10 p1"_s});
        m_rig->state().setTracked(u"p1"_s, false);
        m_rig->state().setIndividual(u"p1"_s, true);
        m_rig->settle();
        QCOMPARE(m_rig->takeTimeline(), QStringList{u"10 p1"_s});
        // The cycle goes on as it was.
        m_rig->clock.advance(30s);
        QCOMPARE(m_rig->takeTimeline(), (QStringList{u"32 p1"_s, u"32 p2"_s}));
    }

    void aFlipOfTheFilterPollsAtOnceAndAnnouncesNothing() {
        start({Rig::account(u"A"_s)}, {u"p1"_s, u"p2"_s});
        m_rig->clock.advance(10s);
        const auto answerProduction = [this](const QString& project, const QString& state) {
            m_rig->http.answer(
                HttpMethod::get,
                u"/v6/deployments?projectId=%1&limit=5&target=production&teamId=team-A"_s.arg(project),
                httpAnswer(200,
                           u"{\"deployments\":[{\"uid\":\"d\",\"name\":\"n\",\"url\":\"u\","
                           u"\"created\":1,\"state\":\"%1\"}]}"_s.arg(state)
                               .toUtf8()));
        };
        answerProduction(u"p1"_s, u"ERROR"_s);
        answerProduction(u"p2"_s, u"READY"_s);
        // An answer that was asked for under the other filter comes too late.
        m_rig->answerDeployments(u"p1"_s, {u"BUILDING"_s});
        m_rig->http.hold(HttpMethod::get, m_rig->deploymentsTarget(u"p1"_s));
        m_rig->clock.advance(25s);
        m_rig->state().setProductionOnly(true);
        m_rig->settle();
        m_rig->http.release(HttpMethod::get, m_rig->deploymentsTarget(u"p1"_s));
        m_rig->settle();
        QCOMPARE(m_rig->state().deployments().value(u"p1"_s).state, u"ERROR"_s);
        m_rig->clock.advance(2s);
        QVERIFY(m_rig->notificationCenter.requests.isEmpty());
        // What changes under one filter is announced.
        answerProduction(u"p1"_s, u"READY"_s);
        m_rig->clock.advance(30s);
        QCOMPARE(m_rig->notificationCenter.requests.size(), 1);
        m_rig->answerDeployments(u"p1"_s, {u"ERROR"_s});
        m_rig->state().setProductionOnly(false);
        m_rig->settle();
        QCOMPARE(m_rig->state().deployments().value(u"p1"_s).state, u"ERROR"_s);
        QCOMPARE(m_rig->notificationCenter.requests.size(), 1);
    }

    void savingDuringAWaitStartsAFreshCycle() {
        const VercelAccount account = Rig::account(u"A"_s);
        start({account}, {u"p1"_s, u"p2"_s});
        m_rig->clock.advance(1s);
        m_rig->takeTimeline();
        m_rig->save({.accounts = {account}, .pollingIntervalSeconds = 10});
        m_rig->clock.advance(20s);
        QCOMPARE(withoutDomains(m_rig->takeTimeline()),
                 (QStringList{u"1 list A"_s, u"1 p1"_s, u"3 p2"_s, u"13 p1"_s, u"13 p2"_s}));
    }

    void savingDuringAFetchLetsItFinish() {
        const VercelAccount account = Rig::account(u"A"_s);
        start({account}, {u"p1"_s, u"p2"_s});
        m_rig->clock.advance(10s);
        const QString target = m_rig->deploymentsTarget(u"p1"_s);
        m_rig->http.hold(HttpMethod::get, target);
        m_rig->clock.advance(30s);
        m_rig->takeTimeline();
        m_rig->save({.accounts = {account}, .pollingIntervalSeconds = 10});
        // Both loops are at p1; the old one stops there, with its result written.
        m_rig->answerDeployments(u"p1"_s, {u"BUILDING"_s});
        m_rig->http.release(HttpMethod::get, target);
        m_rig->settle();
        QCOMPARE(m_rig->state().deployments().value(u"p1"_s).state, u"BUILDING"_s);
        m_rig->clock.advance(2s);
        QCOMPARE(m_rig->takeTimeline(), (QStringList{u"40 list A"_s, u"40 p1"_s, u"40 p1"_s, u"42 p2"_s}));
    }

    void anEmptiedTokenEndsThePollingOfItsAccount() {
        start({Rig::account(u"A"_s), Rig::account(u"B"_s)}, {u"p1"_s}, {u"q1"_s});
        m_rig->clock.advance(10s);
        m_rig->takeTimeline();
        m_rig->save({.accounts = {Rig::account(u"A"_s, {}), Rig::account(u"B"_s)}});
        m_rig->clock.advance(30s);
        QCOMPARE(m_rig->takeTimeline(), (QStringList{u"10 list B"_s, u"10 q1"_s, u"40 q1"_s}));
        QVERIFY(m_rig->state().deployments().contains(u"p1"_s));
        QCOMPARE(m_rig->state().trackedProjects().size(), 2);
    }

    void aConfigurationWithoutAccountsLeavesEverythingAsItIs() {
        start({Rig::account(u"A"_s)}, {u"p1"_s});
        m_rig->clock.advance(10s);
        m_rig->takeTimeline();
        m_rig->save({});
        m_rig->clock.advance(100s);
        QCOMPARE(m_rig->takeTimeline(), QStringList());
        QCOMPARE(m_rig->state().allProjects().size(), 1);
        QVERIFY(!m_rig->state().isLoadingProjects());
        m_rig->save({.accounts = {Rig::account(u"A"_s)}});
        QCOMPARE(m_rig->takeTimeline(), (QStringList{u"110 list A"_s, u"110 p1"_s}));
    }

    void anEmptyListKeepsWhatWasThere() {
        start({Rig::account(u"A"_s)}, {u"p1"_s});
        m_rig->answerDeployments(u"p1"_s, QStringList());
        m_rig->clock.advance(35s);
        QVERIFY(m_rig->state().emptyProjectIds().contains(u"p1"_s));
        QVERIFY(m_rig->state().errors().isEmpty());
        QCOMPARE(m_rig->state().deployments().value(u"p1"_s).state, u"READY"_s);
        QCOMPARE(m_rig->state().recentDeployments().value(u"p1"_s).size(), 1);
        QCOMPARE(m_rig->state().lastCheckedAt().value(u"p1"_s), m_rig->clock.now() - 5s);
        m_rig->answerDeployments(u"p1"_s, {u"QUEUED"_s, u"READY"_s});
        m_rig->clock.advance(30s);
        QVERIFY(m_rig->state().emptyProjectIds().isEmpty());
        QCOMPARE(m_rig->state().deployments().value(u"p1"_s).state, u"QUEUED"_s);
        QCOMPARE(m_rig->state().recentDeployments().value(u"p1"_s).size(), 2);
    }

    void anErrorStandsBesideTheLastStatus() {
        start({Rig::account(u"A"_s)}, {u"p1"_s, u"p2"_s});
        m_rig->clock.advance(10s);
        const auto checkedAt = m_rig->state().lastCheckedAt().value(u"p1"_s);
        m_rig->answerDeployments(u"p1"_s, tl::unexpected(TransportError::timedOut));
        m_rig->takeTimeline();
        m_rig->clock.advance(30s);
        QCOMPARE(m_rig->takeTimeline(), (QStringList{u"32 p1"_s, u"32 p2"_s}));  // the cycle goes on
        QCOMPARE(m_rig->state().errors(),
                 (QHash<QString, QString>{{u"p1"_s, description(TransportError::timedOut)}}));
        QCOMPARE(m_rig->state().lastCheckedAt().value(u"p1"_s), checkedAt);
        QCOMPARE(m_rig->state().deployments().value(u"p1"_s).state, u"READY"_s);
        m_rig->answerDeployments(u"p1"_s, {u"READY"_s});
        m_rig->clock.advance(30s);
        QVERIFY(m_rig->state().errors().isEmpty());
    }

    void domainsAreAskedForUntilFoundThenNeverAgain() {
        m_rig->accountOf.insert(u"p1"_s, u"A"_s);
        start({Rig::account(u"A"_s)}, {u"p1"_s});
        const auto isAsked = [this](std::chrono::seconds wait) {
            m_rig->takeTimeline();
            m_rig->clock.advance(wait);
            return !m_rig->takeTimeline().filter(u"domain"_s).isEmpty();
        };
        QCOMPARE(m_rig->state().productionDomains().value(u"p1"_s), u"custom.example"_s);
        QVERIFY(!isAsked(65s));

        m_rig->quit();
        m_rig->answerDomains(u"p1"_s, httpAnswer(404));
        m_rig->launch();
        QVERIFY(isAsked(30s));
        m_rig->answerDomains(u"p1"_s, tl::unexpected(TransportError::offline));
        QVERIFY(isAsked(30s));
        QVERIFY(m_rig->state().errors().isEmpty());
        m_rig->answerDeployments(u"p1"_s, QStringList());
        QVERIFY(!isAsked(30s));  // not for an empty list
        m_rig->answerDeployments(u"p1"_s, {u"ERROR"_s});
        m_rig->answerDomains(u"p1"_s, httpAnswer(200, R"({"domains":[{"name":"other.example"}]})"));
        QVERIFY(isAsked(30s));
        QCOMPARE(m_rig->state().productionDomains().value(u"p1"_s), u"other.example"_s);
        QVERIFY(!isAsked(65s));
    }

    void anyIntervalCanBeWaited() {
        const auto waited = [](qint64 configured) {
            return static_cast<qint64>(DeploymentPoller::pollingInterval(configured).count());
        };
        const qint64 longest = 9'223'372'036;
        QCOMPARE(waited(30), 30);
        QCOMPARE(waited(0), 1);
        QCOMPARE(waited(std::numeric_limits<qint64>::min()), 1);
        QCOMPARE(waited(longest), longest);
        QCOMPARE(waited(std::numeric_limits<qint64>::max()), longest);
    }

    void thePlatformStatusIsAskedEveryFiveMinutes() {
        m_rig->launch();
        QSignalSpy changes(&m_rig->state(), &AppState::vercelPlatformStatusChanged);
        const auto requests = [this] { return m_rig->http.count(HttpMethod::get, u"/api/v2/status.json"_s); };
        QCOMPARE(requests(), 1);
        QCOMPARE(m_rig->state().vercelPlatformStatus(), VercelStatusLevel::ok);
        m_rig->clock.advance(299s);
        QCOMPARE(requests(), 1);
        m_rig->clock.advance(301s);
        QCOMPARE(requests(), 3);
        QCOMPARE(changes.count(), 0);
        m_rig->http.answer(HttpMethod::get, u"/api/v2/status.json"_s,
                           tl::unexpected(TransportError::offline));
        m_rig->clock.advance(300s);
        QCOMPARE(m_rig->state().vercelPlatformStatus(), VercelStatusLevel::unknown);
        QCOMPARE(changes.count(), 1);
        m_rig->delegate->startStatusPolling();  // replaces the loop
        m_rig->settle();
        QCOMPARE(m_rig->clock.pendingSleeps().size(), 1);
    }

private:
    void start(const QList<VercelAccount>& accounts, const QStringList& projects,
               const QStringList& others = {}) {
        m_rig->store({.accounts = accounts});
        m_rig->listProjects(accounts.first().id, projects);
        if (accounts.size() > 1)
            m_rig->listProjects(accounts.last().id, others);
        m_rig->launch();
    }

    std::unique_ptr<Rig> m_rig;
};

TIDEMARK_GUI_TEST(DeploymentPollerTest)
#include "DeploymentPollerTest.moc"

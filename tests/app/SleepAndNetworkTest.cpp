
#include "tests/TestProgram.h"
#include "tests/app/Rig.h"

using namespace tidemark;

/// The machine sleeps, its clock is set, its network goes away: the loops take no notice but for the gap.
class SleepAndNetworkTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    /// Three projects, the first cycle at 0, 2 and 4 s, the next ones from 34 s on.
    void init() {
        m_rig = std::make_unique<Rig>();
        m_rig->store({.accounts = {Rig::account(u"A"_s)}});
        m_rig->listProjects(u"A"_s, {u"p1"_s, u"p2"_s, u"p3"_s});
        for (const auto& project : {u"p1"_s, u"p2"_s, u"p3"_s})
            m_rig->answerDomains(project, httpAnswer(404));
        m_rig->launch();
    }
    void cleanup() { m_rig.reset(); }

    void aCycleFollowsTheResumeAtOnce_data() {
        QTest::addColumn<int>("awake");     // seconds before the suspend
        QTest::addColumn<bool>("limited");  // the API refuses p2
        QTest::addColumn<QStringList>("polls");
        const QStringList cycle{u"0 p1"_s, u"0 p2"_s, u"0 p3"_s, u"30 p1"_s, u"30 p2"_s, u"30 p3"_s};
        QTest::newRow("in the wait between two cycles") << 10 << false << cycle;
        QTest::newRow("just before a cycle") << 33 << false << cycle;
        QTest::newRow("in the first cycle")
            << 1 << false << QStringList{u"0 p2"_s, u"2 p3"_s, u"32 p1"_s, u"32 p2"_s, u"32 p3"_s};
        // What is left of one rest, then of the usual wait, as if it had been awake.
        QTest::newRow("in the rest that the API asked for")
            << 40 << true << QStringList{u"30 p1"_s, u"30 p2"_s};
    }

    void aCycleFollowsTheResumeAtOnce() {
        QFETCH(const int, awake);
        QFETCH(const bool, limited);
        if (limited)
            m_rig->answerDeployments(u"p2"_s, httpAnswer(429));
        m_rig->clock.advance(std::chrono::seconds(awake));
        const auto statusRequests = [this] {
            return m_rig->http.count(HttpMethod::get, u"/api/v2/status.json"_s);
        };
        const auto before = statusRequests();
        m_rig->clock.suspend(72h);
        QTEST(pollsWithin(59s), "polls");
        QCOMPARE(statusRequests(), before + 1);
        QVERIFY(m_rig->notificationCenter.requests.isEmpty());
    }

    void aRequestUnderWayAtTheSuspendCostsOnlyItself() {
        m_rig->clock.advance(10s);
        m_rig->http.hold(HttpMethod::get, m_rig->deploymentsTarget(u"p2"_s));
        m_rig->clock.advance(24s);
        m_rig->clock.suspend(8h);
        m_rig->takeTimeline();
        // Its connection is dead, which takes until the time-out to find out.
        m_rig->answerDeployments(u"p2"_s, tl::unexpected(TransportError::timedOut));
        m_rig->http.release(HttpMethod::get, m_rig->deploymentsTarget(u"p2"_s));
        QCOMPARE(pollsWithin(0s), QStringList{u"0 p3"_s});
        QCOMPARE(m_rig->state().errors().keys(), QStringList{u"p2"_s});
        QCOMPARE(m_rig->state().deployments().value(u"p2"_s).state, u"READY"_s);
        QVERIFY(m_rig->notificationCenter.requests.isEmpty());
    }

    void theWallClockMayJump() {
        m_rig->clock.advance(10s);
        m_rig->clock.setNow(m_rig->clock.now() + 24h * 400);
        const QStringList polls{u"24 p1"_s, u"24 p2"_s, u"24 p3"_s, u"54 p1"_s, u"54 p2"_s, u"54 p3"_s};
        QCOMPARE(pollsWithin(60s), polls);
        QCOMPARE(m_rig->state().lastCheckedAt().value(u"p1"_s), m_rig->clock.now() - 6s);
        m_rig->clock.setNow(m_rig->clock.now() - 24h * 800);
        QCOMPARE(pollsWithin(60s), polls);
        QCOMPARE(m_rig->state().lastCheckedAt().value(u"p1"_s), m_rig->clock.now() - 6s);
        QVERIFY(m_rig->notificationCenter.requests.isEmpty());
    }

    void aLostNetworkIsNoNews() {
        m_rig->clock.advance(10s);
        const QStringList projects{u"p1"_s, u"p2"_s, u"p3"_s};
        for (const auto& project : projects)
            m_rig->answerDeployments(project, tl::unexpected(TransportError::offline));
        m_rig->http.answer(HttpMethod::get, u"/api/v2/status.json"_s,
                           tl::unexpected(TransportError::offline));
        // As often as ever, and no more.
        QCOMPARE(pollsWithin(3600s).size(), 3 * 120);
        QCOMPARE(m_rig->state().errors().size(), 3);
        QCOMPARE(m_rig->state().overallState(), DeploymentState::ready);
        m_rig->answerDeployments(u"p1"_s, {u"READY"_s});
        m_rig->answerDeployments(u"p2"_s, {u"BUILDING"_s});
        m_rig->answerDeployments(u"p3"_s, {u"READY"_s});
        QCOMPARE(pollsWithin(59s).size(), 2 * 3);
        QVERIFY(m_rig->state().errors().isEmpty());
        QCOMPARE(m_rig->notificationCenter.requests.size(), 1);
        QCOMPARE(m_rig->notificationCenter.requests.first().title, u"p2"_s);
    }

private:
    /// The polls of the next `duration`, each with the seconds until then.
    QStringList pollsWithin(std::chrono::seconds duration) {
        m_rig->restartTimeline();
        m_rig->clock.advance(duration);
        QStringList polls = m_rig->takeTimeline();
        polls.removeIf(
            [](const QString& note) { return note.contains("domain of"_L1) || note.contains("list "_L1); });
        return polls;
    }

    std::unique_ptr<Rig> m_rig;
};

TIDEMARK_GUI_TEST(SleepAndNetworkTest)
#include "SleepAndNetworkTest.moc"

#include "tests/TestProgram.h"
#include "tests/app/Rig.h"

using namespace tidemark;

namespace {

const QString redeployTarget = u"/v13/deployments?forceNew=1&teamId=team-A"_s;

}  // namespace

class RedeployerTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        m_rig = std::make_unique<Rig>();
        m_rig->store({.accounts = {Rig::account(u"A"_s)}});
        m_rig->listProjects(u"A"_s, {u"api"_s, u"web"_s});
    }

    void cleanup() { m_rig.reset(); }

    void aRedeployIsOneRequestAPauseAndOnePoll() {
        m_rig->launch();
        m_rig->clock.advance(5s);
        m_rig->http.answer(HttpMethod::post, redeployTarget, httpAnswer(200, "{}"));
        m_rig->answerDeployments(u"web"_s, {u"QUEUED"_s, u"READY"_s});
        const auto before = m_rig->http.requests().size();
        m_rig->restartTimeline();
        redeploy(u"web"_s);
        QCOMPARE(m_rig->http.requests().size(), before + 1);
        m_rig->clock.advance(3s);
        QCOMPARE(m_rig->takeTimeline(), QStringList{u"2 web"_s});
        QCOMPARE(m_rig->http.requests().size(), before + 2);
        QCOMPARE(m_rig->state().deployments().value(u"web"_s).state, u"QUEUED"_s);
    }

    void aFailureIsDeployedAgainFromItsNotification() {
        m_rig->launch();
        m_rig->clock.advance(5s);
        m_rig->answerDeployments(u"web"_s, {u"ERROR"_s});
        m_rig->clock.advance(30s);
        m_rig->http.answer(HttpMethod::post, redeployTarget, httpAnswer(200, "{}"));
        const auto before = m_rig->http.requests().size();
        m_rig->notificationCenter.click(0, u"redeploy"_s);
        m_rig->notificationCenter.click(0, u"redeploy"_s);  // while it is under way
        m_rig->settle();
        QCOMPARE(m_rig->http.requests().size(), before + 1);
        QCOMPARE(m_rig->http.requests().constLast().method, HttpMethod::post);
    }

    void aRedeployThatCannotBeIsIgnored() {
        m_rig->answerDeployments(u"api"_s, httpAnswer(500));
        m_rig->launch();
        m_rig->clock.advance(5s);
        const auto before = m_rig->http.requests().size();
        redeploy(u"api"_s);       // never polled successfully
        redeploy(u"vanished"_s);  // not known
        m_rig->state().setConfig(AppConfiguration{.accounts = {Rig::account(u"A"_s, {})}});
        redeploy(u"web"_s);  // no token
        m_rig->state().setConfig(std::nullopt);
        redeploy(u"web"_s);
        QCOMPARE(m_rig->http.requests().size(), before);
        QCOMPARE(m_rig->state().errors().size(), 1);
    }

    void aRefusedRedeployIsTold() {
        m_rig->launch();
        m_rig->state().setIndividual(u"web"_s, true);
        m_rig->clock.advance(5s);
        m_rig->http.answer(HttpMethod::post, redeployTarget, httpAnswer(403));
        redeploy(u"web"_s);
        QCOMPARE(m_rig->state().errors().value(u"web"_s), u"Redeploy failed: HTTP error 403"_s);
        // The item in the panel tells of checks only.
        QCOMPARE(m_rig->statusBar.items.value(u"tidemark-web"_s).toolTip, u"web: READY"_s);
        QCOMPARE(m_rig->notificationCenter.requests.size(), 1);
        QCOMPARE(m_rig->notificationCenter.requests.last().title, u"web"_s);
        QCOMPARE(m_rig->notificationCenter.requests.last().body, u"Redeploy failed: HTTP error 403"_s);
        m_rig->answerDeployments(u"web"_s, {u"BUILDING"_s});
        m_rig->clock.advance(30s);
        QVERIFY(m_rig->state().errors().isEmpty());
        QCOMPARE(m_rig->statusBar.items.value(u"tidemark-web"_s).toolTip, u"web: BUILDING"_s);
        // The next check takes the place of the redeploy, also when it fails.
        redeploy(u"web"_s);
        m_rig->answerDeployments(u"web"_s, httpAnswer(500));
        m_rig->clock.advance(30s);
        QCOMPARE(m_rig->statusBar.items.value(u"tidemark-web"_s).toolTip,
                 u"web: last check failed — HTTP error 500"_s);
    }

    void quittingDuringARedeployEndsIt_data() {
        QTest::addColumn<bool>("isAnswered");
        QTest::newRow("request") << false;
        QTest::newRow("wait") << true;
    }

    void quittingDuringARedeployEndsIt() {
        QFETCH(const bool, isAnswered);
        m_rig->launch();
        m_rig->clock.advance(5s);
        m_rig->http.answer(HttpMethod::post, redeployTarget, httpAnswer(200, "{}"));
        if (!isAnswered)
            m_rig->http.hold(HttpMethod::post, redeployTarget);
        bool isDone = false;
        const auto handler = m_rig->state().redeployHandler();
        handler(u"web"_s).then([&isDone] { isDone = true; });
        m_rig->settle();
        QVERIFY(!isDone);
        m_rig->quit();
        m_rig->settle();
        QVERIFY(isDone);  // whoever waits for it is let go
        handler(u"web"_s);
    }

private:
    void redeploy(const QString& project) {
        m_rig->state().redeployHandler()(project);
        m_rig->settle();
    }

    std::unique_ptr<Rig> m_rig;
};

TIDEMARK_GUI_TEST(RedeployerTest)
#include "RedeployerTest.moc"

#include "tests/TestProgram.h"
#include "tests/app/Rig.h"

using namespace tidemark;

namespace {

QString listTarget(const QString& accountId) {
    return u"/v9/projects?limit=100&teamId=team-"_s + accountId;
}

}  // namespace

class ProjectLoaderTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { m_rig = std::make_unique<Rig>(); }
    void cleanup() { m_rig.reset(); }

    void aFailedProjectListKeepsWhatIsKnown() {
        const AppConfiguration configuration{.accounts = {Rig::account(u"A"_s), Rig::account(u"B"_s)}};
        m_rig->store(configuration);
        m_rig->listProjects(u"A"_s, {u"p1"_s});
        m_rig->listProjects(u"B"_s, {u"q1"_s});
        m_rig->launch();
        m_rig->quit();
        // The next run: A's list fails, B has a new project, one is gone.
        m_rig->http.answer(HttpMethod::get, u"/v9/projects?limit=100&teamId=team-A"_s, httpAnswer(500));
        m_rig->listProjects(u"B"_s, {u"q2"_s});
        m_rig->launch();
        QStringList names;
        for (const auto& project : m_rig->state().allProjects())
            names << project.name;
        QCOMPARE(names, (QStringList{u"p1"_s, u"q2"_s}));
        QVERIFY(!m_rig->state().isLoadingProjects());
        QVERIFY(m_rig->state().deployments().contains(u"p1"_s));
    }

    void cachedProjectsAreThereBeforeTheFirstAnswer() {
        m_rig->store({.accounts = {Rig::account(u"A"_s)}});
        m_rig->listProjects(u"A"_s, {u"p1"_s});
        m_rig->launch();
        m_rig->quit();
        m_rig->http.hold(HttpMethod::get, u"/v9/projects?limit=100&teamId=team-A"_s);
        m_rig->launch();
        QCOMPARE(m_rig->state().trackedProjects().size(), 1);
        QVERIFY(m_rig->state().isLoadingProjects());
    }

    /// A first start on a machine whose network comes after the login.
    void aListThatTheNetworkHeldBackIsFetchedLater() {
        m_rig->store({.accounts = {Rig::account(u"A"_s), Rig::account(u"B"_s), Rig::account(u"C"_s)}});
        m_rig->answerList(u"A"_s, tl::unexpected(TransportError::hostNotFound));
        m_rig->answerList(u"B"_s, httpAnswer(401));
        m_rig->answerList(u"C"_s, tl::unexpected(TransportError::timedOut));
        m_rig->launch();
        passMinutes(2);
        QVERIFY(m_rig->state().allProjects().isEmpty());
        m_rig->listProjects(u"C"_s, {u"q1"_s});
        passMinutes(1);
        m_rig->listProjects(u"A"_s, {u"p1"_s});
        passMinutes(1);
        QCOMPARE(m_rig->takeTimeline().filter(u"list"_s),
                 (QStringList{u"0 list A"_s, u"0 list B"_s, u"0 list C"_s, u"60 list A"_s, u"60 list C"_s,
                              u"120 list A"_s, u"120 list C"_s, u"180 list A"_s, u"180 list C"_s,
                              u"240 list A"_s}));
        passMinutes(1);
        QCOMPARE(m_rig->state().deployments().size(), 2);
        // An account that goes while its list is on the way is not shown any more.
        m_rig->answerList(u"A"_s, tl::unexpected(TransportError::offline));
        m_rig->save({.accounts = {Rig::account(u"A"_s), Rig::account(u"C"_s)}});
        m_rig->listProjects(u"A"_s, {u"p2"_s});
        m_rig->http.hold(HttpMethod::get, u"/v9/projects?limit=100&teamId=team-A"_s);
        passMinutes(1);
        m_rig->save({.accounts = {Rig::account(u"C"_s)}});
        m_rig->http.release(HttpMethod::get, u"/v9/projects?limit=100&teamId=team-A"_s);
        m_rig->settle();
        QVERIFY(!m_rig->state().project(u"p2"_s));
        // Saved anew, the former accounts are not asked any more.
        m_rig->answerList(u"A"_s, tl::unexpected(TransportError::offline));
        m_rig->save({.accounts = {Rig::account(u"A"_s)}});
        m_rig->save({.accounts = {Rig::account(u"C"_s)}});
        m_rig->takeTimeline();
        passMinutes(2);
        QCOMPARE(m_rig->takeTimeline().filter(u"list"_s), QStringList());
    }

    void aListThatABusyServiceRefusedIsFetchedLater_data() {
        QTest::addColumn<int>("status");
        QTest::addColumn<bool>("isFetched");
        for (const int status : {429, 500, 502, 503, 504})
            QTest::addRow("%d", status) << status << true;
        for (const int status : {401, 403, 404, 501})
            QTest::addRow("%d", status) << status << false;
    }

    void aListThatABusyServiceRefusedIsFetchedLater() {
        QFETCH(const int, status);
        m_rig->store({.accounts = {Rig::account(u"A"_s)}});
        m_rig->answerList(u"A"_s, httpAnswer(status));
        m_rig->launch();
        m_rig->listProjects(u"A"_s, {u"p1"_s});
        passMinutes(2);
        QTEST(m_rig->state().project(u"p1"_s).has_value(), "isFetched");
    }

    void aNewerSaveStopsTheLoadUnderWay() {
        m_rig->store({.accounts = {Rig::account(u"A"_s), Rig::account(u"B"_s)}});
        m_rig->listProjects(u"A"_s, {u"old"_s});
        m_rig->listProjects(u"B"_s, {u"gone"_s});
        m_rig->listProjects(u"C"_s, {u"new"_s});
        m_rig->http.hold(HttpMethod::get, listTarget(u"A"_s));
        m_rig->launch();
        QVERIFY(m_rig->state().isLoadingProjects());
        m_rig->save({.accounts = {Rig::account(u"C"_s)}});
        m_rig->http.release(HttpMethod::get, listTarget(u"A"_s));
        m_rig->clock.advance(300s);
        QCOMPARE(m_rig->state().allProjects().size(), 1);
        QVERIFY(m_rig->state().project(u"new"_s));
        QVERIFY(!m_rig->state().isLoadingProjects());
        QVERIFY(m_rig->takeTimeline().filter(u" B"_s).isEmpty());
    }

    void aSaveWithoutAccountsEndsTheLoadUnderWay() {
        m_rig->store({.accounts = {Rig::account(u"A"_s)}});
        m_rig->http.hold(HttpMethod::get, listTarget(u"A"_s));
        m_rig->listProjects(u"A"_s, {u"p1"_s});
        m_rig->launch();
        m_rig->save({});
        QVERIFY(!m_rig->state().isLoadingProjects());
        m_rig->http.release(HttpMethod::get, listTarget(u"A"_s));
        m_rig->settle();
        QVERIFY(m_rig->state().allProjects().isEmpty());
    }

    void aRemovedAccountTakesItsProjectsWithIt() {
        m_rig->store({.accounts = {Rig::account(u"A"_s), Rig::account(u"B"_s)}});
        m_rig->listProjects(u"A"_s, {u"broken"_s});
        m_rig->answerDeployments(u"broken"_s, QStringList{u"ERROR"_s});
        m_rig->listProjects(u"B"_s, {u"fine"_s});
        m_rig->launch();
        m_rig->state().setIndividual(u"broken"_s, true);
        m_rig->clock.advance(5s);
        const auto label = [this] { return m_rig->statusBar.items.value(u"tidemark"_s).label; };
        QCOMPARE(label(), u"1 error"_s);
        QVERIFY(m_rig->statusBar.items.contains(u"tidemark-broken"_s));

        m_rig->http.hold(HttpMethod::get, listTarget(u"B"_s));
        m_rig->save({.accounts = {Rig::account(u"B"_s)}});
        QCOMPARE(label(), u"1 live"_s);  // before any answer
        QVERIFY(!m_rig->statusBar.items.contains(u"tidemark-broken"_s));
        m_rig->quit();
        m_rig->http.release(HttpMethod::get, listTarget(u"B"_s));
        m_rig->launch();
        QVERIFY(!m_rig->state().project(u"broken"_s));

        // Its pin is remembered for the case that it comes back.
        m_rig->save({.accounts = {Rig::account(u"A"_s)}});
        QVERIFY(m_rig->statusBar.items.contains(u"tidemark-broken"_s));
    }

    void listsStayFresh() {
        m_rig->store({.accounts = {Rig::account(u"A"_s)}});
        m_rig->listProjects(u"A"_s, {u"web"_s, u"old"_s});
        m_rig->launch();
        m_rig->state().setIndividual(u"web"_s, true);
        m_rig->state().setIndividual(u"old"_s, true);
        m_rig->clock.advance(10s);
        const auto& items = m_rig->statusBar.items;
        QVERIFY(items.contains(u"tidemark-old"_s));

        // One is renamed, one is deleted, one is new.
        const QByteArray lists = R"({"projects":[{"id":"web","name":"site"},{"id":"new","name":"new"}]})";
        m_rig->answerList(u"A"_s, httpAnswer(200, lists));
        m_rig->accountOf[u"new"_s] = u"A"_s;
        m_rig->answerDeployments(u"new"_s, QStringList{u"ERROR"_s});
        m_rig->answerDomains(u"new"_s, httpAnswer(404));
        passMinutes(59);
        QVERIFY(items.contains(u"tidemark-old"_s));
        passMinutes(2);
        QVERIFY(!items.contains(u"tidemark-old"_s));
        QCOMPARE(items.value(u"tidemark-web"_s).toolTip, u"site: READY"_s);
        QCOMPARE(items.value(u"tidemark"_s).label, u"1 error"_s);
        m_rig->answerDeployments(u"web"_s, QStringList{u"ERROR"_s});
        passMinutes(1);
        QCOMPARE(m_rig->notificationCenter.requests.constLast().title, u"site"_s);

        // The deleted one comes back, and is pinned as before.
        m_rig->listProjects(u"A"_s, {u"web"_s, u"old"_s});
        passMinutes(60);
        QVERIFY(items.contains(u"tidemark-old"_s));
    }

    void listsAreReadAgainForWhoLooksAtThem() {
        m_rig->store({.accounts = {Rig::account(u"A"_s)}});
        m_rig->listProjects(u"A"_s, {u"p1"_s});
        m_rig->launch();
        const auto lookAfter = [this](std::chrono::seconds time) {
            m_rig->clock.advance(time);
            m_rig->takeTimeline();
            QSignalSpy loading(&m_rig->state(), &AppState::isLoadingProjectsChanged);
            m_rig->delegate->manageProjects();
            m_rig->settle();
            QVERIFY(loading.isEmpty());
        };
        const auto asked = [this] { return m_rig->takeTimeline().filter(u"list"_s).size(); };
        lookAfter(59s);
        QCOMPARE(asked(), 0);
        lookAfter(1s);
        QCOMPARE(asked(), 1);
        lookAfter(59s);
        QCOMPARE(asked(), 0);
        m_rig->clock.setNow(m_rig->clock.now() - 24h);  // the user has set the time
        lookAfter(0s);
        QCOMPARE(asked(), 1);
        // A failure is silent as well, and what the network held back is asked for again.
        m_rig->answerList(u"A"_s, tl::unexpected(TransportError::offline));
        lookAfter(60s);
        passMinutes(1);
        QCOMPARE(asked(), 2);
        QVERIFY(m_rig->state().project(u"p1"_s));
        // While one is under way, no other begins.
        m_rig->listProjects(u"A"_s, {u"p1"_s});
        m_rig->http.hold(HttpMethod::get, listTarget(u"A"_s));
        lookAfter(60s);
        m_rig->clock.advance(90s);
        m_rig->delegate->manageProjects();
        m_rig->settle();
        m_rig->http.release(HttpMethod::get, listTarget(u"A"_s));
        m_rig->settle();
        QCOMPARE(asked(), 1);
    }

private:
    void passMinutes(int minutes) {
        for (int i = 0; i < minutes; ++i) {
            m_rig->clock.advance(60s);
            m_rig->settle();
        }
    }

    std::unique_ptr<Rig> m_rig;
};

TIDEMARK_GUI_TEST(ProjectLoaderTest)
#include "ProjectLoaderTest.moc"

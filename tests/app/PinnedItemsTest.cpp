#include "tests/TestProgram.h"
#include "tests/app/Rig.h"

using namespace tidemark;

/// Pinned projects and their announcements, with the whole engine among fakes.
class PinnedItemsTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        m_rig = std::make_unique<Rig>();
        m_rig->store({.accounts = {Rig::account(u"A"_s)}, .soundEnabled = true});
        m_rig->listProjects(u"A"_s, {u"api"_s, u"web"_s});
    }

    void cleanup() {
        m_rig->quit();
        QVERIFY(m_rig->statusBar.items.isEmpty());
        m_rig.reset();
    }

    void anItemIsThereAsLongAsItsProjectIsPinned() {
        m_rig->launch();
        m_rig->clock.advance(5s);
        QCOMPARE(pinned(), QStringList());
        m_rig->state().setIndividual(u"api"_s, true);
        m_rig->state().setIndividual(u"vanished"_s, true);
        QCOMPARE(pinned(), QStringList());  // not while the change is still under way
        m_rig->settle();
        QCOMPARE(pinned(), QStringList{u"tidemark-api"_s});
        QCOMPARE(shown(u"api"_s).toolTip, u"api: READY"_s);

        m_rig->state().setIndividual(u"web"_s, true);
        m_rig->settle();
        m_rig->state().setIndividual(u"api"_s, false);
        m_rig->state().setTracked(u"web"_s, false);
        m_rig->settle();
        QCOMPARE(pinned(), QStringList());
    }

    void pinnedProjectsComeBackWithTheirListAtTheNextStart() {
        m_rig->launch();
        m_rig->state().setIndividual(u"web"_s, true);
        m_rig->quit();
        m_rig->answerDeployments(u"web"_s, httpAnswer(500));
        m_rig->launch();
        QCOMPARE(pinned(), QStringList{u"tidemark-web"_s});
        QCOMPARE(shown(u"web"_s).toolTip, u"web: loading…"_s);
        m_rig->clock.advance(5s);
        QCOMPARE(shown(u"web"_s).toolTip, u"web: last check failed — HTTP error 500"_s);
        m_rig->answerDeployments(u"web"_s, {u"BUILDING"_s});
        m_rig->clock.advance(30s);
        QCOMPARE(shown(u"web"_s).toolTip, u"web: BUILDING"_s);
        m_rig->answerDeployments(u"web"_s, httpAnswer(429));
        m_rig->clock.advance(30s);
        QCOMPARE(shown(u"web"_s).toolTip, u"web: last check failed — Rate limited — backing off"_s);
        // An item that is made late shows both what was known and what failed.
        m_rig->state().setIndividual(u"web"_s, false);
        m_rig->settle();
        m_rig->state().setIndividual(u"web"_s, true);
        m_rig->settle();
        QVERIFY(entry(u"web"_s, u"Showing last known status:"_s));
        QVERIFY(entry(u"web"_s, u"Status: ⏳ Building"_s));
    }

    void aProjectWhoseListBecomesEmptyForgetsItsError_data() {
        QTest::addColumn<QStringList>("before");  // no state: the first check fails
        QTest::addColumn<QString>("toolTip");
        QTest::newRow("known") << QStringList{u"READY"_s} << u"web: READY"_s;
        QTest::newRow("never known") << QStringList() << u"web: loading…"_s;
    }

    void aProjectWhoseListBecomesEmptyForgetsItsError() {
        QFETCH(const QStringList, before);
        if (before.isEmpty())
            m_rig->answerDeployments(u"web"_s, httpAnswer(500));
        m_rig->launch();
        m_rig->state().setIndividual(u"web"_s, true);
        m_rig->clock.advance(5s);
        m_rig->answerDeployments(u"web"_s, httpAnswer(500));
        m_rig->clock.advance(30s);
        QCOMPARE(shown(u"web"_s).toolTip, u"web: last check failed — HTTP error 500"_s);
        m_rig->answerDeployments(u"web"_s, QStringList());
        m_rig->clock.advance(30s);
        QTEST(shown(u"web"_s).toolTip, "toolTip");
        QVERIFY(!entry(u"web"_s, u"⚠️ Last check failed"_s));
    }

    void aChangeIsAnnouncedOnceAndOpensItsPage() {
        m_rig->launch();
        m_rig->state().setIndividual(u"api"_s, true);
        m_rig->clock.advance(5s);
        QVERIFY(m_rig->notificationCenter.requests.isEmpty());
        const DeploymentsResponse response{{{.id = u"d"_s,
                                             .name = u"api"_s,
                                             .url = u"u"_s,
                                             .created = 1,
                                             .state = u"ERROR"_s,
                                             .inspectorUrl = u"https://vercel.com/d"_s}}};
        m_rig->answerDeployments(u"api"_s, httpAnswer(200, QJsonDocument(response.encode()).toJson()));
        m_rig->clock.advance(60s);
        QCOMPARE(m_rig->notificationCenter.requests.size(), 1);
        QCOMPARE(m_rig->notificationCenter.requests.first().title, u"api"_s);
        QCOMPARE(m_rig->notificationCenter.requests.first().body, u"✅ Ready  →  ❌ Failed"_s);
        QCOMPARE(m_rig->sounds.names, QStringList{u"Basso"_s});
        m_rig->notificationCenter.click(0);
        QCOMPARE(m_rig->workspace.urls, QList<QUrl>{QUrl(u"https://vercel.com/d"_s)});

        // The switch follows the configuration.
        m_rig->answerDeployments(u"api"_s, {u"READY"_s});
        m_rig->save({.accounts = {Rig::account(u"A"_s)}, .soundEnabled = false});
        m_rig->clock.advance(5s);
        QCOMPARE(m_rig->notificationCenter.requests.size(), 2);
        QCOMPARE(m_rig->sounds.names.size(), 1);
    }

    void theMenuWorks() {
        m_rig->launch();
        m_rig->state().setIndividual(u"api"_s, true);
        m_rig->clock.advance(5s);
        m_rig->takeTimeline();
        choose(u"api"_s, u"Refresh Now"_s);
        QCOMPARE(m_rig->takeTimeline(), QStringList{u"5 api"_s});
        choose(u"api"_s, u"Preferences…"_s);
        m_rig->settle();
        QVERIFY(Rig::preferencesWindow());
        QVERIFY(!entry(u"api"_s, u"Check for Updates…"_s));

        // A refresh whose project is unpinned meanwhile still ends well.
        const QString target = m_rig->deploymentsTarget(u"api"_s);
        m_rig->http.hold(HttpMethod::get, target);
        choose(u"api"_s, u"Refresh Now"_s);
        m_rig->state().setIndividual(u"api"_s, false);
        m_rig->settle();
        m_rig->answerDeployments(u"api"_s, {u"QUEUED"_s});
        m_rig->http.release(HttpMethod::get, target);
        m_rig->settle();
        QCOMPARE(m_rig->state().deployments().value(u"api"_s).state, u"QUEUED"_s);
    }

    void refreshingWithoutATokenSendsNothing() {
        m_rig->launch();
        m_rig->state().setIndividual(u"api"_s, true);
        m_rig->clock.advance(5s);
        m_rig->save({.accounts = {Rig::account(u"A"_s, {})}});
        m_rig->clock.advance(5s);
        m_rig->takeTimeline();
        choose(u"api"_s, u"Refresh Now"_s);
        m_rig->state().setConfig(std::nullopt);
        choose(u"api"_s, u"Refresh Now"_s);
        QCOMPARE(m_rig->takeTimeline(), QStringList());
    }

private:
    [[nodiscard]] QStringList pinned() const {
        QStringList ids = m_rig->statusBar.items.keys();
        ids.removeAll(u"tidemark"_s);
        return ids;
    }

    [[nodiscard]] FakeStatusBar::Shown shown(const QString& project) const {
        return m_rig->statusBar.items.value(u"tidemark-"_s + project);
    }

    [[nodiscard]] std::optional<MenuItem> entry(const QString& project, const QString& title) const {
        for (const auto& item : shown(project).menu)
            if (item.titleNow() == title)
                return item;
        return std::nullopt;
    }

    void choose(const QString& project, const QString& title) {
        const auto item = entry(project, title);
        QVERIFY(item && item->action);
        item->action();
        m_rig->settle();
    }

    std::unique_ptr<Rig> m_rig;
};

TIDEMARK_GUI_TEST(PinnedItemsTest)
#include "PinnedItemsTest.moc"

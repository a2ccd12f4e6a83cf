#include "tests/TestProgram.h"
#include "tests/app/Rig.h"

using namespace tidemark;

class LifecycleTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { m_rig = std::make_unique<Rig>(); }
    void cleanup() { m_rig.reset(); }

    void withoutATokenOnlyTheStatusIsAskedFor() {
        m_rig->store({.accounts = {Rig::account(u"A"_s, {}), Rig::account(u"B"_s, {})}});
        m_rig->launch();
        m_rig->clock.advance(1000s);
        QVERIFY(!m_rig->state().config());
        QCOMPARE(m_rig->http.requests().size(), 4);  // all of them to the status page: others fail the test
        QVERIFY(m_rig->statusBar.items.value(u"tidemark"_s).label.isEmpty());
        QVERIFY(Rig::preferencesWindow());
        // The first save starts everything.
        m_rig->listProjects(u"A"_s, {u"p1"_s});
        m_rig->save({.accounts = {Rig::account(u"A"_s)}});
        QCOMPARE(m_rig->state().deployments().size(), 1);
    }

    void thereIsOnePreferencesWindow() {
        m_rig->launch();
        QWindow* const window = Rig::preferencesWindow();
        QVERIFY(window);
        m_rig->delegate->openPreferences();
        m_rig->delegate->openPreferences();
        m_rig->settle();
        QCOMPARE(Rig::preferencesWindow(), window);
        window->close();
        m_rig->settle();
        QVERIFY(!Rig::preferencesWindow());
        m_rig->delegate->openPreferences();
        m_rig->settle();
        QCOMPARE(Rig::preferencesWindow(), window);
    }

    void oneTokenIsEnough() {
        m_rig->store({.accounts = {Rig::account(u"A"_s, {}), Rig::account(u"B"_s)}});
        m_rig->listProjects(u"B"_s, {u"q1"_s});
        m_rig->launch();
        QCOMPARE(m_rig->state().config()->accounts.size(), 2);
        QVERIFY(!Rig::preferencesWindow());
        QCOMPARE(m_rig->state().allProjects(), (QList<VercelProject>{{u"q1"_s, u"q1"_s, u"B"_s}}));
    }

    void theLoginItemFollowsTheConfiguration() {
        m_rig->loginItem.refuses = true;
        m_rig->launch();
        // How often it is registered and unregistered when this is wanted.
        const auto calls = [this](LoginItem::Status status, bool enabled) {
            auto& item = m_rig->loginItem;
            const QList before{item.registrations, item.unregistrations};
            item.currentStatus = status;
            m_rig->delegate->applyLaunchAtLogin(enabled);
            return QList{item.registrations - before[0], item.unregistrations - before[1]};
        };
        using Status = LoginItem::Status;
        QCOMPARE(calls(Status::enabled, true), (QList{0, 0}));
        QCOMPARE(calls(Status::notRegistered, true), (QList{1, 0}));
        QCOMPARE(calls(Status::requiresApproval, true), (QList{1, 0}));
        QCOMPARE(calls(Status::notFound, true), (QList{1, 0}));
        QCOMPARE(calls(Status::enabled, false), (QList{0, 1}));
        QCOMPARE(calls(Status::notRegistered, false), (QList{0, 0}));
        QCOMPARE(calls(Status::requiresApproval, false), (QList{0, 0}));
    }

    void whatTheDesktopSwitchedOffStaysOff() {
        const auto configured = [](bool launchAtLogin) {
            return AppConfiguration{.accounts = {Rig::account(u"A"_s)}, .launchAtLogin = launchAtLogin};
        };
        m_rig->store(configured(true));
        m_rig->listProjects(u"A"_s, {});
        m_rig->loginItem.currentStatus = LoginItem::Status::requiresApproval;
        m_rig->launch();
        m_rig->save(configured(true));
        QCOMPARE(m_rig->loginItem.registrations, 0);
        m_rig->save(configured(false));
        QCOMPARE(m_rig->loginItem.unregistrations, 0);
        m_rig->save(configured(true));
        QCOMPARE(m_rig->loginItem.registrations, 1);
    }

    void withoutAPanelEverythingElseGoesOn() {
        m_rig->statusBar.isAvailable = false;
        m_rig->store({.accounts = {Rig::account(u"A"_s)}});
        m_rig->listProjects(u"A"_s, {u"p1"_s});
        m_rig->launch();
        QCOMPARE(m_rig->state().deployments().size(), 1);
    }

    void itQuitsAtOnceWhateverItIsDoing_data() {
        QTest::addColumn<QString>("held");  // the request that gets no answer
        QTest::addColumn<bool>("isPrompting");
        QTest::newRow("in a wait") << QString() << false;
        QTest::newRow("in the project list") << u"/v9/projects?limit=100&teamId=team-A"_s << false;
        QTest::newRow("in a poll") << u"/v6/deployments?projectId=p1&limit=5&teamId=team-A"_s << false;
        QTest::newRow("in a domain look-up") << u"/v9/projects/p1/domains?limit=50&teamId=team-A"_s << false;
        QTest::newRow("in the status request") << u"/api/v2/status.json"_s << false;
        QTest::newRow("in the keyring's prompt") << QString() << true;
    }

    void itQuitsAtOnceWhateverItIsDoing() {
        QFETCH(const QString, held);
        QFETCH(const bool, isPrompting);
        m_rig->store({.accounts = {Rig::account(u"A"_s)}});
        m_rig->listProjects(u"A"_s, {u"p1"_s});
        if (!held.isEmpty())
            m_rig->http.hold(HttpMethod::get, held);
        if (isPrompting) {
            m_rig->keychain->setMood(FakeKeychain::Mood::prompting);
            m_rig->launchWithoutWaiting();
        } else {
            m_rig->launch();
            QCOMPARE(m_rig->http.pendingCount(), held.isEmpty() ? 0 : 1);
        }
        m_rig->delegate.reset();
        QVERIFY(m_rig->statusBar.items.isEmpty());
        QVERIFY(m_rig->clock.pendingSleeps().isEmpty());
        QCOMPARE(m_rig->http.pendingCount(), 0);
    }

private:
    std::unique_ptr<Rig> m_rig;
};

TIDEMARK_GUI_TEST(LifecycleTest)
#include "LifecycleTest.moc"

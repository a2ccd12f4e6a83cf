#include <QFile>
#include <QQuickItem>
#include <QQuickView>

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

    void whatCouldNotBeReadTakesOverLater_data() {
        QTest::addColumn<QString>("occasion");
        for (const char* occasion : {"the keyring says so", "the popover opens", "the preferences open"})
            QTest::newRow(occasion) << QString::fromLatin1(occasion);
    }

    void whatCouldNotBeReadTakesOverLater() {
        QFETCH(const QString, occasion);
        const AppConfiguration configuration{.accounts = {Rig::account(u"A"_s)}, .launchAtLogin = true};
        m_rig->store(configuration);
        m_rig->listProjects(u"A"_s, {u"p1"_s});
        m_rig->keychain->setMood(FakeKeychain::Mood::unavailable);
        m_rig->launch();
        QVERIFY(Rig::preferencesWindow());
        // It has come, but stays locked.
        QVERIFY(m_rig->keychain->announce());
        m_rig->settle();
        QVERIFY(!m_rig->state().config());
        using Prompting = Keychain::Prompting;
        QCOMPARE(m_rig->keychain->sessions().sliced(1),
                 (QList{Prompting::allowed, Prompting::unlessDeclined}));

        m_rig->keychain->setMood(FakeKeychain::Mood::willing);
        if (occasion == "the popover opens"_L1)
            m_rig->delegate->showPopover();
        else if (occasion == "the preferences open"_L1)
            m_rig->delegate->openPreferences();
        else
            QVERIFY(m_rig->keychain->announce());
        m_rig->settle();
        QCOMPARE(m_rig->state().config(), configuration);
        QCOMPARE(m_rig->loginItem.registrations, 1);
        QCOMPARE(m_rig->takeTimeline(), (QStringList{u"0 list A"_s, u"0 p1"_s, u"0 domain of p1"_s}));
        QCOMPARE(shownAccounts(), QStringList{u"A"_s});
        QVERIFY(!m_rig->keychain->announce());  // nobody watches any more
    }

    void whatTheUserSavedIsNotReplacedByWhatIsReadLater() {
        m_rig->store({.accounts = {Rig::account(u"A"_s)}, .cloudflareToken = u"cf"_s});
        m_rig->listProjects(u"B"_s, {u"q1"_s});
        m_rig->keychain->setMood(FakeKeychain::Mood::unavailable);
        m_rig->launch();
        // A late load waits for the user, and the save behind it.
        m_rig->keychain->setMood(FakeKeychain::Mood::prompting);
        for (int i = 0; i < 100; ++i)
            QVERIFY(m_rig->keychain->announce());
        AppConfiguration saved{.accounts = {Rig::account(u"B"_s)}};
        m_rig->delegate->saveConfiguration(saved);
        QVERIFY(!m_rig->keychain->announce());
        QCOMPARE(m_rig->state().config(), saved);
        m_rig->keychain->setMood(FakeKeychain::Mood::willing);
        m_rig->settle();
        // A field that was empty only because nothing could be read deletes nothing.
        saved.cloudflareToken = u"cf"_s;
        QCOMPARE(m_rig->state().config(), saved);
        QCOMPARE(ConfigStore(m_rig->configPath(), *m_rig->keychain).load(), saved);
        QCOMPARE(m_rig->keychain->sessions().size(), 6);  // a hundred announcements are one load
        QVERIFY(QFile::exists(m_rig->configPath() + u".bak"_s));
    }

    void aKeyringThatFailsLaterCostsNothing() {
        const AppConfiguration configuration{.accounts = {Rig::account(u"A"_s)}, .cloudflareToken = u"cf"_s};
        m_rig->store(configuration);
        m_rig->listProjects(u"A"_s, {u"p1"_s});
        m_rig->launch();
        m_rig->keychain->setMood(FakeKeychain::Mood::unavailable);
        m_rig->delegate->openPreferences();
        m_rig->settle();
        QCOMPARE(shownAccounts(), QStringList{u"A"_s});
        // What it shows is what is in use, the tokens included.
        m_rig->keychain->setMood(FakeKeychain::Mood::willing);
        QTest::keyClick(Rig::preferencesWindow(), Qt::Key_Return);
        m_rig->settle();
        QVERIFY(!Rig::preferencesWindow());
        QCOMPARE(ConfigStore(m_rig->configPath(), *m_rig->keychain).load(), configuration);
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

    void aSaveThatFailsIsUsedAllTheSame() {
        m_rig->listProjects(u"A"_s, {u"p1"_s});
        m_rig->launch();
        // A folder where the file should be.
        QVERIFY(QDir().mkpath(m_rig->configPath()));
        const AppConfiguration configuration{
            .accounts = {Rig::account(u"A"_s)}, .pollingIntervalSeconds = 10, .launchAtLogin = true};
        m_rig->save(configuration);
        QCOMPARE(m_rig->state().config(), configuration);
        QCOMPARE(m_rig->loginItem.registrations, 1);
        m_rig->takeTimeline();
        m_rig->clock.advance(10s);
        QCOMPARE(m_rig->takeTimeline(), QStringList{u"10 p1"_s});
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
    /// The names of the accounts in the preferences window.
    static QStringList shownAccounts() {
        const auto* view = qobject_cast<QQuickView*>(Rig::preferencesWindow());
        const auto* model = view->rootObject()->property("preferences").value<PreferencesModel*>();
        QStringList names;
        for (const auto& account : model->accountDrafts())
            names << account.name;
        return names;
    }

    std::unique_ptr<Rig> m_rig;
};

TIDEMARK_GUI_TEST(LifecycleTest)
#include "LifecycleTest.moc"

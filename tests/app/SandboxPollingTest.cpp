#include <QTemporaryDir>

#include "app/AppDelegate.h"
#include "platform/http/NetworkHttpClient.h"
#include "sandbox/Sandbox.h"
#include "tests/TestProgram.h"
#include "tests/fakes/FakeKeychain.h"
#include "tests/fakes/FakeLoginItem.h"
#include "tests/fakes/FakeNotificationCenter.h"
#include "tests/fakes/FakeSoundPlayer.h"
#include "tests/fakes/FakeStatusBar.h"
#include "tests/fakes/FakeWorkspace.h"
#include "tests/fakes/ManualClock.h"

using namespace tidemark;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using sandbox::Fault;
using sandbox::FaultKind;

/// The engine over real sockets, on a clock of the test's own.
class SandboxPollingTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { m_worker.setMaxThreadCount(1); }

    void init() {
        m_folder = std::make_unique<QTemporaryDir>();
        m_keychain = std::make_unique<FakeKeychain>();
        m_http = std::make_unique<NetworkHttpClient>(
            NetworkHttpClient::Options{.insecureLoopback = NetworkHttpClient::InsecureLoopback::allowed});
        m_clock = std::make_unique<ManualClock>();
        m_defaults = std::make_unique<UserDefaults>(m_folder->filePath(u"defaults.ini"_s));
    }

    void cleanup() {
        m_delegate.reset();
        m_http.reset();
        m_defaults.reset();
        m_sandbox.reset();
    }

    void everyAccountIsPolled() {
        start(7);
        QTRY_COMPARE(state().allProjects().size(), 7);
        finishFirstCycle();
        QSet<QString> accounts;
        for (const auto& project : state().allProjects())
            accounts.insert(project.accountId);
        QCOMPARE(accounts.size(), 2);
        QCOMPARE(state().deployments().size() + state().emptyProjectIds().size(), 7);
        QVERIFY(state().errors().isEmpty());
        QCOMPARE(state().vercelPlatformStatus(), VercelStatusLevel::ok);
        // As the API knows them.
        for (const auto& [id, deployment] : state().deployments().asKeyValueRange()) {
            const auto newest = m_sandbox->world()->project(id)->deployments.first();
            QCOMPARE(deployment.id, newest.uid);
            QCOMPARE(deployment.created, newest.created);
            QCOMPARE(state().recentDeployments().value(id).size(),
                     std::min<qsizetype>(5, m_sandbox->world()->project(id)->deployments.size()));
        }
    }

    void manyProjectsArePaged() {
        start(640);
        QTRY_COMPARE(state().allProjects().size(), 640);
        QCOMPARE(state().trackedProjects().size(), 640);
    }

    void faultsBecomeTexts_data() {
        QTest::addColumn<Fault>("fault");
        QTest::addColumn<QString>("text");
        const QString deployments = u"/v6/deployments"_s;
        QTest::newRow("429") << Fault{.kind = FaultKind::status, .pathPrefix = deployments, .status = 429}
                             << u"Rate limited — backing off"_s;
        QTest::newRow("500") << Fault{.kind = FaultKind::status, .pathPrefix = deployments, .status = 500}
                             << u"HTTP error 500"_s;
        QTest::newRow("403") << Fault{.kind = FaultKind::status, .pathPrefix = deployments, .status = 403}
                             << u"HTTP error 403"_s;
        QTest::newRow("garbage") << Fault{.kind = FaultKind::garbage, .pathPrefix = deployments}
                                 << u"The answer is not valid JSON."_s;
        QTest::newRow("cut") << Fault{.kind = FaultKind::cut, .pathPrefix = deployments}
                             << description(TransportError::connectionLost);
        QTest::newRow("huge") << Fault{.kind = FaultKind::huge, .pathPrefix = deployments}
                              << description(TransportError::tooLarge);
        QTest::newRow("redirect") << Fault{.kind = FaultKind::redirect,
                                           .pathPrefix = deployments,
                                           .location = u"http://127.0.0.1:1/"_s}
                                  << u"HTTP error 302"_s;
    }

    void faultsBecomeTexts() {
        QFETCH(const Fault, fault);
        start(2);
        QTRY_COMPARE(state().allProjects().size(), 2);
        finishFirstCycle();
        m_sandbox->faults().add(fault);
        m_clock->advance(30s);
        QTRY_VERIFY(!state().errors().isEmpty());
        QTEST(*state().errors().cbegin(), "text");
        m_sandbox->faults().clear();
        for (int i = 0; i < 20 && !state().errors().isEmpty(); ++i) {
            QTRY_VERIFY(isWaiting());
            m_clock->advance(90s);
        }
        QTRY_VERIFY(state().errors().isEmpty());
    }

    void aRevokedTokenIsTold() {
        start(2);
        QTRY_COMPARE(state().allProjects().size(), 2);
        finishFirstCycle();
        m_sandbox->world()->setRevoked(m_sandbox->accounts().last().token, true);
        m_clock->advance(30s);
        QTRY_VERIFY(!state().errors().isEmpty());
        QCOMPARE(*state().errors().cbegin(), u"Invalid API token (401)"_s);
    }

    void aRedeployIsOneCallAPauseAndOnePoll() {
        start(2);
        QTRY_COMPARE(state().allProjects().size(), 2);
        finishFirstCycle();
        const QString project = state().deployments().cbegin().key();
        const QString old = state().deployments().value(project).id;
        m_sandbox->log().clear();
        bool isDone = false;
        state().redeployHandler()(project).then([&isDone] { isDone = true; });
        QTRY_COMPARE(m_clock->pendingSleeps().value(0), std::chrono::nanoseconds(2s));
        QCOMPARE(requests(), QStringList{u"POST /v13/deployments"_s});
        m_clock->advance(1999ms);
        QCOMPARE(m_sandbox->log().total(), 1);
        m_clock->advance(1ms);
        QTRY_VERIFY(isDone);
        QCOMPARE(requests(), (QStringList{u"POST /v13/deployments"_s, u"GET /v6/deployments"_s}));
        QVERIFY(state().deployments().value(project).id != old);
        QCOMPARE(state().deployments().value(project).id,
                 m_sandbox->world()->project(project)->deployments.first().uid);
    }

    void itQuitsInTheMiddleOfARequest_data() {
        QTest::addColumn<QString>("path");
        QTest::newRow("project list") << u"/v9/projects"_s;
        QTest::newRow("deployments") << u"/v6/deployments"_s;
        QTest::newRow("status") << u"/api/v2"_s;
    }

    void itQuitsInTheMiddleOfARequest() {
        QFETCH(const QString, path);
        start(3, Fault{.kind = FaultKind::stall, .pathPrefix = path});
        QTRY_VERIFY(m_sandbox->log().total() >= 2);
        m_delegate.reset();
    }

private:
    void start(int projects, const std::optional<Fault>& fault = {}) {
        m_sandbox =
            std::make_unique<sandbox::Sandbox>(sandbox::SandboxOptions{.projects = projects, .speed = 0});
        QVERIFY(m_sandbox->start());
        if (fault)
            m_sandbox->faults().add(*fault);
        AppConfiguration configuration;
        for (const auto& account : m_sandbox->accounts())
            configuration.accounts.append({account.slug, account.name, account.teamId, account.token});
        const QString configPath = m_folder->filePath(u"config.json"_s);
        QVERIFY(ConfigStore(configPath, *m_keychain).save(configuration));
        m_delegate = std::make_unique<AppDelegate>(
            AppDelegate::Services{.http = *m_http,
                                  .clock = *m_clock,
                                  .defaults = *m_defaults,
                                  .keychain = *m_keychain,
                                  .keychainWorker = m_worker,
                                  .loginItem = m_loginItem,
                                  .statusBar = m_statusBar,
                                  .notifications = m_notifications,
                                  .updates = m_updates,
                                  .workspace = m_workspace,
                                  .endpoints = Endpoints::below(m_sandbox->baseUrl()),
                                  .configPath = configPath});
        m_delegate->applicationDidFinishLaunching();
    }

    AppState& state() { return m_delegate->appState(); }

    /// What was requested, but for the domains.
    QStringList requests() {
        QStringList texts;
        for (const auto& request : m_sandbox->log().entries())
            if (!request.path.endsWith("/domains"_L1))
                texts << QString::fromLatin1(request.method) + u' ' + request.path;
        return texts;
    }

    /// Whether the polling loop waits, as the status loop always does after its first answer.
    [[nodiscard]] bool isWaiting() const { return m_clock->pendingSleeps().size() == 2; }

    void finishFirstCycle() {
        const auto isDone = [this] {
            return m_clock->pendingSleeps().contains(std::chrono::nanoseconds(30s));
        };
        for (int i = 0; i < 50 && !isDone(); ++i) {
            QTRY_VERIFY(isWaiting());
            if (!isDone())
                m_clock->advance(2s);
        }
        QVERIFY(isDone());
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<FakeKeychain> m_keychain;
    QThreadPool m_worker;
    FakeLoginItem m_loginItem;
    FakeStatusBar m_statusBar;
    FakeNotificationCenter m_center;
    FakeSoundPlayer m_sounds;
    FakeWorkspace m_workspace;
    const SystemClock m_systemClock;
    NotificationManager m_notifications{m_center, m_sounds, m_workspace, m_systemClock, {}};
    UpdateController m_updates{{}, {}};
    std::unique_ptr<sandbox::Sandbox> m_sandbox;
    std::unique_ptr<NetworkHttpClient> m_http;
    std::unique_ptr<ManualClock> m_clock;
    std::unique_ptr<UserDefaults> m_defaults;
    std::unique_ptr<AppDelegate> m_delegate;
};

TIDEMARK_GUI_TEST(SandboxPollingTest)
#include "SandboxPollingTest.moc"

#pragma once

#include <QGuiApplication>
#include <QJsonDocument>
#include <QTemporaryDir>
#include <QWindow>
#include <memory>

#include "app/AppDelegate.h"
#include "popover/PopoverView.h"
#include "tests/TestProgram.h"
#include "tests/fakes/FakeHttpClient.h"
#include "tests/fakes/FakeKeychain.h"
#include "tests/fakes/FakeLoginItem.h"
#include "tests/fakes/FakeNotificationCenter.h"
#include "tests/fakes/FakeSoundPlayer.h"
#include "tests/fakes/FakeStatusBar.h"
#include "tests/fakes/FakeWorkspace.h"
#include "tests/fakes/ManualClock.h"

namespace tidemark {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

/// A delegate among fakes. The project lists are prepared with `listProjects`, the deployments with
/// `answerDeployments`; what is requested is noted in `timeline` as "seconds since the launch, what".
class Rig {
public:
    Rig() {
        PopoverView::prepareApplication();
        keychainWorker.setMaxThreadCount(1);
        http.answer(HttpMethod::get, u"/api/v2/status.json"_s,
                    httpAnswer(200, R"({"status":{"indicator":"none"}})"));
    }

    ~Rig() { quit(); }

    static VercelAccount account(const QString& id, const QString& token = u"tok"_s) {
        return {.id = id, .name = id, .teamId = u"team-"_s + id, .apiToken = token};
    }

    /// What the configuration file and the keychain hold at the launch.
    void store(const AppConfiguration& configuration) {
        QVERIFY(ConfigStore(configPath(), *keychain).save(configuration));
    }

    void listProjects(const QString& accountId, const QStringList& names) {
        ProjectsResponse response;
        for (const auto& name : names)
            response.projects.append({.id = name, .name = name});
        answerList(accountId, httpAnswer(200, QJsonDocument(response.encode()).toJson()));
        for (const auto& name : names) {
            accountOf[name] = accountId;
            answerDeployments(name, {u"READY"_s});
            answerDomains(name,
                          httpAnswer(200, R"({"domains":[{"name":"custom.example","verified":true}]})"));
        }
    }

    void answerList(const QString& accountId, const HttpResult& result) {
        answer(u"/v9/projects?limit=100&teamId=team-"_s + accountId, u"list "_s + accountId, result);
    }

    /// The states of a project's deployments, newest first.
    void answerDeployments(const QString& project, const QStringList& states) {
        DeploymentsResponse response;
        for (const auto& state : states)
            response.deployments.append(
                {.id = state, .name = project, .url = u"u"_s, .created = 1, .state = state});
        answerDeployments(project, httpAnswer(200, QJsonDocument(response.encode()).toJson()));
    }
    void answerDeployments(const QString& project, const HttpResult& result) {
        answer(deploymentsTarget(project), project, result);
    }
    void answerDomains(const QString& project, const HttpResult& result) {
        answer(u"/v9/projects/%1/domains?limit=50&teamId=team-%2"_s.arg(project, accountOf.value(project)),
               u"domain of "_s + project, result);
    }
    [[nodiscard]] QString deploymentsTarget(const QString& project) const {
        return u"/v6/deployments?projectId=%1&limit=5&teamId=team-%2"_s.arg(project,
                                                                            accountOf.value(project));
    }

    /// Starts the program and lets it come to rest, the configuration read.
    void launch() {
        launchWithoutWaiting();
        settle();
    }

    void launchWithoutWaiting() {
        m_timelineStart = clock.now();
        defaults = std::make_unique<UserDefaults>(folder.filePath(u"defaults.ini"_s));
        notifications = std::make_unique<NotificationManager>(notificationCenter, sounds, workspace, clock,
                                                              Bundle{.identifier = u"com.tidemark.Test"_s});
        delegate = std::make_unique<AppDelegate>(
            AppDelegate::Services{.http = http,
                                  .clock = clock,
                                  .defaults = *defaults,
                                  .keychain = *keychain,
                                  .keychainWorker = keychainWorker,
                                  .loginItem = loginItem,
                                  .statusBar = statusBar,
                                  .notifications = *notifications,
                                  .updates = updates,
                                  .workspace = workspace,
                                  .endpoints = Endpoints::below(QUrl(u"https://sandbox.example"_s)),
                                  .configPath = configPath()});
        delegate->applicationDidFinishLaunching();
    }

    void save(const AppConfiguration& configuration) {
        delegate->saveConfiguration(configuration);
        settle();
    }

    /// Lets the event loop come to rest, the configuration read or written.
    void settle() {
        // Every page of a project list takes its way through a worker as well.
        for (int i = 0; i < 5; ++i) {
            keychainWorker.waitForDone();
            QThreadPool::globalInstance()->waitForDone();
            ManualClock::settle();
        }
    }

    /// The preferences window; null while it is not shown.
    [[nodiscard]] static QWindow* preferencesWindow() {
        for (QWindow* window : QGuiApplication::topLevelWindows())
            if (window->isVisible() && window->title() == u"Tidemark Preferences"_s)
                return window;
        return nullptr;
    }

    /// Ends the program. What it stored is there for the next launch.
    void quit() {
        delegate.reset();
        notifications.reset();
        defaults.reset();
        const auto items = keychain->items();
        keychain = std::make_unique<FakeKeychain>();
        for (const auto& item : items)
            keychain->insert(item.attributes, item.data);
    }

    AppState& state() { return delegate->appState(); }
    [[nodiscard]] QString configPath() const { return folder.filePath(u"config.json"_s); }

    /// The notes from now on count from now.
    void restartTimeline() {
        m_timelineStart = clock.now();
        m_timeline.clear();
    }

    /// The notes since the last call.
    QStringList takeTimeline() { return std::exchange(m_timeline, {}); }

    QTemporaryDir folder;
    FakeHttpClient http;
    ManualClock clock;
    std::unique_ptr<FakeKeychain> keychain = std::make_unique<FakeKeychain>();
    QThreadPool keychainWorker;
    FakeLoginItem loginItem;
    FakeStatusBar statusBar;
    FakeNotificationCenter notificationCenter;
    FakeSoundPlayer sounds;
    FakeWorkspace workspace;
    std::unique_ptr<UserDefaults> defaults;
    std::unique_ptr<NotificationManager> notifications;
    /// Of a build that is not configured for updates.
    UpdateController updates{{}, {}};
    std::unique_ptr<AppDelegate> delegate;
    QHash<QString, QString> accountOf;

private:
    void answer(const QString& target, const QString& note, const HttpResult& result) {
        http.answer(HttpMethod::get, target, [this, note, result](const HttpRequest&) {
            const auto seconds =
                std::chrono::duration_cast<std::chrono::seconds>(clock.now() - m_timelineStart);
            m_timeline.append(u"%1 %2"_s.arg(seconds.count()).arg(note));
            return result;
        });
    }

    Clock::TimePoint m_timelineStart;
    QStringList m_timeline;
};

}  // namespace tidemark

#pragma once

#include <QCoroTask>
#include <QObject>
#include <QPoint>
#include <QString>
#include <QThreadPool>
#include <memory>
#include <optional>
#include <stop_token>

#include "app/ConfigurationService.h"
#include "app/Endpoints.h"
#include "app/Windows.h"
#include "app/engine/AccountWatch.h"
#include "app/engine/DeploymentPoller.h"
#include "app/engine/PlatformStatusPoller.h"
#include "app/engine/ProjectLoader.h"
#include "app/engine/Redeployer.h"
#include "app/items/MainItem.h"
#include "app/items/PinnedItems.h"
#include "notify/NotificationManager.h"
#include "notify/UpdateController.h"
#include "platform/base/Clock.h"
#include "platform/base/TaskScope.h"
#include "platform/base/UserDefaults.h"
#include "platform/http/HttpClient.h"
#include "platform/session/LoginItem.h"
#include "platform/session/Workspace.h"
#include "platform/tray/StatusItem.h"
#include "state/AppState.h"

namespace tidemark {

/// The owner of everything that lives for the whole run: start-up in order, the connections between the
/// parts, and quitting. Its parts run cooperative tasks on the UI thread, which give it up at every
/// `co_await`, so no two steps run at the same time. All tasks have ended before the delegate goes.
class AppDelegate final : public QObject {
    Q_OBJECT

public:
    /// All of it outlives the delegate.
    struct Services {
        HttpClient& http;
        Clock& clock;
        UserDefaults& defaults;
        Keychain& keychain;
        /// A single thread on which the keychain is asked, because it may wait for its user.
        QThreadPool& keychainWorker;
        LoginItem& loginItem;
        StatusBar& statusBar;
        NotificationManager& notifications;
        UpdateController& updates;
        Workspace& workspace;
        Endpoints endpoints;
        QString configPath;
        /// The program's; may be empty.
        QString version;
    };

    explicit AppDelegate(Services services);
    ~AppDelegate() override;

    [[nodiscard]] AppState& appState() { return m_appState; }

    /// Builds everything and starts watching. Called once, when the event loop is about to run.
    void applicationDidFinishLaunching();

    /// Uses an edited configuration from now on, and stores it.
    void saveConfiguration(const AppConfiguration& configuration) {
        m_configuration.saveConfiguration(configuration);
    }
    void togglePopover(QPoint place) { m_windows->togglePopover(place); }
    /// Opens the popover where no panel was clicked. Ignored before the launch.
    void showPopover();
    void openPreferences() { m_windows->openPreferences(); }
    /// Somebody looks at the list of all projects.
    void manageProjects() { m_projectLoader.refreshLists(); }
    /// Brings the login item in line; errors are dropped.
    void applyLaunchAtLogin(bool enabled);
    void startStatusPolling() { m_statusPoller.startStatusPolling(); }

private:
    void makePinnedItems();
    void connectParts();
    void handleNotifications();
    [[nodiscard]] QCoro::Task<> finishLaunching();
    void apply(const AppConfiguration& configuration);

    Services m_services;
    AppState m_appState;
    /// Ends requests under way.
    std::stop_source m_quit;
    VercelClients m_clients;
    ConfigurationService m_configuration;
    AccountWatch m_accountWatch;
    ProjectLoader m_projectLoader;
    DeploymentPoller m_poller;
    PlatformStatusPoller m_statusPoller;
    Redeployer m_redeployer;
    /// As last applied.
    std::optional<bool> m_launchAtLogin;
    std::unique_ptr<MainItem> m_mainItem;
    std::unique_ptr<PinnedItems> m_pinnedItems;
    std::unique_ptr<Windows> m_windows;
    /// Last, so that its tasks end first.
    TaskScope m_tasks;
};

}  // namespace tidemark

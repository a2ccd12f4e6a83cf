#pragma once

#include <QCoroTask>
#include <QFuture>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QQmlEngine>
#include <QString>
#include <QThreadPool>
#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <stop_token>
#include <utility>

#include "app/Endpoints.h"
#include "app/ProjectStatusItem.h"
#include "config/ConfigStore.h"
#include "notify/NotificationManager.h"
#include "notify/UpdateController.h"
#include "platform/base/Clock.h"
#include "platform/base/TaskScope.h"
#include "platform/base/UserDefaults.h"
#include "platform/http/HttpClient.h"
#include "platform/session/LoginItem.h"
#include "platform/session/Workspace.h"
#include "platform/tray/StatusItem.h"
#include "platform/windows/Popover.h"
#include "popover/PopoverModel.h"
#include "preferences/PreferencesWindowController.h"
#include "preferences/UpdateWindow.h"
#include "state/AppState.h"
#include "vercel/VercelAPIClient.h"

namespace tidemark {

/// What one poll cycle is to do.
struct PollPlan {
    /// The tracked projects that can be polled, each with the client of the account that owns it.
    QList<std::pair<QString, VercelAPIClient>> clients;
    bool productionOnly = false;
    /// As configured; see `AppDelegate::pollingInterval`.
    qint64 intervalSeconds = 30;
};

/// How polling one project ended.
enum class PollOutcome : quint8 {
    finished,     ///< successfully or with an ordinary error
    rateLimited,  ///< the API refused because of too many requests
};

/// The owner of everything that lives for the whole run. UI thread only. What it starts are cooperative
/// tasks on that thread: they give it up at every `co_await`, so no two steps run at the same time, and they
/// have all ended before the delegate goes.
class AppDelegate final : public QObject {
    Q_OBJECT

public:
    /// What the program stands on; all of it outlives the delegate.
    struct Services {
        HttpClient& http;
        Clock& clock;
        UserDefaults& defaults;
        Keychain& keychain;
        /// A single thread on which the keychain is asked: it may wait for its user.
        QThreadPool& keychainWorker;
        LoginItem& loginItem;
        StatusBar& statusBar;
        NotificationManager& notifications;
        UpdateController& updates;
        Workspace& workspace;
        Endpoints endpoints;
        /// Where the configuration file is.
        QString configPath;
        /// The program's; may be empty.
        QString version;
    };

    explicit AppDelegate(Services services);
    ~AppDelegate() override;

    [[nodiscard]] AppState& appState() { return m_appState; }

    /// Builds everything and starts watching. Called once, when the event loop is about to run.
    void applicationDidFinishLaunching();

    /// Takes over an edited configuration: stores it and starts again with it. A configuration that cannot be
    /// stored is used all the same until the program ends.
    void saveConfiguration(const AppConfiguration& configuration);

    /// Opens the popover at the click on the panel that was reported to be there, or closes it.
    void togglePopover(QPoint place);
    /// Brings up the popover where no panel was clicked.
    void showPopover();

    /// Lets the user edit the configuration: closes the popover and shows the preferences window.
    void openPreferences();

    /// Brings the login item in line; errors are dropped.
    void applyLaunchAtLogin(bool enabled);

    /// Fetches the project lists of all accounts, one after the other, then starts polling anew. An account
    /// that fails keeps the projects that are known of it. One that the network did not let through, as at a
    /// login, is asked again from time to time until it answers.
    [[nodiscard]] QCoro::Task<> loadProjects();

    /// Starts the polling loop in place of the running one, which ends at its next check.
    void startPolling();
    [[nodiscard]] PollPlan makePollPlan() const;

    /// Polls one project once and writes what came of it into the state.
    [[nodiscard]] QCoro::Task<PollOutcome> fetchAndUpdate(QString projectId, VercelAPIClient client,
                                                          bool productionOnly);

    /// Redeploys the newest deployment that is known of a project and, when the new one can be listed, polls
    /// the project once. Does nothing without such a deployment or without an account with a token.
    [[nodiscard]] QCoro::Task<> redeployProject(QString projectId);

    /// Brings the panel entries in line with the pinned projects.
    void syncIndividualItems();

    /// Starts the loop that watches the platform's own status.
    void startStatusPolling();

    /// The wait that a configured interval stands for. A file edited by hand may hold any number: what cannot
    /// be waited is brought into the range from a second to the longest wait of the clock.
    [[nodiscard]] static std::chrono::seconds pollingInterval(qint64 configuredSeconds);

private:
    void setupMainStatusItem();
    void updateMainButton();
    void setupPopover();
    [[nodiscard]] PopoverModel::Actions popoverActions();
    [[nodiscard]] std::unique_ptr<QWindow> makePopoverWindow();
    [[nodiscard]] QQmlEngine& engine();

    /// The window's controller, made at the first opening, with its callback set.
    [[nodiscard]] PreferencesWindowController& preferencesController();
    [[nodiscard]] QFuture<std::optional<AppConfiguration>> loadConfiguration(
        Keychain::Prompting prompting = Keychain::Prompting::allowed);
    /// What the user is shown to edit: the stored configuration, which is worked with as well when nothing
    /// else is, or, when it cannot be read, the one in use.
    [[nodiscard]] QFuture<std::optional<AppConfiguration>> loadForEditing();

    void setupUpdates();
    void presentUpdate();

    void setupRedeployHandler();
    /// Ends when the redeploy has ended, or the delegate.
    [[nodiscard]] static QCoro::Task<> redeployAndWait(QPointer<AppDelegate> delegate, QString projectId);

    void observeIndividualIds();
    /// Empty in a build without updates.
    [[nodiscard]] std::function<void()> checkForUpdatesAction();
    [[nodiscard]] std::unique_ptr<ProjectStatusItem> makeIndividualItem(const VercelProject& project);
    [[nodiscard]] ProjectStatusItem* individualItem(const QString& projectId) const;
    void refresh(const QString& projectId);
    [[nodiscard]] QCoro::Task<> refreshOnce(QString projectId, VercelAPIClient client);

    [[nodiscard]] QCoro::Task<> finishLaunching();
    /// Works with the stored configuration if it is usable and neither another one is in use nor has the user
    /// saved one. Whether it does.
    bool takeOver(const std::optional<AppConfiguration>& stored);
    /// From now on what is stored is not taken over any more.
    void stopAwaitingStored();
    /// Loads what could not be loaded at the start: the keyring may have come or been unlocked since.
    void loadLate();
    [[nodiscard]] QCoro::Task<> loadWhileDue();
    /// Works with the configuration from now on.
    void apply(const AppConfiguration& configuration);
    /// With `isTypedAnew` the user has not seen what is stored: a Cloudflare token that was left out stays,
    /// and is used.
    [[nodiscard]] QCoro::Task<> store(AppConfiguration configuration, bool isTypedAnew);
    /// Adds the stored token to the configuration if it is still that one.
    [[nodiscard]] QCoro::Task<> takeOverCloudflareToken(AppConfiguration configuration);
    /// Fetches the lists of these accounts. Those that the network did not let through.
    [[nodiscard]] QCoro::Task<QList<VercelAccount>> fetchProjects(QList<VercelAccount> accounts,
                                                                  std::stop_token stop);
    [[nodiscard]] QCoro::Task<> fetchLateProjects(QList<VercelAccount> missing, std::stop_token stop);
    [[nodiscard]] QCoro::Task<> runPollingLoop(std::stop_token stop);
    [[nodiscard]] QCoro::Task<> runStatusLoop(std::stop_token stop);
    void recordDeployments(const QString& projectId, const QList<Deployment>& deployments);
    void recordError(const QString& projectId, const QString& error);
    [[nodiscard]] QCoro::Task<> lookUpProductionDomain(QString projectId, VercelAPIClient client);

    [[nodiscard]] VercelAPIClient clientFor(const VercelAccount& account) const;
    /// The client of the account that owns a project; nothing without a known project, an owner or a token.
    [[nodiscard]] std::optional<VercelAPIClient> clientForProject(const QString& projectId) const;
    [[nodiscard]] bool isQuitting() const { return m_quit.stop_requested(); }

    Services m_services;
    ConfigStore m_configStore;
    AppState m_appState;
    PopoverModel m_popoverModel;
    std::unique_ptr<StatusItem> m_mainStatusItem;
    /// Of all windows. Made when the first one is shown.
    std::unique_ptr<QQmlEngine> m_engine;
    std::unique_ptr<Popover> m_popover;
    std::unique_ptr<PreferencesWindowController> m_preferencesController;
    std::unique_ptr<UpdateWindow> m_updateWindow;
    /// The panel entries of the pinned projects, by project id.
    std::map<QString, std::unique_ptr<ProjectStatusItem>> m_individualItems;
    bool m_awaitsStored = true;
    /// At any time in this run.
    bool m_hasReadStored = false;
    /// While a stored configuration is awaited; null where the keychain needs none.
    std::unique_ptr<KeychainWatcher> m_keychainWatcher;
    bool m_isLateLoadDue = false;
    bool m_isLoadingLate = false;
    TaskHandle m_lateProjectsTask;
    TaskHandle m_pollingTask;
    TaskHandle m_statusTask;
    /// Ends requests under way; replacing a loop does not, it lets the loop finish the project it is at.
    std::stop_source m_quit;
    /// Last, so that its tasks end first.
    TaskScope m_tasks;
};

}  // namespace tidemark

#include "app/AppDelegate.h"

#include <QCoreApplication>
#include <QPointer>
#include <utility>

namespace tidemark {

using namespace Qt::StringLiterals;

AppDelegate::AppDelegate(Services services)
    : m_services(std::move(services)),
      m_appState(m_services.defaults),
      m_clients(m_services.http, m_services.endpoints.vercelApi, m_appState),
      m_configuration(m_appState, {.keychain = m_services.keychain,
                                   .keychainWorker = m_services.keychainWorker,
                                   .configPath = m_services.configPath}),
      m_accountWatch(m_appState, m_services.notifications),
      m_projectLoader(m_appState, m_clients, m_services.clock, m_accountWatch, m_quit.get_token()),
      m_poller(m_appState, m_clients, m_services.clock, m_services.notifications, m_accountWatch,
               m_quit.get_token()),
      m_statusPoller(m_appState, m_services.http, m_services.endpoints.vercelStatus, m_services.clock,
                     m_quit.get_token()),
      m_redeployer(m_appState, m_clients, m_services.clock, m_poller, m_services.notifications,
                   m_quit.get_token()) {}

AppDelegate::~AppDelegate() {
    m_configuration.cancel();
    m_quit.request_stop();
    m_windows.reset();
}

void AppDelegate::applicationDidFinishLaunching() {
    m_mainItem = std::make_unique<MainItem>(m_appState, m_services.clock, m_services.statusBar);
    m_windows = std::make_unique<Windows>(m_appState, m_configuration,
                                          Windows::Services{.http = m_services.http,
                                                            .clock = m_services.clock,
                                                            .updates = m_services.updates,
                                                            .workspace = m_services.workspace,
                                                            .endpoints = m_services.endpoints,
                                                            .version = m_services.version});
    m_mainItem->setAction([this](QPoint place) { togglePopover(place); });
    makePinnedItems();
    connectParts();
    handleNotifications();
    m_redeployer.setupRedeployHandler();
    startStatusPolling();
    m_tasks.start([this](std::stop_token) { return finishLaunching(); });
}

void AppDelegate::makePinnedItems() {
    m_pinnedItems = std::make_unique<PinnedItems>(
        m_appState,
        ProjectStatusItem::Services{.statusBar = m_services.statusBar,
                                    .notifications = m_services.notifications,
                                    .workspace = m_services.workspace,
                                    .clock = m_services.clock},
        PinnedItems::Actions{
            .onRefresh = [this](const QString& projectId) { m_poller.refresh(projectId); },
            .onPreferences = [this] { openPreferences(); },
            .onCheckForUpdates = m_services.updates.isConfigured()
                                     ? std::function<void()>([this] { m_services.updates.checkForUpdates(); })
                                     : std::function<void()>(),
            .onQuit = [] { QCoreApplication::quit(); }});
}

void AppDelegate::connectParts() {
    connect(&m_configuration, &ConfigurationService::applied, this, &AppDelegate::apply);
    connect(&m_configuration, &ConfigurationService::saveFailed, this, [this](const QString& error) {
        m_services.notifications.announce(
            u"Your settings were not saved"_s,
            u"%1: %2. They are used until you quit."_s.arg(m_services.configPath, error),
            NotificationManager::Opens::preferences);
    });
    // Not every keyring reports everything.
    connect(m_windows.get(), &Windows::popoverAboutToShow, &m_configuration, &ConfigurationService::loadLate);
    connect(&m_appState, &AppState::productionOnlyChanged, this, [this] { m_poller.filterChanged(); });
    connect(&m_appState, &AppState::projectChosen, this,
            [this](const QString& projectId) { m_poller.refresh(projectId); });
    connect(&m_projectLoader, &ProjectLoader::loaded, this, [this] {
        m_pinnedItems->syncIndividualItems();
        m_poller.startPolling();
    });
    connect(&m_projectLoader, &ProjectLoader::listsRefreshed, this, [this] {
        m_pinnedItems->syncIndividualItems();
        m_poller.startPollingIfIdle();
    });
    connect(m_windows.get(), &Windows::projectsManaged, this, &AppDelegate::manageProjects);
}

void AppDelegate::handleNotifications() {
    using Opens = NotificationManager::Opens;
    // Guarded, because the notification center may deliver a click after this object has gone.
    const auto open = [delegate = QPointer(this)](Opens what) {
        if (delegate && what == Opens::preferences)
            delegate->openPreferences();
        else if (delegate)
            delegate->showPopover();
    };
    const auto redeploy = [delegate = QPointer(this)](const QString& projectId) {
        if (delegate)
            delegate->m_windows->redeploy(projectId);
    };
    m_services.notifications.setHandlers({.open = open, .redeploy = redeploy});
}

QCoro::Task<> AppDelegate::finishLaunching() {
    QCoro::Task<ConfigurationService::StartResult> loading = m_configuration.loadAtStart();
    const ConfigurationService::StartResult result = co_await loading;
    if (m_quit.stop_requested() || result.isApplied)
        co_return;
    m_windows->openPreferences(result.stored);
}

void AppDelegate::apply(const AppConfiguration& configuration) {
    const bool isTurnedOn = m_launchAtLogin == false && configuration.launchAtLogin;
    m_launchAtLogin = configuration.launchAtLogin;
    // An entry that the user has switched off in the desktop's settings stays off until the box is ticked
    // anew.
    if (isTurnedOn || m_services.loginItem.status() != LoginItem::Status::requiresApproval)
        applyLaunchAtLogin(configuration.launchAtLogin);
    m_services.notifications.setSoundEnabled(configuration.soundEnabled);
    m_accountWatch.configurationChanged();
    m_projectLoader.loadProjects();
}

void AppDelegate::showPopover() {
    if (m_windows)
        m_windows->showPopover();
}

void AppDelegate::applyLaunchAtLogin(bool enabled) {
    const bool isRegistered = m_services.loginItem.status() == LoginItem::Status::enabled;
    if (enabled == isRegistered)
        return;
    [[maybe_unused]] const bool isDone =
        enabled ? m_services.loginItem.registerItem() : m_services.loginItem.unregisterItem();
}

}  // namespace tidemark

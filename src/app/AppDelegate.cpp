#include "app/AppDelegate.h"

#include <QCoroFuture>
#include <QtConcurrentRun>
#include <algorithm>

namespace tidemark {

AppDelegate::AppDelegate(Services services)
    : m_services(std::move(services)),
      m_configStore(m_services.configPath, m_services.keychain),
      m_appState(m_services.defaults),
      m_popoverModel(m_appState, m_services.clock, m_services.workspace, m_services.version,
                     popoverActions()) {}

AppDelegate::~AppDelegate() {
    // Nobody clicks into a window whose program is ending.
    m_popover.reset();
    m_updateWindow.reset();
    m_quit.request_stop();
    m_services.keychain.cancel();
    m_preferencesController.reset();
    m_tasks.finish();
}

void AppDelegate::applicationDidFinishLaunching() {
    setupUpdates();
    setupMainStatusItem();
    setupPopover();
    setupRedeployHandler();
    startStatusPolling();
    observeIndividualIds();
    m_tasks.start([this](std::stop_token) { return finishLaunching(); });
}

QFuture<std::optional<AppConfiguration>> AppDelegate::loadConfiguration(Keychain::Prompting prompting) {
    return QtConcurrent::run(&m_services.keychainWorker,
                             [store = m_configStore, prompting] { return store.load(prompting); });
}

QFuture<std::optional<AppConfiguration>> AppDelegate::loadForEditing() {
    return loadConfiguration().then(this, [this](const std::optional<AppConfiguration>& stored) {
        takeOver(stored);
        return stored ? stored : m_appState.config();
    });
}

QCoro::Task<> AppDelegate::finishLaunching() {
    // Before the first load, so that nothing goes unnoticed in between.
    m_keychainWatcher = m_services.keychain.makeWatcher();
    if (m_keychainWatcher)
        connect(m_keychainWatcher.get(), &KeychainWatcher::mayBeReadable, this, &AppDelegate::loadLate);
    // Not every keyring tells of everything.
    connect(m_popover.get(), &Popover::aboutToShow, this, &AppDelegate::loadLate);
    const QFuture<std::optional<AppConfiguration>> loading = loadConfiguration();
    const std::optional<AppConfiguration> config = co_await loading;
    if (isQuitting() || takeOver(config))
        co_return;
    m_popover->close();
    // The keyring is not asked a second time.
    preferencesController().showWindow(config);
}

bool AppDelegate::takeOver(const std::optional<AppConfiguration>& stored) {
    m_hasReadStored = m_hasReadStored || stored;
    if (isQuitting() || !m_awaitsStored || !stored || !stored->hasToken())
        return false;
    stopAwaitingStored();
    apply(*stored);
    return true;
}

void AppDelegate::stopAwaitingStored() {
    m_awaitsStored = false;
    m_isLateLoadDue = false;
    m_keychainWatcher.reset();
}

void AppDelegate::loadLate() {
    m_isLateLoadDue = m_awaitsStored;
    if (m_isLateLoadDue && !m_isLoadingLate)
        m_tasks.start([this](std::stop_token) { return loadWhileDue(); });
}

QCoro::Task<> AppDelegate::loadWhileDue() {
    m_isLoadingLate = true;
    while (m_isLateLoadDue && !isQuitting()) {
        m_isLateLoadDue = false;
        const QFuture<std::optional<AppConfiguration>> loading =
            loadConfiguration(Keychain::Prompting::unlessDeclined);
        const std::optional<AppConfiguration> stored = co_await loading;
        if (takeOver(stored) && m_preferencesController)
            m_preferencesController->offerStored(*stored);
    }
    m_isLoadingLate = false;
}

void AppDelegate::apply(const AppConfiguration& configuration) {
    m_appState.setConfig(configuration);
    applyLaunchAtLogin(configuration.launchAtLogin);
    m_services.notifications.setSoundEnabled(configuration.soundEnabled);
    m_tasks.start([this](std::stop_token) { return loadProjects(); });
}

void AppDelegate::saveConfiguration(const AppConfiguration& configuration) {
    const bool isTypedAnew = !m_hasReadStored;
    stopAwaitingStored();
    m_tasks.start(
        [this, configuration, isTypedAnew](std::stop_token) { return store(configuration, isTypedAnew); });
    // Whatever becomes of it, and however long the keyring waits for its user.
    apply(configuration);
}

QCoro::Task<> AppDelegate::store(AppConfiguration configuration, bool isTypedAnew) {
    using EmptyToken = ConfigStore::EmptyCloudflareToken;
    const auto emptyToken = isTypedAnew ? EmptyToken::leavesStored : EmptyToken::replaces;
    const QFuture<tl::expected<void, QString>> saving = QtConcurrent::run(
        &m_services.keychainWorker,
        [store = m_configStore, configuration, emptyToken] { return store.save(configuration, emptyToken); });
    co_await saving;
    if (isTypedAnew && configuration.cloudflareToken.isEmpty() && !isQuitting())
        co_await takeOverCloudflareToken(configuration);
}

QCoro::Task<> AppDelegate::takeOverCloudflareToken(AppConfiguration configuration) {
    const QFuture<QString> loading = QtConcurrent::run(&m_services.keychainWorker, [store = m_configStore] {
        return store.loadCloudflareToken(Keychain::Prompting::unlessDeclined);
    });
    const QString token = co_await loading;
    if (isQuitting() || token.isEmpty() || m_appState.config() != configuration)
        co_return;
    configuration.cloudflareToken = token;
    m_appState.setConfig(configuration);
}

void AppDelegate::applyLaunchAtLogin(bool enabled) {
    const bool isRegistered = m_services.loginItem.status() == LoginItem::Status::enabled;
    if (enabled == isRegistered)
        return;
    [[maybe_unused]] const bool isDone =
        enabled ? m_services.loginItem.registerItem() : m_services.loginItem.unregisterItem();
}

VercelAPIClient AppDelegate::clientFor(const VercelAccount& account) const {
    return {m_services.http, m_services.endpoints.vercelApi, account.apiToken, account.teamId};
}

std::optional<VercelAPIClient> AppDelegate::clientForProject(const QString& projectId) const {
    const auto project = m_appState.project(projectId);
    const auto& config = m_appState.config();
    if (!project || !config)
        return std::nullopt;
    const auto owner = std::ranges::find(config->accounts, project->accountId, &VercelAccount::id);
    if (owner == config->accounts.cend() || owner->apiToken.isEmpty())
        return std::nullopt;
    return clientFor(*owner);
}

}  // namespace tidemark

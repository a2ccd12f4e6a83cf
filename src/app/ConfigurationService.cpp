#include "app/ConfigurationService.h"

#include <QCoroFuture>
#include <QtConcurrentRun>
#include <utility>

namespace tidemark {

ConfigurationService::ConfigurationService(AppState& state, Services services)
    : m_state(state), m_services(std::move(services)), m_store(m_services.configPath, m_services.keychain) {}

ConfigurationService::~ConfigurationService() {
    cancel();
}

void ConfigurationService::cancel() {
    m_isQuitting = true;
    m_services.keychain.cancel();
}

QFuture<std::optional<AppConfiguration>> ConfigurationService::load(Keychain::Prompting prompting) {
    return QtConcurrent::run(&m_services.keychainWorker,
                             [store = m_store, prompting] { return store.load(prompting); });
}

QFuture<std::optional<AppConfiguration>> ConfigurationService::loadForEditing() {
    return load().then(this, [this](const std::optional<AppConfiguration>& stored) {
        takeOver(stored);
        return stored ? stored : m_state.config();
    });
}

QCoro::Task<ConfigurationService::StartResult> ConfigurationService::loadAtStart() {
    // Before the first load, so that nothing goes unnoticed in between.
    m_keychainWatcher = m_services.keychain.makeWatcher();
    if (m_keychainWatcher)
        connect(m_keychainWatcher.get(), &KeychainWatcher::mayBeReadable, this,
                &ConfigurationService::loadLate);
    const QFuture<std::optional<AppConfiguration>> loading = load();
    std::optional<AppConfiguration> stored = co_await loading;
    const bool isApplied = takeOver(stored);
    StartResult result{.isApplied = isApplied, .stored = std::move(stored)};
    co_return result;
}

bool ConfigurationService::takeOver(const std::optional<AppConfiguration>& stored) {
    m_hasReadStored = m_hasReadStored || stored;
    if (m_isQuitting || !m_awaitsStored || !stored || !stored->hasToken())
        return false;
    stopAwaitingStored();
    apply(*stored);
    return true;
}

void ConfigurationService::stopAwaitingStored() {
    m_awaitsStored = false;
    m_isLateLoadDue = false;
    m_keychainWatcher.reset();
}

void ConfigurationService::loadLate() {
    m_isLateLoadDue = m_awaitsStored;
    if (m_isLateLoadDue && !m_isLoadingLate)
        m_tasks.start([this](std::stop_token) { return loadWhileDue(); });
}

QCoro::Task<> ConfigurationService::loadWhileDue() {
    m_isLoadingLate = true;
    while (m_isLateLoadDue && !m_isQuitting) {
        m_isLateLoadDue = false;
        const QFuture<std::optional<AppConfiguration>> loading = load(Keychain::Prompting::unlessDeclined);
        const std::optional<AppConfiguration> stored = co_await loading;
        if (takeOver(stored))
            Q_EMIT readLate(*stored);
    }
    m_isLoadingLate = false;
}

void ConfigurationService::apply(const AppConfiguration& configuration) {
    m_state.setConfig(configuration);
    Q_EMIT applied(configuration);
}

void ConfigurationService::saveConfiguration(const AppConfiguration& configuration) {
    const bool isTypedAnew = !m_hasReadStored;
    stopAwaitingStored();
    m_tasks.start(
        [this, configuration, isTypedAnew](std::stop_token) { return store(configuration, isTypedAnew); });
    // Whether or not it can be stored, and however long the keyring waits for its user.
    apply(configuration);
}

QCoro::Task<> ConfigurationService::store(AppConfiguration configuration, bool isTypedAnew) {
    using EmptyToken = ConfigStore::EmptyCloudflareToken;
    const auto emptyToken = isTypedAnew ? EmptyToken::leavesStored : EmptyToken::replaces;
    const QFuture<tl::expected<void, QString>> saving = QtConcurrent::run(
        &m_services.keychainWorker,
        [store = m_store, configuration, emptyToken] { return store.save(configuration, emptyToken); });
    const tl::expected<void, QString> saved = co_await saving;
    if (!saved && !m_isQuitting)
        Q_EMIT saveFailed(saved.error());
    if (isTypedAnew && configuration.cloudflareToken.isEmpty() && !m_isQuitting)
        co_await takeOverCloudflareToken(configuration);
}

QCoro::Task<> ConfigurationService::takeOverCloudflareToken(AppConfiguration configuration) {
    const QFuture<QString> loading = QtConcurrent::run(&m_services.keychainWorker, [store = m_store] {
        return store.loadCloudflareToken(Keychain::Prompting::unlessDeclined);
    });
    const QString token = co_await loading;
    if (m_isQuitting || token.isEmpty() || m_state.config() != configuration)
        co_return;
    configuration.cloudflareToken = token;
    m_state.setConfig(configuration);
}

}  // namespace tidemark

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
                             [store = m_store, prompting] { return store.read(prompting); });
}

QFuture<std::optional<AppConfiguration>> ConfigurationService::loadForEditing() {
    return load().then(this, [this](const std::optional<AppConfiguration>& stored) {
        takeOver(stored);
        return editable(stored);
    });
}

std::optional<AppConfiguration> ConfigurationService::editable(
    const std::optional<AppConfiguration>& stored) const {
    const auto& inUse = m_state.config();
    if (inUse && (!stored || !m_saveError.isEmpty()))
        return inUse;
    if (!stored)
        return std::nullopt;
    const AppConfiguration completed = inUse ? stored->completedBy(*inUse) : *stored;
    // Without any token it is like none at all.
    return completed.hasToken() || completed.hasUnreadToken() ? std::optional(completed) : std::nullopt;
}

QCoro::Task<ConfigurationService::StartResult> ConfigurationService::loadAtStart() {
    // Before the first load, so that nothing goes unnoticed in between.
    m_keychainWatcher = m_services.keychain.makeWatcher();
    if (m_keychainWatcher)
        connect(m_keychainWatcher.get(), &KeychainWatcher::mayBeReadable, this,
                &ConfigurationService::loadLate);
    const QFuture<std::optional<AppConfiguration>> loading = load();
    const std::optional<AppConfiguration> stored = co_await loading;
    const bool isApplied = takeOver(stored);
    StartResult result{.isApplied = isApplied, .stored = editable(stored)};
    co_return result;
}

bool ConfigurationService::takeOver(const std::optional<AppConfiguration>& stored) {
    if (m_isQuitting || !m_awaitsStored || !stored)
        return false;
    const auto& inUse = m_state.config();
    const AppConfiguration configuration = inUse ? inUse->completedBy(*stored) : *stored;
    if (inUse ? configuration == *inUse : !configuration.hasToken())
        return false;
    if (!configuration.hasUnreadToken())
        stopAwaitingStored();
    // Nobody has to load projects anew because of the Cloudflare token.
    if (inUse && configuration.accounts == inUse->accounts)
        m_state.setConfig(configuration);
    else
        apply(configuration);
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
            Q_EMIT readLate(*m_state.config());
    }
    m_isLoadingLate = false;
}

void ConfigurationService::apply(const AppConfiguration& configuration) {
    m_state.setConfig(configuration);
    Q_EMIT applied(configuration);
}

void ConfigurationService::saveConfiguration(const AppConfiguration& configuration) {
    if (!configuration.hasUnreadToken())
        stopAwaitingStored();
    m_tasks.start([this, configuration](std::stop_token) { return store(configuration); });
    // Whether or not it can be stored, and however long the keyring waits for its user.
    apply(configuration);
}

QCoro::Task<> ConfigurationService::store(AppConfiguration configuration) {
    const QFuture<tl::expected<void, QString>> saving = QtConcurrent::run(
        &m_services.keychainWorker, [store = m_store, configuration] { return store.save(configuration); });
    const tl::expected<void, QString> saved = co_await saving;
    if (m_isQuitting)
        co_return;
    m_saveError = saved ? QString() : saved.error();
    if (!saved)
        Q_EMIT saveFailed(saved.error());
    loadLate();
}

}  // namespace tidemark

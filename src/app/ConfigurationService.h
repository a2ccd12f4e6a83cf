#pragma once

#include <QCoroTask>
#include <QFuture>
#include <QObject>
#include <QThreadPool>
#include <memory>
#include <optional>

#include "config/ConfigStore.h"
#include "platform/base/TaskScope.h"
#include "platform/keyring/Keychain.h"
#include "state/AppState.h"

namespace tidemark {

/// Loads and saves the configuration, and decides which one is in use: the stored one, one that becomes
/// readable late, or the one that the user has saved. Everything that may wait for the keyring's user runs on
/// one worker thread. UI thread only.
class ConfigurationService final : public QObject {
    Q_OBJECT

public:
    struct Services {
        Keychain& keychain;
        /// A single thread, so that calls keep their order.
        QThreadPool& keychainWorker;
        QString configPath;
    };

    /// The state and all services outlive this object.
    ConfigurationService(AppState& state, Services services);
    ~ConfigurationService() override;

    /// Loads the configuration at the start and applies it if it is usable. Gives the stored configuration
    /// otherwise.
    struct StartResult {
        bool isApplied = false;
        std::optional<AppConfiguration> stored;
    };
    [[nodiscard]] QCoro::Task<StartResult> loadAtStart();

    /// Loads again if no stored configuration is in use: the keyring may have come or been unlocked since.
    /// Its user is not asked again after declining.
    void loadLate();

    /// The configuration for the user to edit: the stored one, which is applied if none is in use, or, when
    /// that cannot be read, the one in use.
    [[nodiscard]] QFuture<std::optional<AppConfiguration>> loadForEditing();

    /// Applies an edited configuration and stores it. One that cannot be stored is used until the program
    /// ends.
    void saveConfiguration(const AppConfiguration& configuration);

    /// Ends reads and prompts of the keyring, because the program quits. A write under way goes on.
    void cancel();

Q_SIGNALS:
    /// This configuration is in use from now on; the state holds it already.
    void applied(const tidemark::AppConfiguration& configuration);
    /// A saved configuration could not be written to the file, with the system's description of the error. It
    /// is in use all the same.
    void saveFailed(const QString& error);
    /// A stored configuration was read late, and is in use.
    void readLate(const tidemark::AppConfiguration& configuration);

private:
    [[nodiscard]] QFuture<std::optional<AppConfiguration>> load(
        Keychain::Prompting prompting = Keychain::Prompting::allowed);
    /// Applies the stored configuration if it is usable, none is in use and the user has not saved one. Gives
    /// whether it was applied.
    bool takeOver(const std::optional<AppConfiguration>& stored);
    /// Stops waiting for a stored configuration.
    void stopAwaitingStored();
    [[nodiscard]] QCoro::Task<> loadWhileDue();
    void apply(const AppConfiguration& configuration);
    /// With `isTypedAnew` the user has not seen the stored configuration: a Cloudflare token that was left
    /// out stays, and is used.
    [[nodiscard]] QCoro::Task<> store(AppConfiguration configuration, bool isTypedAnew);
    /// Adds the stored token to the configuration if it is still in use.
    [[nodiscard]] QCoro::Task<> takeOverCloudflareToken(AppConfiguration configuration);

    AppState& m_state;
    Services m_services;
    ConfigStore m_store;
    bool m_awaitsStored = true;
    /// At any time in this run.
    bool m_hasReadStored = false;
    /// While a stored configuration is awaited; null where the keychain needs none.
    std::unique_ptr<KeychainWatcher> m_keychainWatcher;
    bool m_isLateLoadDue = false;
    bool m_isLoadingLate = false;
    bool m_isQuitting = false;
    /// Last, so that its tasks end first.
    TaskScope m_tasks;
};

}  // namespace tidemark

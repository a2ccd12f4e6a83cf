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

    /// Loads the configuration at the start and applies it if it is usable. Otherwise gives what there is for
    /// the user to edit.
    struct StartResult {
        bool isApplied = false;
        std::optional<AppConfiguration> stored;
    };
    [[nodiscard]] QCoro::Task<StartResult> loadAtStart();

    /// Loads again if no stored configuration is in use, or one with tokens that could not be read: the
    /// keyring may have come or been unlocked since. Its user is not asked again after declining.
    void loadLate();

    /// The configuration for the user to edit: the stored one, which is applied if none is in use, or, when
    /// that cannot be read or could not be saved, the one in use. Tokens that cannot be read are those in
    /// use, or marked. Nothing when nothing was ever configured.
    [[nodiscard]] QFuture<std::optional<AppConfiguration>> loadForEditing();
    /// Why the configuration in use could not be saved; empty when it was.
    [[nodiscard]] QString saveError() const { return m_saveError; }

    /// Applies an edited configuration and stores it. One that cannot be stored is used until the program
    /// ends. Stored tokens that could not be read stay, and are used as soon as they can.
    void saveConfiguration(const AppConfiguration& configuration);

    /// Ends reads and prompts of the keyring, because the program quits. A write under way goes on.
    void cancel();

Q_SIGNALS:
    /// This configuration is in use from now on; the state holds it already.
    void applied(const tidemark::AppConfiguration& configuration);
    /// A saved configuration could not be written to the file, with the system's description of the error. It
    /// is in use all the same.
    void saveFailed(const QString& error);
    /// A stored configuration, or tokens of it, was read late. This one is in use now.
    void readLate(const tidemark::AppConfiguration& configuration);

private:
    [[nodiscard]] QFuture<std::optional<AppConfiguration>> load(
        Keychain::Prompting prompting = Keychain::Prompting::allowed);
    /// Applies the stored configuration if it is usable and none is in use, or adds tokens from it to the one
    /// in use. Gives whether it did.
    bool takeOver(const std::optional<AppConfiguration>& stored);
    /// Stops waiting for the keyring.
    void stopAwaitingStored();
    /// What of this the user is to edit.
    [[nodiscard]] std::optional<AppConfiguration> editable(
        const std::optional<AppConfiguration>& stored) const;
    [[nodiscard]] QCoro::Task<> loadWhileDue();
    void apply(const AppConfiguration& configuration);
    [[nodiscard]] QCoro::Task<> store(AppConfiguration configuration);

    AppState& m_state;
    Services m_services;
    ConfigStore m_store;
    QString m_saveError;
    /// Whether the keyring may still have what is not in use yet.
    bool m_awaitsStored = true;
    /// While the keyring is awaited; null where the keychain needs none.
    std::unique_ptr<KeychainWatcher> m_keychainWatcher;
    bool m_isLateLoadDue = false;
    bool m_isLoadingLate = false;
    bool m_isQuitting = false;
    /// Last, so that its tasks end first.
    TaskScope m_tasks;
};

}  // namespace tidemark

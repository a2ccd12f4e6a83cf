#pragma once

#include <tl/expected.hpp>

#include <QString>
#include <optional>

#include "config/AppConfiguration.h"
#include "platform/keyring/Keychain.h"

namespace tidemark {

/// Loads and saves the configuration: tokens in the keychain and everything else in a file. It has no state.
/// Calls block for the keychain, so use a worker thread and one call at a time.
class ConfigStore {
public:
    /// What happens to a stored Cloudflare token when the saved configuration has an empty one.
    enum class EmptyCloudflareToken : quint8 {
        replaces,
        leavesStored,  ///< for a user who has not been shown the stored token
    };

    /// Uses the file at `configPath`. The keychain must outlive the store.
    ConfigStore(QString configPath, Keychain& keychain);

    /// The path of the user's file: "Tidemark/config.json" in the configuration folder.
    [[nodiscard]] static QString configURL();

    /// The configuration with its tokens. Nothing when the file cannot be read or decoded, when no account
    /// has a token, and when the keychain went away during the load, because its missing tokens would look
    /// empty. A file of the version with a single account is migrated at every load, but never written.
    [[nodiscard]] std::optional<AppConfiguration> load(
        Keychain::Prompting prompting = Keychain::Prompting::allowed) const;

    /// The stored Cloudflare token; empty when there is none or it cannot be read.
    [[nodiscard]] QString loadCloudflareToken(
        Keychain::Prompting prompting = Keychain::Prompting::allowed) const;

    /// Stores the tokens, then writes the file atomically. Gives the system's description of the first error
    /// with the folder or the file, in which case the tokens stay stored. Errors of the keychain are not
    /// reported.
    ///
    /// A former file that cannot be decoded or shares no account with the configuration is kept beside it as
    /// "config.json.bak", ".bak2" and so on, because it may have been unreadable when the user entered the
    /// settings again. If it cannot be kept, it is not replaced.
    [[nodiscard]] tl::expected<void, QString> save(
        const AppConfiguration& configuration,
        EmptyCloudflareToken emptyToken = EmptyCloudflareToken::replaces) const;

private:
    [[nodiscard]] std::optional<QByteArray> readFile() const;
    /// The stored token; empty when there is none.
    [[nodiscard]] QString tokenOf(const QString& account) const;
    [[nodiscard]] tl::expected<void, QString> keepWhatIsReplaced(const AppConfiguration& configuration) const;

    QString m_configPath;
    Keychain* m_keychain;
};

}  // namespace tidemark

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
    /// Uses the file at `configPath`. The keychain must outlive the store.
    ConfigStore(QString configPath, Keychain& keychain);

    /// The path of the user's file: "Tidemark/config.json" in the configuration folder.
    [[nodiscard]] static QString configURL();

    /// The configuration with its tokens: empty where there is none, and marked where one could not be read.
    /// Nothing when the file cannot be read or decoded. A file of the version with a single account is
    /// migrated at every load, but never written.
    [[nodiscard]] std::optional<AppConfiguration> read(
        Keychain::Prompting prompting = Keychain::Prompting::allowed) const;

    /// The same, but nothing when no account has a token.
    [[nodiscard]] std::optional<AppConfiguration> load() const;

    /// Stores the tokens, except for those that could not be read, then writes the file atomically. Gives the
    /// system's description of the first error with the folder or the file, in which case the tokens stay
    /// stored. Errors of the keychain are not reported.
    ///
    /// A former file that cannot be decoded or shares no account with the configuration is copied to
    /// "config.json.bak", in place of an earlier copy, because it may have been unreadable when the user
    /// entered the settings again. If it cannot be copied, it is not replaced.
    [[nodiscard]] tl::expected<void, QString> save(const AppConfiguration& configuration) const;

private:
    /// Reads the stored token of `account`; `isUnread` tells that it could not be read.
    void readToken(const QString& account, QString& token, bool& isUnread) const;
    [[nodiscard]] tl::expected<void, QString> keepWhatIsReplaced(const AppConfiguration& configuration) const;

    QString m_configPath;
    Keychain* m_keychain;
};

}  // namespace tidemark

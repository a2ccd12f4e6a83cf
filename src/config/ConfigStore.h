#pragma once

#include <tl/expected.hpp>

#include <QString>
#include <optional>

#include "config/AppConfiguration.h"
#include "platform/keyring/Keychain.h"

namespace tidemark {

/// Loads and saves the configuration: a file for everything but the tokens, which live in the keychain. Keeps
/// no state. Calls wait for the keychain: use a worker thread, one call at a time.
class ConfigStore {
public:
    /// What becomes of a stored Cloudflare token when one without it is saved.
    enum class EmptyCloudflareToken : quint8 {
        replaces,
        leavesStored,  ///< the user, who left it empty, has not seen that there is one
    };

    /// The file at `configPath`; the keychain must outlive the store.
    ConfigStore(QString configPath, Keychain& keychain);

    /// The user's file: "Tidemark/config.json" in the configuration folder.
    [[nodiscard]] static QString configURL();

    /// The configuration with its tokens. Absent when the file cannot be read or decoded, when no account has
    /// a token, and when the keychain went away meanwhile: what it did not give would pass for empty. A file
    /// of the single-account layout is migrated at every load, and never written.
    [[nodiscard]] std::optional<AppConfiguration> load(
        Keychain::Prompting prompting = Keychain::Prompting::allowed) const;

    /// The stored Cloudflare token; empty when there is none or when it cannot be read.
    [[nodiscard]] QString loadCloudflareToken(
        Keychain::Prompting prompting = Keychain::Prompting::allowed) const;

    /// Stores the tokens, then writes the file, all or nothing. Gives the system's description of the first
    /// error of folder or file; the tokens stay stored then. The keychain reports nothing.
    ///
    /// A former file that cannot be decoded or shares no account with the configuration is kept beside it, as
    /// "config.json.bak", ".bak2" and so on: it may not have been readable when the user typed everything in
    /// anew. One that cannot be kept is not replaced.
    [[nodiscard]] tl::expected<void, QString> save(
        const AppConfiguration& configuration,
        EmptyCloudflareToken emptyToken = EmptyCloudflareToken::replaces) const;

private:
    [[nodiscard]] std::optional<QByteArray> readFile() const;
    /// Empty when there is none.
    [[nodiscard]] QString tokenOf(const QString& account) const;
    [[nodiscard]] tl::expected<void, QString> keepWhatIsReplaced(const AppConfiguration& configuration) const;

    QString m_configPath;
    Keychain* m_keychain;
};

}  // namespace tidemark

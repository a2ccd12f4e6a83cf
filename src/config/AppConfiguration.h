#pragma once

#include <tl/expected.hpp>

#include <QByteArray>
#include <QList>
#include <QString>
#include <functional>

#include "platform/base/JsonReader.h"

namespace tidemark {

/// One Vercel account.
struct VercelAccount {
    /// A UUID, upper case with hyphens; also the key of the token in the keychain.
    QString id;
    QString name;
    /// Empty for a personal account.
    QString teamId;
    /// In the keychain only, never in a file.
    QString apiToken{};

    /// A new account without team and token: what stands there when nothing is configured.
    [[nodiscard]] static VercelAccount makeDefault();
    bool operator==(const VercelAccount&) const = default;
};

/// The user's settings.
struct AppConfiguration {
    QList<VercelAccount> accounts{};
    /// In the keychain only; empty when analytics are not configured.
    QString cloudflareToken{};
    qint64 pollingIntervalSeconds = 30;
    bool launchAtLogin = false;
    bool soundEnabled = true;

    /// Whether any account has a token.
    [[nodiscard]] bool hasToken() const;

    /// The file's content, without tokens: indented JSON, members in the order of the fields.
    [[nodiscard]] QByteArray encode() const;

    /// Reads the file's content. `migrateToken` is called with the account that takes the place of the
    /// accounts when the file has none that can be read, as one of the single-account layout.
    [[nodiscard]] static tl::expected<AppConfiguration, DecodingError> decode(
        const QByteArray& json, const std::function<void(const VercelAccount&)>& migrateToken);

    bool operator==(const AppConfiguration&) const = default;
};

}  // namespace tidemark

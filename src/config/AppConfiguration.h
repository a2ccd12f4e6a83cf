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
    /// A UUID in upper case with hyphens; also part of the name of the token in the keychain.
    QString id;
    QString name;
    /// Empty for a personal account.
    QString teamId;
    /// Stored in the keychain only, never in a file.
    QString apiToken{};
    /// The token is empty because it could not be read; the keychain may hold one. Not stored.
    bool isTokenUnread = false;

    /// A new account without team and token, for when nothing is configured.
    [[nodiscard]] static VercelAccount makeDefault();
    bool operator==(const VercelAccount&) const = default;
};

/// The user's settings.
struct AppConfiguration {
    QList<VercelAccount> accounts{};
    /// Stored in the keychain only; empty when analytics are not configured.
    QString cloudflareToken{};
    /// Like that of an account.
    bool isCloudflareTokenUnread = false;
    qint64 pollingIntervalSeconds = 30;
    bool launchAtLogin = false;
    bool soundEnabled = true;

    /// Whether any account has a token.
    [[nodiscard]] bool hasToken() const;
    /// Whether any token, also that of Cloudflare, could not be read.
    [[nodiscard]] bool hasUnreadToken() const;
    /// With each token that could not be read here and could be there: those of accounts of the same id.
    [[nodiscard]] AppConfiguration completedBy(const AppConfiguration& other) const;

    /// The content of the file, without tokens: indented JSON with members in the order of the fields.
    [[nodiscard]] QByteArray encode() const;

    /// Decodes the content of the file. A file without accounts, which may come from a version with a single
    /// account, gives one new account. `migrateToken` is called with that.
    [[nodiscard]] static tl::expected<AppConfiguration, DecodingError> decode(
        const QByteArray& json, const std::function<void(const VercelAccount&)>& migrateToken);

    bool operator==(const AppConfiguration&) const = default;
};

}  // namespace tidemark

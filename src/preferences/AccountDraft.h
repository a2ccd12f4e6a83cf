#pragma once

#include <QString>

#include "config/AppConfiguration.h"

namespace tidemark {

/// The text without tabs and Unicode space separators at its ends. Line breaks stay.
[[nodiscard]] QString trimmedSpaces(const QString& text);

/// One account while it is being edited.
struct AccountDraft {
    /// The account's, kept through editing.
    QString id;
    /// All three as typed.
    QString name;
    QString teamId;
    QString apiToken;
    /// Whether the token is shown in plain text. Never stored.
    bool showToken = false;
    /// Whether there may be a stored token that could not be read. It stays unless another one is typed.
    bool isTokenUnread = false;

    /// An empty draft with an id of its own.
    [[nodiscard]] static AccountDraft makeNew();
    [[nodiscard]] static AccountDraft of(const VercelAccount& account);
    /// With its texts trimmed, and called "Account" where no name is left.
    [[nodiscard]] VercelAccount asVercelAccount() const;
    /// Whether it has a token, typed or stored. Without one it is not saved.
    [[nodiscard]] bool hasToken() const { return isTokenUnread || !trimmedSpaces(apiToken).isEmpty(); }

    bool operator==(const AccountDraft&) const = default;
};

}  // namespace tidemark

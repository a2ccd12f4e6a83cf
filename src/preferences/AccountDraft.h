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

    /// An empty draft with an id of its own.
    [[nodiscard]] static AccountDraft makeNew();
    [[nodiscard]] static AccountDraft of(const VercelAccount& account);
    /// With its texts trimmed, and called "Account" where no name is left.
    [[nodiscard]] VercelAccount asVercelAccount() const;

    bool operator==(const AccountDraft&) const = default;
};

}  // namespace tidemark

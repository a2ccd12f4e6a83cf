#pragma once

#include <QString>

#include "platform/keyring/Keychain.h"

/// Stores tokens in the keychain, each as one item with an account name. A token that the keychain refuses is
/// not stored, which nothing reports.
///
/// Calls block for the keychain, so use a worker thread.
namespace tidemark::KeychainHelper {

/// The attributes of one item.
[[nodiscard]] KeychainQuery query(const QString& account, bool synchronizable);

using LoadedToken = tl::expected<QString, KeychainError>;

/// The text of the item with exactly these attributes. Data that is not UTF-8 counts as not found.
[[nodiscard]] LoadedToken loadItem(Keychain& keychain, const QString& account, bool synchronizable);

/// The text of any item of the account, with either value of `synchronizable` or without the attribute, as
/// older versions stored it. Deletes all items of the account; the caller has to store the text again.
[[nodiscard]] LoadedToken loadLegacyItem(Keychain& keychain, const QString& account);

/// Replaces the account's items by a synchronizable one or, if the keychain refuses that, by one that is not.
/// Empty text is stored, too. Does nothing if exactly this is stored already.
void save(Keychain& keychain, const QString& value, const QString& account);

/// The token of the account from the synchronizable item, else from the other one, else from a legacy item,
/// which is then replaced. Empty text counts as a token. An item that cannot be read ends the search.
[[nodiscard]] LoadedToken loadToken(Keychain& keychain, const QString& account);

}  // namespace tidemark::KeychainHelper

#pragma once

#include <QString>
#include <optional>

#include "platform/keyring/Keychain.h"

/// Keeps the tokens in the keychain: one item a token, under an account name. Nothing here reports an error:
/// a failed load reads as a missing item, and a token that the keychain does not take is not stored.
///
/// The calls wait for the keychain: use a worker thread.
namespace tidemark::KeychainHelper {

/// The attributes of one item.
[[nodiscard]] KeychainQuery query(const QString& account, bool synchronizable);

/// The text of the item with exactly these attributes; absent as well when its data is not UTF-8.
[[nodiscard]] std::optional<QString> loadItem(Keychain& keychain, const QString& account,
                                              bool synchronizable);

/// The text of any item of the account, synchronizable or not or from before there was the attribute.
/// All items of the account are deleted; the caller stores the text again.
[[nodiscard]] std::optional<QString> loadLegacyItem(Keychain& keychain, const QString& account);

/// Replaces the account's items by a synchronizable one or, where the keychain takes none, one that is not.
/// Empty text is stored too.
void save(Keychain& keychain, const QString& value, const QString& account);

/// The token of the account, from the synchronizable item, else from the other, else from a legacy item,
/// which is then moved. Empty text is a token.
[[nodiscard]] std::optional<QString> loadToken(Keychain& keychain, const QString& account);

}  // namespace tidemark::KeychainHelper

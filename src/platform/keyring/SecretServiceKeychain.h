#pragma once

#include <memory>

#include "platform/keyring/Keychain.h"

namespace tidemark {

/// The desktop's keyring (Secret Service standard). Items have the attributes "service", "account" and
/// "synchronizable" ("true" or "false") and are stored in the default collection.
///
/// Without a session bus or a keyring, calls read and store nothing and do not wait. A keyring that leaves a
/// call unanswered for 25 seconds, GDBus's limit, is not asked again in that batch.
class SecretServiceKeychain final : public Keychain {
public:
    SecretServiceKeychain();
    ~SecretServiceKeychain() override;

    void beginSession(Prompting prompting) override;
    void endSession() override;
    [[nodiscard]] std::unique_ptr<KeychainWatcher> makeWatcher() override;
    [[nodiscard]] tl::expected<QByteArray, KeychainError> copyMatching(const KeychainQuery& query) override;
    [[nodiscard]] bool add(const KeychainQuery& attributes, const QByteArray& data) override;
    void deleteMatching(const KeychainQuery& query) override;
    void cancel() override;

private:
    class Calls;

    std::unique_ptr<Calls> m_calls;
};

}  // namespace tidemark

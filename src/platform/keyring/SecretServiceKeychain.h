#pragma once

#include <memory>

#include "platform/keyring/Keychain.h"

namespace tidemark {

/// The desktop's keyring, after the Secret Service standard. Items have the attributes "service", "account"
/// and "synchronizable" ("true" or "false") and land in the default collection.
///
/// Where there is no session bus or no keyring, nothing is found and nothing is stored, without waiting.
class SecretServiceKeychain final : public Keychain {
public:
    SecretServiceKeychain();
    ~SecretServiceKeychain() override;

    void beginSession(Prompting prompting) override;
    void endSession() override;
    [[nodiscard]] bool wasLost() const override;
    [[nodiscard]] std::unique_ptr<KeychainWatcher> makeWatcher() override;
    [[nodiscard]] std::optional<QByteArray> copyMatching(const KeychainQuery& query) override;
    [[nodiscard]] bool add(const KeychainQuery& attributes, const QByteArray& data) override;
    void deleteMatching(const KeychainQuery& query) override;
    void cancel() override;

private:
    class Calls;

    std::unique_ptr<Calls> m_calls;
};

}  // namespace tidemark

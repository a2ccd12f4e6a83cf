#pragma once

#include "platform/keyring/SecretServiceKeychain.h"

namespace tidemark::sandbox {

/// The desktop's keyring. The demo's items have a service name of their own, so it never touches real tokens.
class DemoKeyring final : public Keychain {
public:
    void beginSession(Prompting prompting) override { m_keyring.beginSession(prompting); }
    void endSession() override { m_keyring.endSession(); }
    [[nodiscard]] std::unique_ptr<KeychainWatcher> makeWatcher() override { return m_keyring.makeWatcher(); }
    [[nodiscard]] tl::expected<QByteArray, KeychainError> copyMatching(const KeychainQuery& query) override {
        return m_keyring.copyMatching(own(query));
    }
    [[nodiscard]] bool add(const KeychainQuery& attributes, const QByteArray& data) override {
        return m_keyring.add(own(attributes), data);
    }
    void deleteMatching(const KeychainQuery& query) override { m_keyring.deleteMatching(own(query)); }
    void cancel() override { m_keyring.cancel(); }

private:
    static KeychainQuery own(KeychainQuery query) {
        query.service += QStringLiteral(".Demo");
        return query;
    }

    SecretServiceKeychain m_keyring;
};

}  // namespace tidemark::sandbox

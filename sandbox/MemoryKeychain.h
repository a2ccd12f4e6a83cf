#pragma once

#include <QList>
#include <utility>

#include "desktop/Keychain.h"

namespace tidemark::sandbox {

/// A keychain that is gone with the process: the demo never touches the user's own.
class MemoryKeychain final : public Keychain {
public:
    [[nodiscard]] std::optional<QByteArray> copyMatching(const KeychainQuery& query) override {
        for (const auto& [attributes, data] : std::as_const(m_items)) {
            if (matches(attributes, query))
                return data;
        }
        return std::nullopt;
    }

    [[nodiscard]] bool add(const KeychainQuery& attributes, const QByteArray& data) override {
        m_items.emplaceBack(attributes, data);
        return true;
    }

    void deleteMatching(const KeychainQuery& query) override {
        m_items.removeIf([&query](const auto& item) { return matches(item.first, query); });
    }

    void cancel() override {}

private:
    static bool matches(const KeychainQuery& attributes, const KeychainQuery& query) {
        return attributes.service == query.service && attributes.account == query.account &&
               (!query.synchronizable || attributes.synchronizable == query.synchronizable);
    }

    QList<std::pair<KeychainQuery, QByteArray>> m_items;
};

}  // namespace tidemark::sandbox

#pragma once

#include <QList>
#include <utility>

#include "platform/keyring/Keychain.h"

namespace tidemark::sandbox {

/// A keychain that is gone with the process: the demo never touches the user's own.
class MemoryKeychain final : public Keychain {
public:
    struct Item {
        KeychainQuery attributes;
        QByteArray data;

        bool operator==(const Item&) const = default;
    };

    /// In the order in which they were added.
    [[nodiscard]] const QList<Item>& items() const { return m_items; }

    [[nodiscard]] tl::expected<QByteArray, KeychainError> copyMatching(const KeychainQuery& query) override {
        for (const Item& item : std::as_const(m_items))
            if (matches(item, query))
                return item.data;
        return tl::unexpected(KeychainError::notFound);
    }

    [[nodiscard]] bool add(const KeychainQuery& attributes, const QByteArray& data) override {
        m_items.removeOne({attributes, copyExactly(attributes)});
        m_items.append({attributes, data});
        return true;
    }

    void deleteMatching(const KeychainQuery& query) override {
        m_items.removeIf([&query](const Item& item) { return matches(item, query); });
    }

    void cancel() override {}

private:
    /// The data of the first item with exactly these attributes.
    [[nodiscard]] QByteArray copyExactly(const KeychainQuery& attributes) const {
        for (const Item& item : m_items)
            if (item.attributes == attributes)
                return item.data;
        return {};
    }

    static bool matches(const Item& item, const KeychainQuery& query) {
        return item.attributes.service == query.service && item.attributes.account == query.account &&
               (!query.synchronizable || item.attributes.synchronizable == query.synchronizable);
    }

    QList<Item> m_items;
};

}  // namespace tidemark::sandbox

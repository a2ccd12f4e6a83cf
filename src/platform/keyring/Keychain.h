#pragma once

#include <QByteArray>
#include <QString>
#include <memory>
#include <optional>

#include "platform/keyring/KeychainWatcher.h"

namespace tidemark {

/// The attributes by which generic-password items are matched. An absent `synchronizable` matches items
/// with either value and items without the attribute.
struct KeychainQuery {
    QString service;
    QString account;
    std::optional<bool> synchronizable;

    bool operator==(const KeychainQuery&) const = default;
};

/// A store of generic-password items. Calls block until the store has answered, which may take as long as a
/// user needs to unlock it: call from a worker thread, one call at a time.
class Keychain {
public:
    /// Whether the user may be asked to unlock the store.
    enum class Prompting : quint8 {
        allowed,
        unlessDeclined,  ///< not once they have declined in this run
    };

    Keychain() = default;
    Keychain(const Keychain&) = delete;
    Keychain& operator=(const Keychain&) = delete;
    virtual ~Keychain() = default;

    /// Starts a row of calls that belong together, such as the loading of all tokens. Within a row the user
    /// is asked at most once to unlock the store; when they decline, the rest of the row fails without
    /// asking.
    virtual void beginSession(Prompting /*prompting*/) {}
    /// Ends the row: what it held is given back.
    virtual void endSession() {}

    /// Whether the store went away during this row, so that what was not found may be there all the same.
    [[nodiscard]] virtual bool wasLost() const { return false; }

    /// Watches this store; null where it can always be read. Called, and used, on the UI thread.
    [[nodiscard]] virtual std::unique_ptr<KeychainWatcher> makeWatcher() { return nullptr; }

    /// The data of one item that matches; absent when there is none or the store cannot be read.
    [[nodiscard]] virtual std::optional<QByteArray> copyMatching(const KeychainQuery& query) = 0;

    /// Adds an item with exactly these attributes; false when the store refuses.
    [[nodiscard]] virtual bool add(const KeychainQuery& attributes, const QByteArray& data) = 0;

    /// Deletes every item that matches; failures are ignored.
    virtual void deleteMatching(const KeychainQuery& query) = 0;

    /// Ends reads and waits for the user, and fails all later ones at once. Writes that need no user still go
    /// through: half a replacement would lose what it replaces. Callable from any thread.
    virtual void cancel() = 0;
};

/// A row of calls to a keychain, for as long as this lives.
class KeychainSession {
public:
    KeychainSession(Keychain& keychain, Keychain::Prompting prompting) : m_keychain(keychain) {
        m_keychain.beginSession(prompting);
    }
    KeychainSession(const KeychainSession&) = delete;
    KeychainSession& operator=(const KeychainSession&) = delete;
    ~KeychainSession() { m_keychain.endSession(); }

private:
    Keychain& m_keychain;
};

}  // namespace tidemark

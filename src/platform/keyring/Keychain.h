#pragma once

#include <tl/expected.hpp>

#include <QByteArray>
#include <QString>
#include <memory>
#include <optional>

#include "platform/keyring/KeychainWatcher.h"

namespace tidemark {

/// The attributes by which generic-password items are matched. Without a value, `synchronizable` matches all
/// items.
struct KeychainQuery {
    QString service;
    QString account;
    std::optional<bool> synchronizable;

    bool operator==(const KeychainQuery&) const = default;
};

/// Why an item cannot be had.
enum class KeychainError : quint8 {
    notFound,    ///< there is none
    unreadable,  ///< there may be one: the store cannot be reached, is locked, or does not answer
};

/// A store of generic-password items. Calls block until the store has answered, which may include waiting for
/// the user to unlock it. Call from a worker thread, one call at a time.
class Keychain {
public:
    /// Whether the user may be asked to unlock the store.
    enum class Prompting : quint8 {
        allowed,
        unlessDeclined,  ///< not after a prompt was declined in this run of the program
    };

    Keychain() = default;
    Keychain(const Keychain&) = delete;
    Keychain& operator=(const Keychain&) = delete;
    virtual ~Keychain() = default;

    /// Begins a batch of calls that belong together, such as loading all tokens. When the user declines to
    /// unlock the store, the other calls of the batch fail without another prompt.
    virtual void beginSession(Prompting /*prompting*/) {}
    /// Ends the batch and releases its resources.
    virtual void endSession() {}

    /// Makes a watcher of this store; null for a store that can always be read. UI thread only.
    [[nodiscard]] virtual std::unique_ptr<KeychainWatcher> makeWatcher() { return nullptr; }

    /// The data of one matching item. An item that is not found counts as unreadable when the store went away
    /// during this batch.
    [[nodiscard]] virtual tl::expected<QByteArray, KeychainError> copyMatching(
        const KeychainQuery& query) = 0;

    /// Adds an item, in place of one with exactly these attributes if there is one: in one step, so that the
    /// old or the new item is there at any time. False when the store refuses.
    [[nodiscard]] virtual bool add(const KeychainQuery& attributes, const QByteArray& data) = 0;

    /// Deletes all matching items. Failures are ignored.
    virtual void deleteMatching(const KeychainQuery& query) = 0;

    /// Ends pending reads and prompts, and lets all later ones fail at once. Writes that need no prompt still
    /// succeed, because a replacement that is cut short would lose the old item. Callable from any thread.
    virtual void cancel() = 0;
};

/// A batch of calls to a keychain, which lasts as long as this object.
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

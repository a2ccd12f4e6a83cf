#pragma once

#include <QMutex>
#include <QPointer>
#include <QWaitCondition>
#include <functional>

#include "sandbox/MemoryKeychain.h"

namespace tidemark {

/// A keychain in memory that may refuse. May be used, set up and looked into from several threads.
class FakeKeychain final : public Keychain {
public:
    using Item = sandbox::MemoryKeychain::Item;

    /// What the store does with a call.
    enum class Mood : quint8 {
        willing,
        refusesSynchronizable,  ///< takes only items that are not synchronizable
        refusesAdds,            ///< takes no items
        unavailable,            ///< finds nothing, takes nothing, deletes nothing
        dying,                  ///< finds one item, then is unavailable
        prompting,              ///< keeps every call waiting until the mood changes or `cancel`
    };

    /// Called after every change, as if the program ended there. Set before the first call.
    std::function<void()> onChange;

    void setMood(Mood mood);
    /// Puts an item there, whatever the mood and whatever else there is.
    void insert(const KeychainQuery& attributes, const QByteArray& data);
    [[nodiscard]] QList<Item> items() const;
    /// The rows of calls that were begun.
    [[nodiscard]] QList<Prompting> sessions() const;
    /// Tells whoever watches. Whether there is anybody.
    bool announce();

    void beginSession(Prompting prompting) override;
    [[nodiscard]] std::unique_ptr<KeychainWatcher> makeWatcher() override;
    [[nodiscard]] tl::expected<QByteArray, KeychainError> copyMatching(const KeychainQuery& query) override;
    [[nodiscard]] bool add(const KeychainQuery& attributes, const QByteArray& data) override;
    void deleteMatching(const KeychainQuery& query) override;
    void cancel() override;

private:
    /// The mood once the prompt, if any, is over. Call with the mutex locked.
    Mood awaitMood();

    mutable QMutex m_mutex;
    QWaitCondition m_changed;
    Mood m_mood = Mood::willing;
    bool m_isCancelled = false;
    sandbox::MemoryKeychain m_store;
    QList<Prompting> m_sessions;
    QPointer<KeychainWatcher> m_watcher;
};

}  // namespace tidemark

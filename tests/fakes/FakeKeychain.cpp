#include "tests/fakes/FakeKeychain.h"

#include <QMutexLocker>
#include <tuple>

namespace tidemark {

void FakeKeychain::setMood(Mood mood) {
    const QMutexLocker lock(&m_mutex);
    m_mood = mood;
    m_changed.wakeAll();
}

void FakeKeychain::insert(const KeychainQuery& attributes, const QByteArray& data) {
    const QMutexLocker lock(&m_mutex);
    std::ignore = m_store.add(attributes, data);
}

QList<FakeKeychain::Item> FakeKeychain::items() const {
    const QMutexLocker lock(&m_mutex);
    return m_store.items();
}

QList<Keychain::Prompting> FakeKeychain::sessions() const {
    const QMutexLocker lock(&m_mutex);
    return m_sessions;
}

bool FakeKeychain::announce() {
    if (m_watcher)
        Q_EMIT m_watcher->mayBeReadable();
    return !m_watcher.isNull();
}

void FakeKeychain::beginSession(Prompting prompting) {
    const QMutexLocker lock(&m_mutex);
    m_sessions.append(prompting);
}

std::unique_ptr<KeychainWatcher> FakeKeychain::makeWatcher() {
    auto watcher = std::make_unique<KeychainWatcher>();
    m_watcher = watcher.get();
    return watcher;
}

tl::expected<QByteArray, KeychainError> FakeKeychain::copyMatching(const KeychainQuery& query) {
    const QMutexLocker lock(&m_mutex);
    if (awaitMood() == Mood::unavailable || m_isCancelled)
        return tl::unexpected(KeychainError::unreadable);
    auto data = m_store.copyMatching(query);
    if (data && m_mood == Mood::dying)
        m_mood = Mood::unavailable;
    return data;
}

bool FakeKeychain::add(const KeychainQuery& attributes, const QByteArray& data) {
    QMutexLocker lock(&m_mutex);
    const Mood mood = awaitMood();
    if (mood == Mood::unavailable || mood == Mood::refusesAdds ||
        (mood == Mood::refusesSynchronizable && attributes.synchronizable == true))
        return false;
    const bool isAdded = m_store.add(attributes, data);
    lock.unlock();
    if (onChange)
        onChange();
    return isAdded;
}

void FakeKeychain::deleteMatching(const KeychainQuery& query) {
    QMutexLocker lock(&m_mutex);
    if (awaitMood() != Mood::unavailable)
        m_store.deleteMatching(query);
    lock.unlock();
    if (onChange)
        onChange();
}

void FakeKeychain::cancel() {
    const QMutexLocker lock(&m_mutex);
    m_isCancelled = true;
    m_changed.wakeAll();
}

FakeKeychain::Mood FakeKeychain::awaitMood() {
    while (m_mood == Mood::prompting && !m_isCancelled)
        m_changed.wait(&m_mutex);
    return m_mood == Mood::prompting ? Mood::unavailable : m_mood;
}

}  // namespace tidemark

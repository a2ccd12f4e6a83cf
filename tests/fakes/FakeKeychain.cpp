#include "tests/fakes/FakeKeychain.h"

#include <QMutexLocker>
#include <algorithm>

namespace tidemark {

namespace {

bool matches(const KeychainQuery& query, const KeychainQuery& attributes) {
    return query.service == attributes.service && query.account == attributes.account &&
           (!query.synchronizable || query.synchronizable == attributes.synchronizable);
}

}  // namespace

void FakeKeychain::setMood(Mood mood) {
    const QMutexLocker lock(&m_mutex);
    m_mood = mood;
    m_changed.wakeAll();
}

void FakeKeychain::insert(const KeychainQuery& attributes, const QByteArray& data) {
    const QMutexLocker lock(&m_mutex);
    m_items.append({attributes, data});
}

QList<FakeKeychain::Item> FakeKeychain::items() const {
    const QMutexLocker lock(&m_mutex);
    return m_items;
}

int FakeKeychain::sessionCount() const {
    const QMutexLocker lock(&m_mutex);
    return m_sessionCount;
}

void FakeKeychain::beginSession() {
    const QMutexLocker lock(&m_mutex);
    ++m_sessionCount;
}

std::optional<QByteArray> FakeKeychain::copyMatching(const KeychainQuery& query) {
    const QMutexLocker lock(&m_mutex);
    if (awaitMood() == Mood::unavailable || m_isCancelled)
        return std::nullopt;
    const auto found = std::find_if(m_items.begin(), m_items.end(),
                                    [&query](const Item& item) { return matches(query, item.attributes); });
    return found == m_items.end() ? std::nullopt : std::optional(found->data);
}

bool FakeKeychain::add(const KeychainQuery& attributes, const QByteArray& data) {
    const QMutexLocker lock(&m_mutex);
    const Mood mood = awaitMood();
    if (mood == Mood::unavailable || mood == Mood::refusesAdds ||
        (mood == Mood::refusesSynchronizable && attributes.synchronizable == true))
        return false;
    m_items.removeIf([&attributes](const Item& item) { return item.attributes == attributes; });
    m_items.append({attributes, data});
    return true;
}

void FakeKeychain::deleteMatching(const KeychainQuery& query) {
    const QMutexLocker lock(&m_mutex);
    if (awaitMood() != Mood::unavailable)
        m_items.removeIf([&query](const Item& item) { return matches(query, item.attributes); });
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

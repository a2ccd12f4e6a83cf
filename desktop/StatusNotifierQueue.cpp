#include "desktop/StatusNotifierQueue.h"

#include <chrono>

namespace tidemark {
namespace {

constexpr auto longestUnread = std::chrono::seconds(1);
constexpr auto quietTime = std::chrono::milliseconds(200);

}  // namespace

StatusNotifierQueue::StatusNotifierQueue() {
    m_pause.setSingleShot(true);
    connect(&m_pause, &QTimer::timeout, this, &StatusNotifierQueue::runNext);
}

void StatusNotifierQueue::enqueue(QObject& owner, std::function<void()> step) {
    m_steps.append({&owner, std::move(step)});
    if (!m_pause.isActive()) {
        runNext();
    }
}

void StatusNotifierQueue::noteRead() {
    m_hasBeenRead = true;
    if (m_pause.isActive()) {
        m_pause.start(quietTime);
    }
}

void StatusNotifierQueue::noteFailure() {
    m_pause.start(0);
}

void StatusNotifierQueue::runNext() {
    while (!m_steps.isEmpty()) {
        const auto [owner, step] = m_steps.takeFirst();
        if (owner) {
            m_pause.start(longestUnread);
            step();
            return;
        }
    }
}

}  // namespace tidemark

#include "platform/tray/StatusNotifierQueue.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace tidemark {
namespace {

constexpr auto longestUnread = std::chrono::seconds(1);
/// All items learn of a new watcher within this time, each over its own connection.
constexpr auto gatheringTime = std::chrono::milliseconds(30);
constexpr auto quietTime = std::chrono::milliseconds(200);

}  // namespace

StatusNotifierQueue::StatusNotifierQueue() {
    m_pause.setSingleShot(true);
    connect(&m_pause, &QTimer::timeout, this, &StatusNotifierQueue::runNext);
}

void StatusNotifierQueue::enqueue(QObject& owner, int place, std::function<void()> step) {
    const auto next =
        std::ranges::find_if(m_steps, [place](const Step& waiting) { return waiting.place > place; });
    m_steps.insert(next, {.owner = &owner, .place = place, .run = std::move(step)});
    if (!m_pause.isActive())
        m_pause.start(gatheringTime);
}

void StatusNotifierQueue::noteRead() {
    m_hasBeenRead = true;
    if (m_pause.isActive())
        m_pause.start(quietTime);
}

void StatusNotifierQueue::noteFailure() {
    m_pause.start(0);
}

void StatusNotifierQueue::runNext() {
    while (!m_steps.isEmpty()) {
        const Step step = m_steps.takeFirst();
        if (step.owner) {
            m_pause.start(longestUnread);
            step.run();
            return;
        }
    }
}

}  // namespace tidemark

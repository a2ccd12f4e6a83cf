#include "desktop/StatusNotifierQueue.h"

namespace tidemark {

StatusNotifierQueue::StatusNotifierQueue(std::chrono::milliseconds spacing) {
    m_pause.setSingleShot(true);
    m_pause.setInterval(spacing);
    connect(&m_pause, &QTimer::timeout, this, &StatusNotifierQueue::runNext);
}

void StatusNotifierQueue::enqueue(QObject& owner, std::function<void()> step) {
    m_steps.append({&owner, std::move(step)});
    if (!m_pause.isActive()) {
        runNext();
    }
}

void StatusNotifierQueue::runNext() {
    while (!m_steps.isEmpty()) {
        const auto [owner, step] = m_steps.takeFirst();
        if (owner) {
            m_pause.start();
            step();
            return;
        }
    }
}

}  // namespace tidemark

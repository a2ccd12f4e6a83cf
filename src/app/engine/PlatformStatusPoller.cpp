#include "app/engine/PlatformStatusPoller.h"

#include <utility>

namespace tidemark {

using namespace std::chrono_literals;

namespace {

constexpr auto statusInterval = 300s;

}  // namespace

PlatformStatusPoller::PlatformStatusPoller(AppState& state, HttpClient& http, QUrl summary, Clock& clock,
                                           std::stop_token quit)
    : m_state(state), m_client(http, std::move(summary)), m_clock(clock), m_quit(std::move(quit)) {}

void PlatformStatusPoller::startStatusPolling() {
    m_statusTask.requestStop();
    m_statusTask = m_tasks.start([this](std::stop_token stop) { return runStatusLoop(stop); });
}

QCoro::Task<> PlatformStatusPoller::runStatusLoop(std::stop_token stop) {
    while (!stop.stop_requested()) {
        const VercelStatusLevel level = co_await m_client.fetch(m_quit);
        if (m_quit.stop_requested())
            co_return;
        m_state.setVercelPlatformStatus(level);
        co_await m_clock.sleep(statusInterval, stop);
    }
}

}  // namespace tidemark

#pragma once

#include <QCoroTask>
#include <QUrl>
#include <stop_token>

#include "platform/base/Clock.h"
#include "platform/base/TaskScope.h"
#include "state/AppState.h"
#include "vercel/VercelStatusClient.h"

namespace tidemark {

/// Reads the platform's own status every five minutes, whatever the configuration. UI thread only.
class PlatformStatusPoller {
public:
    /// All of them outlive the poller. Requests end when `quit` is stopped.
    PlatformStatusPoller(AppState& state, HttpClient& http, QUrl summary, Clock& clock, std::stop_token quit);

    /// Starts the loop in place of the running one.
    void startStatusPolling();

private:
    [[nodiscard]] QCoro::Task<> runStatusLoop(std::stop_token stop);

    AppState& m_state;
    VercelStatusClient m_client;
    Clock& m_clock;
    std::stop_token m_quit;
    TaskHandle m_statusTask;
    /// Last, so that its tasks end first.
    TaskScope m_tasks;
};

}  // namespace tidemark

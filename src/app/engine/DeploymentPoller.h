#pragma once

#include <QCoroTask>
#include <QList>
#include <QString>
#include <chrono>
#include <stop_token>
#include <utility>

#include "app/engine/AccountWatch.h"
#include "app/engine/VercelClients.h"
#include "notify/NotificationManager.h"
#include "platform/base/Clock.h"
#include "platform/base/TaskScope.h"
#include "state/AppState.h"

namespace tidemark {

/// The work of one poll cycle.
struct PollPlan {
    /// The tracked projects that can be polled, each with the client of the account that owns it.
    QList<std::pair<QString, VercelAPIClient>> clients;
    bool productionOnly = false;
    /// As configured; see `DeploymentPoller::pollingInterval`.
    qint64 intervalSeconds = 30;
};

/// How polling one project ended.
enum class PollOutcome : quint8 {
    finished,     ///< successfully or with an ordinary error
    rateLimited,  ///< the API refused because of too many requests
};

/// Polls the deployments of all tracked projects, cycle after cycle, and writes the results into the state.
/// UI thread only.
class DeploymentPoller {
public:
    /// All of them outlive the poller. Requests end when `quit` is stopped; replacing the loop does not end
    /// them, it lets the loop finish its current project.
    DeploymentPoller(AppState& state, VercelClients clients, Clock& clock, NotificationManager& notifications,
                     AccountWatch& accounts, std::stop_token quit);

    /// Starts the polling loop in place of the running one, which ends at its next check.
    void startPolling();
    /// Starts the loop anew if the running one had nothing to poll in its last plan. Otherwise that loop
    /// finds new projects in its next plan, and goes on resting if it has to.
    void startPollingIfIdle();

    /// The production filter has changed: nothing that was known counts as a change any more, and the loop
    /// starts anew at once if it is running.
    void filterChanged();

    /// Polls one project once, if its account has a token, outside of the loop.
    void refresh(const QString& projectId);
    /// Polls one project once and writes the result into the state. The answer is dropped if the production
    /// filter changed meanwhile.
    [[nodiscard]] QCoro::Task<PollOutcome> fetchAndUpdate(QString projectId, VercelAPIClient client,
                                                          bool productionOnly);

    [[nodiscard]] PollPlan makePollPlan() const;
    /// The wait for a configured interval. A file edited by hand may hold any number, so the wait is brought
    /// into the range from a second to the longest wait of the clock.
    [[nodiscard]] static std::chrono::seconds pollingInterval(qint64 configuredSeconds);

private:
    [[nodiscard]] QCoro::Task<> runPollingLoop(std::stop_token stop);
    [[nodiscard]] QCoro::Task<> refreshOnce(QString projectId, VercelAPIClient client);
    void recordDeployments(const QString& projectId, const QList<Deployment>& deployments);
    [[nodiscard]] QCoro::Task<> lookUpProductionDomain(QString projectId, VercelAPIClient client);

    AppState& m_state;
    VercelClients m_clients;
    Clock& m_clock;
    NotificationManager& m_notifications;
    AccountWatch& m_accounts;
    std::stop_token m_quit;
    bool m_isRunning = false;
    bool m_isIdle = true;
    TaskHandle m_pollingTask;
    /// Last, so that its tasks end first.
    TaskScope m_tasks;
};

}  // namespace tidemark

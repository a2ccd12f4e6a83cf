#include "app/engine/DeploymentPoller.h"

#include <QHash>
#include <QSet>
#include <algorithm>

namespace tidemark {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto firstCycleSpacing = 2s;
constexpr auto rateLimitRest = 60s;
constexpr int deploymentLimit = 5;

}  // namespace

DeploymentPoller::DeploymentPoller(AppState& state, VercelClients clients, Clock& clock,
                                   NotificationManager& notifications, AccountWatch& accounts,
                                   std::stop_token quit)
    : m_state(state),
      m_clients(std::move(clients)),
      m_clock(clock),
      m_notifications(notifications),
      m_accounts(accounts),
      m_quit(std::move(quit)) {}

void DeploymentPoller::startPolling() {
    m_isRunning = true;
    m_pollingTask.requestStop();
    m_pollingTask = m_tasks.start([this](std::stop_token stop) { return runPollingLoop(stop); });
}

void DeploymentPoller::startPollingIfIdle() {
    if (m_isIdle)
        startPolling();
}

void DeploymentPoller::filterChanged() {
    m_notifications.forgetStates();
    if (m_isRunning)
        startPolling();
}

PollPlan DeploymentPoller::makePollPlan() const {
    PollPlan plan{.clients = {}, .productionOnly = m_state.productionOnly()};
    const auto& config = m_state.config();
    if (!config)
        return plan;
    plan.intervalSeconds = config->pollingIntervalSeconds;
    QHash<QString, VercelAPIClient> clientsByAccount;
    for (const auto& account : config->accounts)
        if (!account.apiToken.isEmpty())
            clientsByAccount.insert(account.id, m_clients.forAccount(account));
    // In order of their names. An id that the API listed twice is polled once.
    QSet<QString> planned;
    for (const auto& project : m_state.trackedProjects()) {
        const auto client = clientsByAccount.constFind(project.accountId);
        if (client == clientsByAccount.cend() || planned.contains(project.id))
            continue;
        planned.insert(project.id);
        plan.clients.emplaceBack(project.id, *client);
    }
    return plan;
}

std::chrono::seconds DeploymentPoller::pollingInterval(qint64 configuredSeconds) {
    constexpr auto longest = std::chrono::floor<std::chrono::seconds>(std::chrono::nanoseconds::max());
    return std::clamp(std::chrono::seconds(configuredSeconds), std::chrono::seconds(1), longest);
}

QCoro::Task<> DeploymentPoller::runPollingLoop(std::stop_token stop) {
    if (!m_state.config())
        co_return;
    for (bool isFirstCycle = true; !stop.stop_requested(); isFirstCycle = false) {
        const PollPlan plan = makePollPlan();
        m_isIdle = plan.clients.isEmpty();
        for (qsizetype i = 0; i < plan.clients.size(); ++i) {
            if (stop.stop_requested())
                co_return;
            if (isFirstCycle && i > 0) {
                co_await m_clock.sleep(firstCycleSpacing, stop);
                if (stop.stop_requested())
                    co_return;
            }
            const auto& [projectId, client] = plan.clients.at(i);
            const PollOutcome outcome = co_await fetchAndUpdate(projectId, client, plan.productionOnly);
            if (outcome == PollOutcome::rateLimited && !isFirstCycle) {
                co_await m_clock.sleep(rateLimitRest, stop);
                break;
            }
        }
        if (stop.stop_requested())
            co_return;
        co_await m_clock.sleep(pollingInterval(plan.intervalSeconds), stop);
    }
}

QCoro::Task<PollOutcome> DeploymentPoller::fetchAndUpdate(QString projectId, VercelAPIClient client,
                                                          bool productionOnly) {
    auto deployments =
        co_await client.fetchRecentDeployments(projectId, deploymentLimit, productionOnly, m_quit);
    if (m_quit.stop_requested() || productionOnly != m_state.productionOnly())
        co_return PollOutcome::finished;
    m_accounts.projectPolled(projectId, deployments);
    if (!deployments) {
        const bool isLimited = isRateLimited(deployments.error());
        m_state.setError(projectId,
                         isLimited ? u"Rate limited — backing off"_s : description(deployments.error()));
        co_return isLimited ? PollOutcome::rateLimited : PollOutcome::finished;
    }
    m_state.setLastCheckedAt(projectId, m_clock.now());
    if (deployments->isEmpty()) {
        m_state.insertEmptyProject(projectId);
        m_state.removeError(projectId);
        co_return PollOutcome::finished;
    }
    // The limit is the API's to keep; what we hold is ours.
    deployments->resize(std::min<qsizetype>(deployments->size(), deploymentLimit));
    recordDeployments(projectId, *deployments);
    if (!m_state.domainsCheckedThisSession().contains(projectId))
        co_await lookUpProductionDomain(projectId, client);
    co_return PollOutcome::finished;
}

void DeploymentPoller::recordDeployments(const QString& projectId, const QList<Deployment>& deployments) {
    if (const auto project = m_state.project(projectId))
        m_notifications.checkAndNotify(projectId, project->name, deployments.first());
    m_state.setDeployment(projectId, deployments.first());
    m_state.setRecentDeployments(projectId, deployments);
    m_state.removeError(projectId);
    m_state.removeEmptyProject(projectId);
}

QCoro::Task<> DeploymentPoller::lookUpProductionDomain(QString projectId, VercelAPIClient client) {
    const auto domain = co_await client.fetchProductionDomain(projectId, m_quit);
    if (m_quit.stop_requested() || !domain || !*domain)
        co_return;
    m_state.insertDomainChecked(projectId);
    m_state.setProductionDomain(projectId, **domain);
}

void DeploymentPoller::refresh(const QString& projectId) {
    if (const auto client = m_clients.forProject(projectId))
        m_tasks.start(
            [this, projectId, client = *client](std::stop_token) { return refreshOnce(projectId, client); });
}

QCoro::Task<> DeploymentPoller::refreshOnce(QString projectId, VercelAPIClient client) {
    co_await fetchAndUpdate(projectId, client, m_state.productionOnly());
}

}  // namespace tidemark

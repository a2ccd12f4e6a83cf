#include <algorithm>
#include <array>

#include "app/AppDelegate.h"

namespace tidemark {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto firstCycleSpacing = 2s;
constexpr auto rateLimitRest = 60s;
constexpr auto lateProjectsInterval = 60s;
constexpr auto statusInterval = 300s;
constexpr int deploymentLimit = 5;

/// Whether the network did not let a request through, which is likely to change.
bool isHeldBack(const VercelError& error) {
    constexpr std::array passing{TransportError::hostNotFound,   TransportError::connectionRefused,
                                 TransportError::connectionLost, TransportError::offline,
                                 TransportError::timedOut,       TransportError::proxyFailed};
    const auto* const transport = std::get_if<TransportError>(&error);
    return transport && std::ranges::find(passing, *transport) != passing.end();
}

}  // namespace

QCoro::Task<> AppDelegate::loadProjects() {
    const auto config = m_appState.config();
    m_lateProjectsTask.requestStop();
    if (!config || config->accounts.isEmpty())
        co_return;
    m_appState.setIsLoadingProjects(true);
    QCoro::Task<QList<VercelAccount>> fetching = fetchProjects(config->accounts, m_quit.get_token());
    const QList<VercelAccount> missing = co_await fetching;
    if (isQuitting())
        co_return;
    m_appState.setIsLoadingProjects(false);
    syncIndividualItems();
    startPolling();
    updateMainButton();
    // They may have been replaced meanwhile.
    if (!missing.isEmpty() && m_appState.config()->accounts == config->accounts) {
        m_lateProjectsTask.requestStop();
        m_lateProjectsTask = m_tasks.start(
            [this, missing](std::stop_token stop) { return fetchLateProjects(missing, std::move(stop)); });
    }
}

QCoro::Task<QList<VercelAccount>> AppDelegate::fetchProjects(QList<VercelAccount> accounts,
                                                             std::stop_token stop) {
    QList<VercelAccount> missing;
    for (const auto& account : accounts) {
        if (account.apiToken.isEmpty())
            continue;
        const VercelAPIClient client = clientFor(account);
        auto projects = co_await client.fetchAllProjects(m_quit.get_token());
        if (isQuitting() || stop.stop_requested())
            break;
        if (!projects) {
            if (isHeldBack(projects.error()))
                missing.append(account);
            continue;
        }
        for (auto& project : *projects)
            project.accountId = account.id;
        m_appState.integrateProjects(*projects, account.id);
    }
    co_return missing;
}

QCoro::Task<> AppDelegate::fetchLateProjects(QList<VercelAccount> missing, std::stop_token stop) {
    while (!missing.isEmpty()) {
        co_await m_services.clock.sleep(lateProjectsInterval, stop);
        if (stop.stop_requested())
            co_return;
        const bool isIdle = makePollPlan().clients.isEmpty();
        QCoro::Task<QList<VercelAccount>> fetching = fetchProjects(missing, stop);
        const QList<VercelAccount> stillMissing = co_await fetching;
        if (isQuitting() || stop.stop_requested())
            co_return;
        if (stillMissing.size() < missing.size()) {
            syncIndividualItems();
            // A loop that has something to poll finds them in its next plan, and goes on resting if it must.
            if (isIdle)
                startPolling();
            updateMainButton();
        }
        missing = stillMissing;
    }
}

void AppDelegate::startPolling() {
    m_pollingTask.requestStop();
    m_pollingTask = m_tasks.start([this](std::stop_token stop) { return runPollingLoop(stop); });
}

PollPlan AppDelegate::makePollPlan() const {
    PollPlan plan{.clients = {}, .productionOnly = m_appState.productionOnly()};
    const auto& config = m_appState.config();
    if (!config)
        return plan;
    plan.intervalSeconds = config->pollingIntervalSeconds;
    QHash<QString, VercelAPIClient> clientsByAccount;
    for (const auto& account : config->accounts)
        if (!account.apiToken.isEmpty())
            clientsByAccount.insert(account.id, clientFor(account));
    // In order of their names. An id that the API listed twice is polled once.
    QSet<QString> planned;
    for (const auto& project : m_appState.trackedProjects()) {
        const auto client = clientsByAccount.constFind(project.accountId);
        if (client == clientsByAccount.cend() || planned.contains(project.id))
            continue;
        planned.insert(project.id);
        plan.clients.emplaceBack(project.id, *client);
    }
    return plan;
}

std::chrono::seconds AppDelegate::pollingInterval(qint64 configuredSeconds) {
    constexpr auto longest = std::chrono::floor<std::chrono::seconds>(std::chrono::nanoseconds::max());
    return std::clamp(std::chrono::seconds(configuredSeconds), std::chrono::seconds(1), longest);
}

QCoro::Task<> AppDelegate::runPollingLoop(std::stop_token stop) {
    if (!m_appState.config())
        co_return;
    for (bool isFirstCycle = true; !stop.stop_requested(); isFirstCycle = false) {
        const PollPlan plan = makePollPlan();
        for (qsizetype i = 0; i < plan.clients.size(); ++i) {
            if (stop.stop_requested())
                co_return;
            if (isFirstCycle && i > 0) {
                co_await m_services.clock.sleep(firstCycleSpacing, stop);
                if (stop.stop_requested())
                    co_return;
            }
            const auto& [projectId, client] = plan.clients.at(i);
            const PollOutcome outcome = co_await fetchAndUpdate(projectId, client, plan.productionOnly);
            if (outcome == PollOutcome::rateLimited && !isFirstCycle) {
                co_await m_services.clock.sleep(rateLimitRest, stop);
                break;
            }
        }
        if (stop.stop_requested())
            co_return;
        co_await m_services.clock.sleep(pollingInterval(plan.intervalSeconds), stop);
    }
}

QCoro::Task<PollOutcome> AppDelegate::fetchAndUpdate(QString projectId, VercelAPIClient client,
                                                     bool productionOnly) {
    auto deployments = co_await client.fetchRecentDeployments(projectId, deploymentLimit, productionOnly,
                                                              m_quit.get_token());
    if (isQuitting())
        co_return PollOutcome::finished;
    if (!deployments) {
        const bool isLimited = isRateLimited(deployments.error());
        recordError(projectId,
                    isLimited ? u"Rate limited — backing off"_s : description(deployments.error()));
        co_return isLimited ? PollOutcome::rateLimited : PollOutcome::finished;
    }
    m_appState.setLastCheckedAt(projectId, m_services.clock.now());
    if (deployments->isEmpty()) {
        m_appState.insertEmptyProject(projectId);
        m_appState.removeError(projectId);
        co_return PollOutcome::finished;
    }
    // The limit is the API's to keep; what we hold is ours.
    deployments->resize(std::min<qsizetype>(deployments->size(), deploymentLimit));
    recordDeployments(projectId, *deployments);
    if (!m_appState.domainsCheckedThisSession().contains(projectId))
        co_await lookUpProductionDomain(projectId, client);
    co_return PollOutcome::finished;
}

void AppDelegate::recordDeployments(const QString& projectId, const QList<Deployment>& deployments) {
    if (const auto project = m_appState.project(projectId))
        m_services.notifications.checkAndNotify(projectId, project->name, deployments.first());
    m_appState.setDeployment(projectId, deployments.first());
    m_appState.setRecentDeployments(projectId, deployments);
    m_appState.removeError(projectId);
    m_appState.removeEmptyProject(projectId);
    if (auto* item = individualItem(projectId))
        item->update(deployments.first());
    updateMainButton();
}

void AppDelegate::recordError(const QString& projectId, const QString& error) {
    m_appState.setError(projectId, error);
    if (auto* item = individualItem(projectId))
        item->setError(error);
    updateMainButton();
}

QCoro::Task<> AppDelegate::lookUpProductionDomain(QString projectId, VercelAPIClient client) {
    const auto domain = co_await client.fetchProductionDomain(projectId, m_quit.get_token());
    if (isQuitting() || !domain || !*domain)
        co_return;
    m_appState.insertDomainChecked(projectId);
    m_appState.setProductionDomain(projectId, **domain);
}

void AppDelegate::startStatusPolling() {
    m_statusTask.requestStop();
    m_statusTask = m_tasks.start([this](std::stop_token stop) { return runStatusLoop(stop); });
}

QCoro::Task<> AppDelegate::runStatusLoop(std::stop_token stop) {
    while (!stop.stop_requested()) {
        const VercelStatusClient client(m_services.http, m_services.endpoints.vercelStatus);
        const VercelStatusLevel level = co_await client.fetch(m_quit.get_token());
        if (isQuitting())
            co_return;
        m_appState.setVercelPlatformStatus(level);
        co_await m_services.clock.sleep(statusInterval, stop);
    }
}

}  // namespace tidemark

#include "app/engine/ProjectLoader.h"

#include <QSet>
#include <algorithm>
#include <array>
#include <utility>

namespace tidemark {

using namespace std::chrono_literals;

namespace {

constexpr auto lateProjectsInterval = 60s;
constexpr auto refreshInterval = 1h;
/// The lists are not asked for more often when somebody looks at them.
constexpr auto shortestRefreshInterval = 1min;

/// Whether a request may well succeed later: the network did not let it through, or the service was busy.
bool isHeldBack(const VercelError& error) {
    constexpr std::array busy{500, 502, 503, 504};
    if (const auto* const answer = std::get_if<APIError>(&error))
        return answer->kind == APIError::Kind::rateLimited ||
               (answer->kind == APIError::Kind::httpError &&
                std::ranges::find(busy, answer->status) != busy.end());
    constexpr std::array passing{TransportError::hostNotFound,   TransportError::connectionRefused,
                                 TransportError::connectionLost, TransportError::offline,
                                 TransportError::timedOut,       TransportError::proxyFailed};
    const auto* const transport = std::get_if<TransportError>(&error);
    return transport && std::ranges::find(passing, *transport) != passing.end();
}

}  // namespace

ProjectLoader::ProjectLoader(AppState& state, VercelClients clients, Clock& clock, AccountWatch& accounts,
                             std::stop_token quit)
    : m_state(state),
      m_clients(std::move(clients)),
      m_clock(clock),
      m_accounts(accounts),
      m_quit(std::move(quit)) {}

void ProjectLoader::loadProjects() {
    m_loadTask.requestStop();
    m_state.setIsLoadingProjects(false);
    m_fetchedAt.reset();
    const auto& config = m_state.config();
    if (!config || config->accounts.isEmpty())
        return;
    QSet<QString> accountIds;
    for (const auto& account : config->accounts)
        accountIds.insert(account.id);
    m_state.keepProjectsOf(accountIds);
    start(LoadKind::shown);
}

void ProjectLoader::refreshLists() {
    // Without a time, none was ever loaded, or a load is under way. A clock that was put back does not hold
    // anything up.
    if (!m_fetchedAt || std::chrono::abs(m_clock.now() - *m_fetchedAt) < shortestRefreshInterval)
        return;
    m_loadTask.requestStop();
    start(LoadKind::quiet);
}

void ProjectLoader::start(LoadKind kind) {
    m_fetchedAt.reset();
    m_loadTask = m_tasks.start([this, accounts = m_state.config()->accounts, kind](std::stop_token stop) {
        return load(accounts, kind, std::move(stop));
    });
}

QCoro::Task<> ProjectLoader::load(QList<VercelAccount> accounts, LoadKind kind, std::stop_token stop) {
    for (;; kind = LoadKind::quiet) {
        m_fetchedAt.reset();
        if (kind == LoadKind::shown)
            m_state.setIsLoadingProjects(true);
        QCoro::Task<QList<VercelAccount>> fetching = fetchProjects(accounts, stop);
        const QList<VercelAccount> missing = co_await fetching;
        if (isStopped(stop))
            co_return;
        m_fetchedAt = m_clock.now();
        if (kind == LoadKind::shown) {
            m_state.setIsLoadingProjects(false);
            Q_EMIT loaded();
        } else {
            Q_EMIT listsRefreshed();
        }
        QCoro::Task<> waiting = fetchLateProjects(missing, stop);
        co_await waiting;
        if (isStopped(stop))
            co_return;
    }
}

QCoro::Task<QList<VercelAccount>> ProjectLoader::fetchProjects(QList<VercelAccount> accounts,
                                                               std::stop_token stop) {
    QList<VercelAccount> missing;
    for (const auto& account : accounts) {
        if (account.apiToken.isEmpty())
            continue;
        const VercelAPIClient client = m_clients.forAccount(account);
        auto projects = co_await client.fetchAllProjects(stop);
        if (isStopped(stop))
            break;
        m_accounts.listFetched(account, projects);
        if (!projects) {
            if (isHeldBack(projects.error()))
                missing.append(account);
            continue;
        }
        for (auto& project : *projects)
            project.accountId = account.id;
        m_state.integrateProjects(*projects, account.id);
    }
    co_return missing;
}

QCoro::Task<> ProjectLoader::fetchLateProjects(QList<VercelAccount> missing, std::stop_token stop) {
    for (std::chrono::seconds left = refreshInterval; left > 0s;) {
        const std::chrono::seconds wait = missing.isEmpty() ? left : std::min(left, lateProjectsInterval);
        co_await m_clock.sleep(wait, stop);
        if (isStopped(stop))
            co_return;
        left -= wait;
        if (missing.isEmpty() || left <= 0s)
            continue;
        QCoro::Task<QList<VercelAccount>> fetching = fetchProjects(missing, stop);
        const QList<VercelAccount> stillMissing = co_await fetching;
        if (isStopped(stop))
            co_return;
        if (stillMissing.size() < missing.size())
            Q_EMIT listsRefreshed();
        missing = stillMissing;
    }
}

}  // namespace tidemark

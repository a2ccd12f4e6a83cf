#include "app/engine/ProjectLoader.h"

#include <QSet>
#include <algorithm>
#include <array>
#include <utility>

namespace tidemark {

using namespace std::chrono_literals;

namespace {

constexpr auto lateProjectsInterval = 60s;

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

ProjectLoader::ProjectLoader(AppState& state, VercelClients clients, Clock& clock, std::stop_token quit)
    : m_state(state), m_clients(std::move(clients)), m_clock(clock), m_quit(std::move(quit)) {}

void ProjectLoader::loadProjects() {
    m_loadTask.requestStop();
    m_state.setIsLoadingProjects(false);
    const auto& config = m_state.config();
    if (!config || config->accounts.isEmpty())
        return;
    QSet<QString> accountIds;
    for (const auto& account : config->accounts)
        accountIds.insert(account.id);
    m_state.keepProjectsOf(accountIds);
    m_loadTask = m_tasks.start([this, configuration = *config](std::stop_token stop) {
        return load(configuration, std::move(stop));
    });
}

QCoro::Task<> ProjectLoader::load(AppConfiguration configuration, std::stop_token stop) {
    m_state.setIsLoadingProjects(true);
    QCoro::Task<QList<VercelAccount>> fetching = fetchProjects(configuration.accounts, stop);
    const QList<VercelAccount> missing = co_await fetching;
    if (stop.stop_requested() || m_quit.stop_requested())
        co_return;
    m_state.setIsLoadingProjects(false);
    Q_EMIT loaded();
    QCoro::Task<> waiting = fetchLateProjects(missing, stop);
    co_await waiting;
}

QCoro::Task<QList<VercelAccount>> ProjectLoader::fetchProjects(QList<VercelAccount> accounts,
                                                               std::stop_token stop) {
    QList<VercelAccount> missing;
    for (const auto& account : accounts) {
        if (account.apiToken.isEmpty())
            continue;
        const VercelAPIClient client = m_clients.forAccount(account);
        auto projects = co_await client.fetchAllProjects(stop);
        if (stop.stop_requested() || m_quit.stop_requested())
            break;
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
    while (!missing.isEmpty()) {
        co_await m_clock.sleep(lateProjectsInterval, stop);
        if (stop.stop_requested() || m_quit.stop_requested())
            co_return;
        QCoro::Task<QList<VercelAccount>> fetching = fetchProjects(missing, stop);
        const QList<VercelAccount> stillMissing = co_await fetching;
        if (stop.stop_requested() || m_quit.stop_requested())
            co_return;
        if (stillMissing.size() < missing.size())
            Q_EMIT lateListLoaded();
        missing = stillMissing;
    }
}

}  // namespace tidemark

#include "app/engine/VercelClients.h"

#include <algorithm>
#include <utility>

namespace tidemark {

VercelClients::VercelClients(HttpClient& http, QUrl baseURL, const AppState& state)
    : m_http(&http), m_baseURL(std::move(baseURL)), m_state(&state) {}

VercelAPIClient VercelClients::forAccount(const VercelAccount& account) const {
    return {*m_http, m_baseURL, account.apiToken, account.teamId};
}

std::optional<VercelAPIClient> VercelClients::forProject(const QString& projectId) const {
    const auto project = m_state->project(projectId);
    const auto& config = m_state->config();
    if (!project || !config)
        return std::nullopt;
    const auto owner = std::ranges::find(config->accounts, project->accountId, &VercelAccount::id);
    if (owner == config->accounts.cend() || owner->apiToken.isEmpty())
        return std::nullopt;
    return forAccount(*owner);
}

}  // namespace tidemark

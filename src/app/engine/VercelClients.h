#pragma once

#include <QString>
#include <QUrl>
#include <optional>

#include "config/AppConfiguration.h"
#include "state/AppState.h"
#include "vercel/VercelAPIClient.h"

namespace tidemark {

/// Makes the API clients of the configured accounts. A plain value; the HTTP client and the state outlive it.
class VercelClients {
public:
    VercelClients(HttpClient& http, QUrl baseURL, const AppState& state);

    [[nodiscard]] VercelAPIClient forAccount(const VercelAccount& account) const;
    /// The client of the account that owns a project; nothing without a known project, an owner or a token.
    [[nodiscard]] std::optional<VercelAPIClient> forProject(const QString& projectId) const;

private:
    HttpClient* m_http;
    QUrl m_baseURL;
    const AppState* m_state;
};

}  // namespace tidemark

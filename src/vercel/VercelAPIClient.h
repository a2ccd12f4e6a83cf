#pragma once

#include <QCoroTask>
#include <QList>
#include <QString>
#include <QUrl>
#include <optional>
#include <stop_token>

#include "vercel/Deployment.h"
#include "vercel/VercelError.h"
#include "vercel/VercelProject.h"

namespace tidemark {

/// Client of the Vercel REST API for one account. It is a value, and each task works on a copy, so a client
/// may be destroyed during its requests. The HTTP client must outlive them.
class VercelAPIClient {
public:
    VercelAPIClient(HttpClient& http, QUrl baseURL, QString apiToken, QString teamId);

    /// All projects of the account, up to 20 pages of 100. A failure of any page discards all pages.
    [[nodiscard]] QCoro::Task<VercelResult<QList<VercelProject>>> fetchAllProjects(
        std::stop_token stop) const;

    /// The newest deployments of a project, newest first.
    [[nodiscard]] QCoro::Task<VercelResult<QList<Deployment>>> fetchRecentDeployments(
        QString projectId, int limit, bool productionOnly, std::stop_token stop) const;

    /// The custom domain of the production deployment; nothing when there is none or the API answers with an
    /// error. Fails only when there is no answer.
    [[nodiscard]] QCoro::Task<VercelResult<std::optional<QString>>> fetchProductionDomain(
        QString projectId, std::stop_token stop) const;

    /// Deploys the sources of a deployment again.
    [[nodiscard]] QCoro::Task<VercelResult<void>> redeployDeployment(QString deploymentId,
                                                                     std::stop_token stop) const;

    bool operator==(const VercelAPIClient&) const = default;

private:
    using QueryItems = QList<std::pair<QString, QString>>;

    [[nodiscard]] QueryItems teamQuery() const;
    [[nodiscard]] HttpRequest request(const QString& path, const QueryItems& queryItems) const;

    HttpClient* m_http;
    QUrl m_baseURL;
    QString m_apiToken;
    QString m_teamId;
};

}  // namespace tidemark

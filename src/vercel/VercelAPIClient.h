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

/// Speaks to the Vercel REST API on behalf of one account. A plain value without state: a task works on a
/// copy of its own, so a client may be dropped while its requests run. The HTTP client must outlive them.
class VercelAPIClient {
public:
    VercelAPIClient(HttpClient& http, QUrl baseURL, QString apiToken, QString teamId);

    /// Every project of the account: at most 20 pages of 100. A failure on any page discards them all.
    [[nodiscard]] QCoro::Task<VercelResult<QList<VercelProject>>> fetchAllProjects(
        std::stop_token stop) const;

    /// The newest deployments of a project, newest first.
    [[nodiscard]] QCoro::Task<VercelResult<QList<Deployment>>> fetchRecentDeployments(
        QString projectId, int limit, bool productionOnly, std::stop_token stop) const;

    /// The custom domain that serves production; absent when there is none or the API does not say. Fails
    /// only when no answer came.
    [[nodiscard]] QCoro::Task<VercelResult<std::optional<QString>>> fetchProductionDomain(
        QString projectId, std::stop_token stop) const;

    /// Deploys again what a deployment was made from.
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

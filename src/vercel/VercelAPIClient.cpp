#include "vercel/VercelAPIClient.h"

#include <QCoroFuture>
#include <QJsonDocument>
#include <QtConcurrentRun>
#include <utility>

#include "platform/http/SuccessfulBody.h"

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

constexpr int pageSize = 100;
constexpr int maximumPages = 20;
/// In bytes. Each project of a page comes with its variables and its newest deployments.
constexpr qint64 largestPage = qint64{64} * 1024 * 1024;

VercelResult<ProjectsResponse> decodePage(HttpResult result) {
    return successfulBody<VercelError>(std::move(result), {200}).and_then([](const QByteArray& body) {
        return ProjectsResponse::decode(body).map_error(
            [](DecodingError error) { return VercelError(error); });
    });
}

VercelResult<QList<Deployment>> decodeDeployments(HttpResult result) {
    return successfulBody<VercelError>(std::move(result), {200})
        .and_then([](const QByteArray& body) {
            return DeploymentsResponse::decode(body).map_error(
                [](DecodingError error) { return VercelError(error); });
        })
        .map([](DeploymentsResponse response) { return std::move(response.deployments); });
}

std::optional<QString> productionDomain(const QList<DomainEntry>& domains) {
    std::optional<QString> firstCandidate;
    for (const auto& domain : domains) {
        if (domain.gitBranch || domain.redirect || domain.name.endsWith(defaultDeploymentSuffix))
            continue;
        if (domain.verified == true)
            return domain.name;
        if (!firstCandidate)
            firstCandidate = domain.name;
    }
    return firstCandidate;
}

}  // namespace

VercelAPIClient::VercelAPIClient(HttpClient& http, QUrl baseURL, QString apiToken, QString teamId)
    : m_http(&http),
      m_baseURL(std::move(baseURL)),
      m_apiToken(std::move(apiToken)),
      m_teamId(std::move(teamId)) {}

VercelAPIClient::QueryItems VercelAPIClient::teamQuery() const {
    if (m_teamId.isEmpty())
        return {};
    return {{u"teamId"_s, m_teamId}};
}

HttpRequest VercelAPIClient::request(const QString& path, const QueryItems& queryItems) const {
    QByteArray query;
    for (const auto& [name, value] : queryItems + teamQuery()) {
        if (!query.isEmpty())
            query += '&';
        query += QUrl::toPercentEncoding(name) + '=' + QUrl::toPercentEncoding(value);
    }
    QUrl url = m_baseURL;
    url.setPath(u'/' + path, QUrl::TolerantMode);
    url.setQuery(QString::fromLatin1(query), QUrl::StrictMode);
    return {.url = url, .headers = {{"Authorization", "Bearer " + m_apiToken.toUtf8()}}};
}

// Each public operation starts a coroutine that owns a copy of the client.

QCoro::Task<VercelResult<QList<VercelProject>>> VercelAPIClient::fetchAllProjects(
    std::stop_token stop) const {
    static constexpr auto run =
        [](VercelAPIClient client,
           std::stop_token stopToken) -> QCoro::Task<VercelResult<QList<VercelProject>>> {
        QList<VercelProject> projects;
        QueryItems items{{u"limit"_s, QString::number(pageSize)}};
        for (int pageNumber = 1;; ++pageNumber) {
            HttpRequest request = client.request(u"v9/projects"_s, items);
            request.bodyLimit = largestPage;
            HttpResult result = co_await client.m_http->send(std::move(request), stopToken);
            // On a worker, because a page may hold a megabyte.
            const QFuture<VercelResult<ProjectsResponse>> decoding =
                QtConcurrent::run([page = std::move(result)] { return decodePage(page); });
            auto response = co_await decoding;
            if (!response)
                co_return tl::unexpected(response.error());
            const auto next = response->pagination ? response->pagination->next : std::nullopt;
            const bool isFull = response->projects.size() == pageSize;
            projects += std::move(response->projects);
            if (!next || !isFull || pageNumber == maximumPages)
                co_return projects;
            items = {{u"limit"_s, QString::number(pageSize)}, {u"until"_s, QString::number(*next)}};
        }
    };
    return run(*this, std::move(stop));
}

QCoro::Task<VercelResult<QList<Deployment>>> VercelAPIClient::fetchRecentDeployments(
    QString projectId, int limit, bool productionOnly, std::stop_token stop) const {
    static constexpr auto run =
        [](VercelAPIClient client, QueryItems items,
           std::stop_token stopToken) -> QCoro::Task<VercelResult<QList<Deployment>>> {
        HttpRequest request = client.request(u"v6/deployments"_s, items);
        HttpResult result = co_await client.m_http->send(std::move(request), std::move(stopToken));
        co_return decodeDeployments(std::move(result));
    };
    QueryItems items{{u"projectId"_s, std::move(projectId)}, {u"limit"_s, QString::number(limit)}};
    if (productionOnly)
        items.append({u"target"_s, u"production"_s});
    return run(*this, std::move(items), std::move(stop));
}

QCoro::Task<VercelResult<std::optional<QString>>> VercelAPIClient::fetchProductionDomain(
    QString projectId, std::stop_token stop) const {
    static constexpr auto run =
        [](VercelAPIClient client, QString path,
           std::stop_token stopToken) -> QCoro::Task<VercelResult<std::optional<QString>>> {
        if (path.isEmpty())
            co_return std::nullopt;
        const QueryItems items{{u"limit"_s, u"50"_s}};
        HttpRequest request = client.request(path, items);
        HttpResult result = co_await client.m_http->send(std::move(request), std::move(stopToken));
        if (!result && result.error() != TransportError::notHttp)
            co_return tl::unexpected(VercelError(result.error()));
        if (!result || result->status != 200)
            co_return std::nullopt;
        const auto response = DomainsResponse::decode(result->body);
        co_return response ? productionDomain(response->domains) : std::nullopt;
    };
    // The id is percent-encoded into one segment of the path, but "." and ".." would still change the path.
    const bool leavesPath = projectId == "."_L1 || projectId == ".."_L1 || projectId.isEmpty();
    const QString segment = QString::fromLatin1(QUrl::toPercentEncoding(projectId));
    return run(*this, leavesPath ? QString() : u"v9/projects/%1/domains"_s.arg(segment), std::move(stop));
}

QCoro::Task<VercelResult<void>> VercelAPIClient::redeployDeployment(QString deploymentId,
                                                                    std::stop_token stop) const {
    static constexpr auto run = [](VercelAPIClient client, QString id,
                                   std::stop_token stopToken) -> QCoro::Task<VercelResult<void>> {
        const QueryItems items{{u"forceNew"_s, u"1"_s}};
        HttpRequest request = client.request(u"v13/deployments"_s, items);
        request.method = HttpMethod::post;
        request.headers.emplaceBack("Content-Type", "application/json");
        const QJsonObject body{{u"deploymentId"_s, id}};
        request.body = QJsonDocument(body).toJson(QJsonDocument::Compact);
        HttpResult result = co_await client.m_http->send(std::move(request), std::move(stopToken));
        const auto answer = successfulBody<VercelError>(std::move(result), {200, 201});
        if (!answer)
            co_return tl::unexpected(answer.error());
        co_return {};
    };
    return run(*this, std::move(deploymentId), std::move(stop));
}

}  // namespace tidemark

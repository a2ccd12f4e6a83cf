#include "sandbox/VercelService.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>
#include <limits>

#include "sandbox/ProjectDocument.h"

namespace tidemark::sandbox {

namespace {

using namespace Qt::StringLiterals;

constexpr int defaultLimit = 20;
constexpr int largestLimit = 100;

QByteArray compact(const QJsonObject& document) {
    return QJsonDocument(document).toJson(QJsonDocument::Compact);
}

Reply failure(int status, const QString& code, const QString& message) {
    const QJsonObject error{{u"code"_s, code}, {u"message"_s, message}};
    return Reply::json({{u"error"_s, error}}, status);
}

Reply notFound(const QString& what) {
    return failure(404, u"not_found"_s, what + u" not found."_s);
}

int limitOf(const Request& request) {
    bool valid = false;
    const int limit = request.queryValue("limit"_L1).toInt(&valid);
    return valid ? std::clamp(limit, 1, largestLimit) : defaultLimit;
}

/// Only what is older than the cursor belongs to the page.
qint64 cursorOf(const Request& request) {
    bool valid = false;
    const qint64 until = request.queryValue("until"_L1).toLongLong(&valid);
    return valid ? until : std::numeric_limits<qint64>::max();
}

/// A list's document; `next` is 0 for no further page.
Reply listReply(const QByteArray& name, const QByteArrayList& items, qint64 next = 0) {
    const QJsonObject pagination{{u"count"_s, items.size()},
                                 {u"next"_s, next == 0 ? QJsonValue() : QJsonValue(next)}};
    return {.body =
                "{\"" + name + "\":[" + items.join(',') + "],\"pagination\":" + compact(pagination) + '}'};
}

}  // namespace

bool VercelService::serves(const QString& path) {
    return path.startsWith("/v6/"_L1) || path.startsWith("/v9/"_L1) || path.startsWith("/v13/"_L1) ||
           path.startsWith("/api/v2/"_L1);
}

Reply VercelService::answer(const Request& request) {
    if (request.path == u"/api/v2/status.json")
        return Reply::json({{u"status"_s, QJsonObject{{u"indicator"_s, m_world.statusIndicator()}}}});
    const std::optional<int> account = m_world.accountForToken(request.bearerToken());
    if (!account)
        return failure(401, u"unauthorized"_s, u"The token is missing, wrong or revoked."_s);
    const QString team = request.queryValue("teamId"_L1);
    if (team != m_world.accounts().at(*account).teamId)
        return failure(403, u"forbidden"_s, u"The token has no access to this scope."_s);
    return route(request, *account);
}

QString VercelService::projectOf(const Request& request) const {
    QString key = request.queryValue("projectId"_L1);
    const QStringList segments = request.segments();
    if (key.isEmpty() && segments.size() > 2 && segments.at(1) == u"projects")
        key = segments.at(2);
    if (const Project* project = m_world.project(key); project != nullptr)
        return project->id;
    if (request.body.isEmpty())
        return {};
    const QString uid = QJsonDocument::fromJson(request.body).object().value(u"deploymentId"_s).toString();
    const Project* project = m_world.projectOfDeployment(uid);
    return project == nullptr ? QString() : project->id;
}

Reply VercelService::route(const Request& request, int account) {
    const QStringList segments = request.segments();
    if (request.method == "GET" && segments == QStringList{u"v9"_s, u"projects"_s})
        return listProjects(request, account);
    if (request.method == "GET" && segments == QStringList{u"v6"_s, u"deployments"_s})
        return listDeployments(request, account);
    if (request.method == "POST" && segments == QStringList{u"v13"_s, u"deployments"_s})
        return createDeployment(request, account);
    const bool domains = segments.size() == 4 && segments.at(0) == u"v9" && segments.at(1) == u"projects" &&
                         segments.at(3) == u"domains";
    if (request.method != "GET" || !domains)
        return notFound(u"The requested path was"_s);
    const Project* project = ownProject(segments.at(2), account);
    return project == nullptr ? notFound(u"Project"_s) : listDomains(request, *project);
}

Reply VercelService::listProjects(const Request& request, int account) {
    const int limit = limitOf(request);
    const qint64 until = cursorOf(request);
    QByteArrayList page;
    qint64 last = 0;
    for (int index = 0; index < m_world.projectCount(); ++index) {
        const Project& project = m_world.projectAt(index);
        if (project.account != account || project.updated >= until)
            continue;
        if (page.size() == limit)
            return listReply("projects", page, last);
        page.append(rendered(project));
        last = project.updated;
    }
    return listReply("projects", page);
}

Reply VercelService::listDeployments(const Request& request, int account) const {
    const Project* project = ownProject(request.queryValue("projectId"_L1), account);
    if (project == nullptr)
        return notFound(u"Project"_s);
    const QString target = request.queryValue("target"_L1);
    QByteArrayList page;
    for (const Deployment& deployment : project->deployments)
        if (page.size() < limitOf(request) && (target.isEmpty() || deployment.target == target))
            page.append(compact(deploymentDocument(deployment, *project, u"uid"_s)));
    return listReply("deployments", page);
}

Reply VercelService::listDomains(const Request& request, const Project& project) const {
    QByteArrayList page;
    for (const Domain& domain : project.domains.mid(0, limitOf(request)))
        page.append(compact(domainDocument(domain)));
    return listReply("domains", page);
}

Reply VercelService::createDeployment(const Request& request, int account) {
    const QJsonDocument body = QJsonDocument::fromJson(request.body);
    const QString source = body.object().value(u"deploymentId"_s).toString();
    if (source.isEmpty())
        return failure(400, u"bad_request"_s, u"The body must name a \"deploymentId\"."_s);
    const Project* project = m_world.projectOfDeployment(source);
    if (project == nullptr || project->account != account)
        return notFound(u"Deployment"_s);
    m_world.redeploy(source);
    return Reply::json(deploymentDocument(project->deployments.first(), *project, u"id"_s));
}

const Project* VercelService::ownProject(const QString& idOrName, int account) const {
    const Project* project = m_world.project(idOrName);
    return project != nullptr && project->account == account ? project : nullptr;
}

const QByteArray& VercelService::rendered(const Project& project) {
    QByteArray& json = m_rendered[project.id];
    if (json.isEmpty())
        json = compact(projectDocument(project));
    return json;
}

}  // namespace tidemark::sandbox

#include "sandbox/VercelService.h"

#include <QDateTime>
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

/// A list's document; 0 for no further or no earlier page.
Reply listReply(const QByteArray& name, const QByteArrayList& items, qint64 next, qint64 previous) {
    const auto cursor = [](qint64 value) { return value == 0 ? QJsonValue() : QJsonValue(value); };
    const QJsonObject pagination{
        {u"count"_s, items.size()}, {u"next"_s, cursor(next)}, {u"prev"_s, cursor(previous)}};
    return {.body =
                "{\"" + name + "\":[" + items.join(',') + "],\"pagination\":" + compact(pagination) + '}'};
}

QString indicatorText(const QString& indicator) {
    static const QHash<QString, QString> texts{{u"none"_s, u"All Systems Operational"_s},
                                               {u"minor"_s, u"Minor Service Outage"_s},
                                               {u"major"_s, u"Partial System Outage"_s},
                                               {u"critical"_s, u"Major Service Outage"_s}};
    return texts.value(indicator, indicator);
}

}  // namespace

bool VercelService::serves(const QString& path) {
    return path.startsWith("/v6/"_L1) || path.startsWith("/v9/"_L1) || path.startsWith("/v13/"_L1) ||
           path.startsWith("/api/v2/"_L1);
}

Reply VercelService::answer(const Request& request) {
    if (request.path == u"/api/v2/status.json")
        return statusPage();
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

Reply VercelService::statusPage() const {
    const QString& indicator = m_world.statusIndicator();
    const QJsonObject page{
        {u"id"_s, u"sandbox"_s},
        {u"name"_s, u"Sandbox"_s},
        {u"time_zone"_s, u"Etc/UTC"_s},
        {u"updated_at"_s, QDateTime::fromMSecsSinceEpoch(m_world.now()).toUTC().toString(Qt::ISODateWithMs)}};
    const QJsonObject status{{u"indicator"_s, indicator}, {u"description"_s, indicatorText(indicator)}};
    return Reply::json({{u"page"_s, page}, {u"status"_s, status}});
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
    qint64 first = 0;
    qint64 last = 0;
    for (int index = 0; index < m_world.projectCount(); ++index) {
        const Project& project = m_world.projectAt(index);
        if (project.account != account || project.updated >= until)
            continue;
        if (page.size() == limit)
            return listReply("projects", page, last, first);
        if (page.isEmpty())
            first = project.updated;
        page.append(rendered(project));
        last = project.updated;
    }
    return listReply("projects", page, 0, first);
}

Reply VercelService::listDeployments(const Request& request, int account) const {
    const QString wanted = request.queryValue("projectId"_L1);
    if (!wanted.isEmpty() && ownProject(wanted, account) == nullptr)
        return notFound(u"Project"_s);
    const QString target = request.queryValue("target"_L1);
    const qint64 until = cursorOf(request);
    using Found = std::pair<const Deployment*, const Project*>;
    std::vector<Found> found;
    for (int index = 0; index < m_world.projectCount(); ++index) {
        const Project& project = m_world.projectAt(index);
        if (project.account != account ||
            (!wanted.isEmpty() && project.id != wanted && project.name != wanted))
            continue;
        for (const Deployment& deployment : project.deployments)
            if (deployment.created < until && (target.isEmpty() || deployment.target == target))
                found.emplace_back(&deployment, &project);
    }
    // A history that was set by hand keeps its order.
    if (wanted.isEmpty())
        std::stable_sort(found.begin(), found.end(), [](const Found& left, const Found& right) {
            return left.first->created > right.first->created;
        });
    const auto limit = static_cast<std::size_t>(limitOf(request));
    const bool more = found.size() > limit;
    found.resize(std::min(found.size(), limit));
    QByteArrayList page;
    for (const auto& [deployment, project] : found)
        page.append(
            compact(deploymentDocument(*deployment, *project, m_world.accounts().at(account), u"uid"_s)));
    const qint64 next = more ? found.back().first->created : 0;
    return listReply("deployments", page, next, found.empty() ? 0 : found.front().first->created);
}

Reply VercelService::listDomains(const Request& request, const Project& project) const {
    QByteArrayList page;
    for (const Domain& domain : project.domains.mid(0, limitOf(request)))
        page.append(compact(domainDocument(domain, project)));
    return listReply("domains", page, 0, 0);
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
    return Reply::json(
        deploymentDocument(project->deployments.first(), *project, m_world.accounts().at(account), u"id"_s));
}

const Project* VercelService::ownProject(const QString& idOrName, int account) const {
    const Project* project = m_world.project(idOrName);
    return project != nullptr && project->account == account ? project : nullptr;
}

const QByteArray& VercelService::rendered(const Project& project) {
    Rendered& entry = m_rendered[project.id];
    if (entry.json.isEmpty() || entry.revision != project.revision)
        entry = {project.revision, compact(projectDocument(project, m_world.accounts().at(project.account)))};
    return entry.json;
}

}  // namespace tidemark::sandbox

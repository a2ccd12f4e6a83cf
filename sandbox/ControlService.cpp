#include "sandbox/ControlService.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <algorithm>
#include <functional>

namespace tidemark::sandbox {

namespace {

using namespace Qt::StringLiterals;

constexpr QByteArrayView index =
    R"(The sandbox's controls (bodies and answers are JSON; a project is named by its name or id):

GET    /sandbox/world      accounts, tokens, projects, zones
POST   /sandbox/projects   {"name": "shop", "account": 0}
DELETE /sandbox/projects   {"project": "shop"}
POST   /sandbox/deploy     {"project": "shop"} lives a life of its own; optional: "outcome" (how that ends),
                           "state" (stays in it), "production", "message", "ref", "sha"
POST   /sandbox/state      {"project": "shop" or "*", "state": "READY"}
POST   /sandbox/status     {"indicator": "none", "minor", "major" or "critical"}
POST   /sandbox/speed      {"speed": 20}; 0 freezes
POST   /sandbox/tokens     {"token": "…", "revoked": true}
GET    /sandbox/faults     those in force; DELETE clears them
POST   /sandbox/faults     {"kind": "status", "stall", "delay", "drip", "cut", "reset", "garbage", "huge", "bomb"
                           or "redirect"};
                           optional: "path" (prefix), "project", "times", "status", "body", "pauseMs", "bytes", "location"
GET    /sandbox/requests   ?path=prefix; DELETE clears them
)";

Reply refusal(int status, const QString& message) {
    return Reply::json({{u"error"_s, message}}, status);
}

Reply unknownProject() {
    return refusal(404, u"There is no such project."_s);
}

}  // namespace

bool ControlService::serves(const QString& path) {
    return path == u"/" || path == u"/sandbox" || path.startsWith("/sandbox/"_L1);
}

Reply ControlService::answer(const Request& request) {
    const QString wanted = QString::fromLatin1(request.method) + u' ' + request.path;
    if (wanted == u"GET /" || wanted == u"GET /sandbox" || wanted == u"GET /sandbox/")
        return {.contentType = "text/plain; charset=utf-8", .body = index.toByteArray()};

    QJsonParseError error{};
    const QJsonDocument body = QJsonDocument::fromJson(request.body, &error);
    if (!request.body.isEmpty() && !body.isObject())
        return refusal(400, u"The body is no JSON object: "_s + error.errorString());
    const QJsonObject wish = body.object();

    const QHash<QString, std::function<Reply()>> routes = {
        {u"GET /sandbox/world"_s, [&] { return showWorld(); }},
        {u"POST /sandbox/projects"_s, [&] { return addProject(wish); }},
        {u"DELETE /sandbox/projects"_s, [&] { return removeProject(wish); }},
        {u"POST /sandbox/deploy"_s, [&] { return deploy(wish); }},
        {u"POST /sandbox/state"_s, [&] { return setState(wish); }},
        {u"POST /sandbox/status"_s, [&] { return setStatus(wish); }},
        {u"POST /sandbox/speed"_s, [&] { return setSpeed(wish); }},
        {u"POST /sandbox/tokens"_s, [&] { return setToken(wish); }},
        {u"GET /sandbox/faults"_s, [&] { return showFaults(); }},
        {u"POST /sandbox/faults"_s, [&] { return addFault(wish); }},
        {u"DELETE /sandbox/faults"_s,
         [&] {
             m_faults.clear();
             return showFaults();
         }},
        {u"GET /sandbox/requests"_s, [&] { return showRequests(request); }},
        {u"DELETE /sandbox/requests"_s,
         [&] {
             m_log.clear();
             return Reply::json({});
         }},
    };
    const auto route = routes.constFind(wanted);
    return route == routes.constEnd() ? refusal(404, u"No such control; GET /sandbox lists them."_s)
                                      : (*route)();
}

Reply ControlService::showWorld() const {
    QJsonArray accounts;
    for (const SandboxAccount& account : m_world.accounts())
        accounts.append(QJsonObject{
            {u"name"_s, account.name}, {u"teamId"_s, account.teamId}, {u"token"_s, account.token}});
    QJsonArray projects;
    for (int position = 0; position < m_world.projectCount(); ++position) {
        const Project& project = m_world.projectAt(position);
        QJsonObject document{{u"id"_s, project.id},
                             {u"name"_s, project.name},
                             {u"account"_s, m_world.accounts().at(project.account).name},
                             {u"deployments"_s, project.deployments.size()}};
        if (!project.deployments.isEmpty())
            document.insert(u"newest"_s, project.deployments.first().state);
        projects.append(document);
    }
    QJsonArray zones;
    for (const Zone& zone : m_world.zones())
        zones.append(zone.name);
    return Reply::json({{u"now"_s, m_world.now()},
                        {u"speed"_s, m_world.speed()},
                        {u"status"_s, m_world.statusIndicator()},
                        {u"accounts"_s, accounts},
                        {u"cloudflareToken"_s, m_world.cloudflareToken()},
                        {u"projects"_s, projects},
                        {u"zones"_s, zones}});
}

Reply ControlService::showRequests(const Request& request) const {
    QJsonArray requests;
    for (const LoggedRequest& entry : m_log.entries(request.queryValue("path"_L1))) {
        // Tokens stay out: somebody may have pointed a real one at us.
        requests.append(QJsonObject{{u"time"_s, entry.time},
                                    {u"method"_s, QString::fromLatin1(entry.method)},
                                    {u"path"_s, entry.path},
                                    {u"body"_s, QString::fromUtf8(entry.body)},
                                    {u"status"_s, entry.status}});
    }
    return Reply::json({{u"total"_s, m_log.total()}, {u"requests"_s, requests}});
}

Reply ControlService::showFaults() const {
    QJsonArray faults;
    for (const Fault& fault : m_faults.list()) {
        const char* kind = QMetaEnum::fromType<FaultKind>().valueToKey(static_cast<int>(fault.kind));
        faults.append(QJsonObject{{u"kind"_s, QString::fromLatin1(kind)},
                                  {u"path"_s, fault.pathPrefix},
                                  {u"project"_s, fault.projectId},
                                  {u"times"_s, fault.times}});
    }
    return Reply::json({{u"faults"_s, faults}});
}

Reply ControlService::addProject(const QJsonObject& wish) {
    const QString name = wish.value(u"name"_s).toString();
    const int account = wish.value(u"account"_s).toInt();
    if (name.isEmpty() || account < 0 || account >= m_world.accounts().size())
        return refusal(400, u"A \"name\" and an existing \"account\" are needed."_s);
    return Reply::json({{u"id"_s, m_world.addProject(name, account)}}, 201);
}

Reply ControlService::removeProject(const QJsonObject& wish) {
    return m_world.removeProject(wish.value(u"project"_s).toString()) ? Reply::json({}) : unknownProject();
}

Reply ControlService::deploy(const QJsonObject& wish) {
    const auto text = [&wish](const QString& name) { return wish.value(name).toString(); };
    NewDeployment fields{.state = text(u"state"_s), .outcome = text(u"outcome"_s)};
    fields.production = wish.value(u"production"_s).toBool(true);
    if (wish.contains(u"message"_s) || wish.contains(u"ref"_s) || wish.contains(u"sha"_s))
        fields.commit = Commit{text(u"message"_s), text(u"ref"_s), text(u"sha"_s)};
    const std::optional<QString> uid = m_world.push(text(u"project"_s), fields);
    return uid ? Reply::json({{u"uid"_s, *uid}}, 201) : unknownProject();
}

Reply ControlService::setState(const QJsonObject& wish) {
    const QString state = wish.value(u"state"_s).toString();
    const QString wanted = wish.value(u"project"_s).toString();
    if (state.isEmpty())
        return refusal(400, u"A \"state\" is needed."_s);
    if (wanted != u"*" && m_world.project(wanted) == nullptr)
        return unknownProject();
    int changed = 0;
    for (int position = 0; position < m_world.projectCount(); ++position) {
        const Project& project = m_world.projectAt(position);
        if (wanted == u"*" || project.id == wanted || project.name == wanted)
            changed += m_world.setState(project.id, state) ? 1 : 0;
    }
    return Reply::json({{u"changed"_s, changed}});
}

Reply ControlService::setStatus(const QJsonObject& wish) {
    const QString indicator = wish.value(u"indicator"_s).toString();
    if (indicator.isEmpty())
        return refusal(400, u"An \"indicator\" is needed."_s);
    m_world.setStatusIndicator(indicator);
    return Reply::json({{u"indicator"_s, indicator}});
}

Reply ControlService::setSpeed(const QJsonObject& wish) {
    const double speed = wish.value(u"speed"_s).toDouble(-1);
    if (speed < 0)
        return refusal(400, u"A \"speed\" of 0 or more is needed."_s);
    m_world.setSpeed(speed);
    return Reply::json({{u"speed"_s, m_world.speed()}});
}

Reply ControlService::setToken(const QJsonObject& wish) {
    const QString token = wish.value(u"token"_s).toString();
    if (token.isEmpty())
        return refusal(400, u"A \"token\" is needed."_s);
    const bool revoked = wish.value(u"revoked"_s).toBool(true);
    m_world.setRevoked(token, revoked);
    return Reply::json({{u"revoked"_s, revoked}});
}

Reply ControlService::addFault(const QJsonObject& wish) {
    bool isKnown = false;
    const int kind = QMetaEnum::fromType<FaultKind>().keyToValue(
        wish.value(u"kind"_s).toString().toUtf8().constData(), &isKnown);
    if (!isKnown)
        return refusal(400, u"A known \"kind\" is needed."_s);
    Fault fault{.kind = FaultKind(kind)};
    const QString wanted = wish.value(u"project"_s).toString();
    if (!wanted.isEmpty()) {
        const Project* project = m_world.project(wanted);
        if (project == nullptr)
            return unknownProject();
        fault.projectId = project->id;
    }
    fault.pathPrefix = wish.value(u"path"_s).toString();
    fault.times = wish.value(u"times"_s).toInt(-1);
    fault.status = wish.value(u"status"_s).toInt(fault.status);
    if (wish.contains(u"body"_s))
        fault.body = wish.value(u"body"_s).toString().toUtf8();
    fault.pauseMs = wish.value(u"pauseMs"_s).toInt();
    fault.bytes = wish.value(u"bytes"_s).toInteger();
    fault.location = wish.value(u"location"_s).toString();
    m_faults.add(fault);
    return showFaults();
}

}  // namespace tidemark::sandbox

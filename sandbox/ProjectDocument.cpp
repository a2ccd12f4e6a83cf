#include "sandbox/ProjectDocument.h"

#include <QJsonArray>

#include "sandbox/Random.h"

using namespace Qt::StringLiterals;

namespace tidemark::sandbox {

namespace {

QJsonValue orNull(const QString& text) {
    return text.isNull() ? QJsonValue() : QJsonValue(text);
}

QJsonObject metaDocument(const Deployment& deployment, const Project& project,
                         const SandboxAccount& account) {
    QJsonObject meta{{u"githubDeployment"_s, u"1"_s},
                     {u"githubOrg"_s, account.slug},
                     {u"githubRepo"_s, project.name},
                     {u"githubRepoVisibility"_s, u"private"_s}};
    const auto put = [&meta](const QString& name, const QString& text) {
        if (!text.isNull())
            meta.insert(name, text);
    };
    put(u"githubCommitMessage"_s, deployment.commit->message);
    put(u"githubCommitRef"_s, deployment.commit->ref);
    put(u"githubCommitSha"_s, deployment.commit->sha);
    return meta;
}

/// The same for every project: the weight of the environment's encrypted variables.
QJsonArray environment() {
    Random random(1);
    QJsonArray variables;
    for (int i = 0; i < 18; ++i)
        variables.append(
            QJsonObject{{u"type"_s, u"encrypted"_s},
                        {u"key"_s, u"VARIABLE_%1"_s.arg(i)},
                        {u"value"_s, random.letters(240)},
                        {u"target"_s, QJsonArray{u"production"_s, u"preview"_s, u"development"_s}}});
    return variables;
}

}  // namespace

QJsonObject projectDocument(const Project& project, const SandboxAccount& account) {
    static const QJsonArray variables = environment();
    QJsonArray latest;
    for (const Deployment& deployment : project.deployments.mid(0, 2))
        latest.append(deploymentDocument(deployment, project, account, u"id"_s));
    return {{u"accountId"_s, account.teamId.isEmpty() ? account.userId : account.teamId},
            {u"id"_s, project.id},
            {u"name"_s, project.name},
            {u"createdAt"_s, project.created},
            {u"updatedAt"_s, project.updated},
            {u"framework"_s, u"nextjs"_s},
            {u"link"_s, QJsonObject{{u"type"_s, u"github"_s}, {u"repo"_s, project.name}}},
            {u"env"_s, variables},
            {u"latestDeployments"_s, latest}};
}

QJsonObject deploymentDocument(const Deployment& deployment, const Project& project,
                               const SandboxAccount& account, const QString& idName) {
    QJsonObject document{
        {idName, deployment.uid},
        {u"name"_s, project.name},
        {u"projectId"_s, project.id},
        {u"url"_s, deployment.url.isNull() ? u""_s : deployment.url},
        {u"created"_s, deployment.created},
        {u"createdAt"_s, deployment.created},
        {u"source"_s, deployment.commit ? u"git"_s : u"cli"_s},
        {u"state"_s, deployment.state},
        {u"readyState"_s, deployment.state},
        {u"creator"_s, QJsonObject{{u"uid"_s, account.userId}, {u"username"_s, account.slug}}},
        {u"inspectorUrl"_s, orNull(deployment.inspectorUrl)},
        {u"target"_s, orNull(deployment.target)},
        {u"aliasError"_s, QJsonValue()}};
    if (deployment.buildingAt != 0)
        document.insert(u"buildingAt"_s, deployment.buildingAt);
    if (deployment.ready != 0)
        document.insert(u"ready"_s, deployment.ready);
    if (deployment.commit)
        document.insert(u"meta"_s, metaDocument(deployment, project, account));
    if (!deployment.alias.isEmpty())
        document.insert(u"alias"_s, QJsonArray::fromStringList(deployment.alias));
    return document;
}

QJsonObject domainDocument(const Domain& domain, const Project& project) {
    return {{u"name"_s, domain.name},
            {u"apexName"_s, domain.name.section(u'.', -2)},
            {u"projectId"_s, project.id},
            {u"redirect"_s, orNull(domain.redirect)},
            {u"gitBranch"_s, orNull(domain.gitBranch)},
            {u"createdAt"_s, project.created},
            {u"verified"_s, domain.verified}};
}

}  // namespace tidemark::sandbox

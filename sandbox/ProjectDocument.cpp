#include "sandbox/ProjectDocument.h"

#include <QJsonArray>

#include "sandbox/Random.h"

using namespace Qt::StringLiterals;

namespace tidemark::sandbox {

namespace {

QJsonValue orNull(const QString& text) {
    return text.isNull() ? QJsonValue() : QJsonValue(text);
}

QJsonObject metaDocument(const Deployment& deployment) {
    QJsonObject meta{{u"githubDeployment"_s, u"1"_s}};
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
    for (int i = 0; i < 22; ++i)
        variables.append(
            QJsonObject{{u"type"_s, u"encrypted"_s},
                        {u"key"_s, u"VARIABLE_%1"_s.arg(i)},
                        {u"value"_s, random.letters(240)},
                        {u"target"_s, QJsonArray{u"production"_s, u"preview"_s, u"development"_s}}});
    return variables;
}

}  // namespace

QJsonObject projectDocument(const Project& project) {
    static const QJsonArray variables = environment();
    return {{u"id"_s, project.id},
            {u"name"_s, project.name},
            {u"updatedAt"_s, project.updated},
            {u"framework"_s, u"nextjs"_s},
            {u"link"_s, QJsonObject{{u"type"_s, u"github"_s}, {u"repo"_s, project.name}}},
            {u"env"_s, variables}};
}

QJsonObject deploymentDocument(const Deployment& deployment, const Project& project, const QString& idName) {
    QJsonObject document{{idName, deployment.uid},
                         {u"name"_s, project.name},
                         {u"projectId"_s, project.id},
                         {u"url"_s, deployment.url.isNull() ? u""_s : deployment.url},
                         {u"created"_s, deployment.created},
                         {u"state"_s, deployment.state},
                         {u"inspectorUrl"_s, orNull(deployment.inspectorUrl)},
                         {u"target"_s, orNull(deployment.target)},
                         {u"aliasError"_s, QJsonValue()}};
    if (deployment.ready != 0)
        document.insert(u"ready"_s, deployment.ready);
    if (deployment.commit)
        document.insert(u"meta"_s, metaDocument(deployment));
    if (!deployment.alias.isEmpty())
        document.insert(u"alias"_s, QJsonArray::fromStringList(deployment.alias));
    return document;
}

QJsonObject domainDocument(const Domain& domain) {
    return {{u"name"_s, domain.name},
            {u"redirect"_s, orNull(domain.redirect)},
            {u"gitBranch"_s, orNull(domain.gitBranch)},
            {u"verified"_s, domain.verified}};
}

}  // namespace tidemark::sandbox

#include "sandbox/ProjectDocument.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonValue>
#include <array>

#include "sandbox/Catalog.h"
#include "sandbox/Random.h"

namespace tidemark::sandbox {

namespace {

using namespace Qt::StringLiterals;

constexpr std::array variableNames = {u"DATABASE_URL",      u"SESSION_SECRET",   u"NEXT_PUBLIC_API_BASE",
                                      u"SMTP_PASSWORD",     u"SEARCH_INDEX",     u"FEATURE_FLAGS_URL",
                                      u"IMAGE_SIGNING_KEY", u"CACHE_PURGE_TOKEN"};

/// A null text is null in JSON too.
QJsonValue orNull(const QString& text) {
    return text.isNull() ? QJsonValue(QJsonValue::Null) : text;
}

const QString& ownerOf(const SandboxAccount& account) {
    return account.teamId.isEmpty() ? account.userId : account.teamId;
}

QJsonObject creatorDocument(const SandboxAccount& account) {
    return {{u"uid"_s, account.userId},
            {u"username"_s, account.slug},
            {u"email"_s, account.slug + u"@mail.example"_s},
            {u"githubLogin"_s, account.slug}};
}

QJsonObject metaDocument(const Deployment& deployment, const Project& project,
                         const SandboxAccount& account) {
    if (!deployment.commit)
        return {};
    QJsonObject meta{{u"githubCommitAuthorName"_s, account.name},
                     {u"githubCommitOrg"_s, account.slug},
                     {u"githubCommitRepo"_s, project.repository},
                     {u"githubDeployment"_s, u"1"_s},
                     {u"githubOrg"_s, account.slug},
                     {u"githubRepo"_s, project.repository},
                     {u"githubRepoOwnerType"_s, account.teamId.isEmpty() ? u"User"_s : u"Organization"_s},
                     {u"githubCommitRepoId"_s, u"481516234"_s},
                     {u"githubRepoVisibility"_s, u"private"_s},
                     {u"branchAlias"_s, deployment.alias.isEmpty() ? QString() : deployment.alias.last()}};
    const auto put = [&meta](const QString& name, const QString& text) {
        if (!text.isNull())
            meta.insert(name, text);
    };
    put(u"githubCommitMessage"_s, deployment.commit->message);
    put(u"githubCommitRef"_s, deployment.commit->ref);
    put(u"githubCommitSha"_s, deployment.commit->sha);
    return meta;
}

/// The same for every project, and rendered once: it is half of the document.
QByteArray environmentJson() {
    Random random(1);
    const qint64 created = 1'690'000'000'000;
    QJsonArray variables;
    for (const char16_t* name : variableNames) {
        variables.append(
            QJsonObject{{u"type"_s, u"encrypted"_s},
                        {u"value"_s, random.letters(160)},
                        {u"target"_s, QJsonArray{u"production"_s, u"preview"_s, u"development"_s}},
                        {u"configurationId"_s, QJsonValue::Null},
                        {u"comment"_s, QString()},
                        {u"id"_s, random.letters(16)},
                        {u"key"_s, QString::fromUtf16(name)},
                        {u"createdAt"_s, created},
                        {u"updatedAt"_s, created},
                        {u"createdBy"_s, random.letters(24)},
                        {u"updatedBy"_s, QJsonValue::Null}});
    }
    return QJsonDocument(variables).toJson(QJsonDocument::Compact);
}

/// The shape in which a project carries its newest deployments.
QJsonObject latestDocument(const Deployment& deployment, const Project& project,
                           const SandboxAccount& account) {
    return {{u"alias"_s, QJsonArray::fromStringList(deployment.alias)},
            {u"aliasAssigned"_s, deployment.ready != 0 ? QJsonValue(deployment.ready) : QJsonValue::Null},
            {u"aliasError"_s, QJsonValue::Null},
            {u"automaticAliases"_s, QJsonArray::fromStringList(deployment.alias)},
            {u"builds"_s, QJsonArray()},
            {u"createdAt"_s, deployment.created},
            {u"createdIn"_s, u"fra1"_s},
            {u"creator"_s, creatorDocument(account)},
            {u"deploymentHostname"_s, deployment.url.section(u'.', 0, 0)},
            {u"forced"_s, false},
            {u"id"_s, deployment.uid},
            {u"meta"_s, metaDocument(deployment, project, account)},
            {u"name"_s, project.name},
            {u"plan"_s, account.teamId.isEmpty() ? u"hobby"_s : u"pro"_s},
            {u"private"_s, true},
            {u"readyState"_s, deployment.state},
            {u"readySubstate"_s, deployment.state == u"READY" ? u"PROMOTED"_s : u"STAGED"_s},
            {u"target"_s, orNull(deployment.target)},
            {u"teamId"_s, orNull(account.teamId.isEmpty() ? QString() : account.teamId)},
            {u"type"_s, u"LAMBDAS"_s},
            {u"url"_s, deployment.url},
            {u"userId"_s, account.userId},
            {u"withCache"_s, true}};
}

QJsonObject linkDocument(const Project& project, const SandboxAccount& account) {
    return {{u"type"_s, u"github"_s},
            {u"org"_s, account.slug},
            {u"repo"_s, project.repository},
            {u"repoId"_s, 481516234},
            {u"gitCredentialId"_s, u"cred_5b1f0c2e7a9d"_s},
            {u"productionBranch"_s, u"main"_s},
            {u"sourceless"_s, true},
            {u"createdAt"_s, project.created},
            {u"updatedAt"_s, project.created},
            {u"deployHooks"_s, QJsonArray()}};
}

void putSettings(QJsonObject& document, const Project& project) {
    for (const QString& name : {u"buildCommand"_s, u"devCommand"_s, u"installCommand"_s, u"outputDirectory"_s,
                                u"rootDirectory"_s, u"commandForIgnoringBuildStep"_s, u"passwordProtection"_s,
                                u"publicSource"_s, u"serverlessFunctionRegion"_s, u"lastRollbackTarget"_s})
        document.insert(name, QJsonValue::Null);
    document.insert(u"framework"_s, project.framework);
    document.insert(u"nodeVersion"_s, u"20.x"_s);
    document.insert(u"directoryListing"_s, false);
    document.insert(u"autoExposeSystemEnvs"_s, true);
    document.insert(u"gitForkProtection"_s, true);
    document.insert(u"gitLFS"_s, false);
    document.insert(u"hasFloatingAliases"_s, false);
    document.insert(u"live"_s, false);
    document.insert(u"sourceFilesOutsideRootDirectory"_s, true);
    document.insert(u"skewProtectionMaxAge"_s, 43200);
    document.insert(u"gitComments"_s, QJsonObject{{u"onPullRequest"_s, true}, {u"onCommit"_s, false}});
    document.insert(u"ssoProtection"_s, QJsonObject{{u"deploymentType"_s, u"preview"_s}});
    document.insert(u"speedInsights"_s, QJsonObject{{u"id"_s, project.id.mid(4)}, {u"hasData"_s, true}});
    document.insert(u"webAnalytics"_s, QJsonObject{{u"id"_s, project.id.mid(4)}});
}

}  // namespace

QByteArray projectJson(const Project& project, const SandboxAccount& account) {
    QJsonArray latest;
    QJsonObject targets;
    for (const Deployment& deployment : project.deployments) {
        const bool isLatest = latest.size() < 2;
        const bool isLive =
            targets.isEmpty() && deployment.target == u"production" && deployment.state == u"READY";
        if (!isLatest && !isLive)
            continue;
        const QJsonObject document = latestDocument(deployment, project, account);
        if (isLatest)
            latest.append(document);
        if (isLive)
            targets.insert(deployment.target, document);
    }
    QJsonObject document{{u"accountId"_s, ownerOf(account)},
                         {u"id"_s, project.id},
                         {u"name"_s, project.name},
                         {u"createdAt"_s, project.created},
                         {u"updatedAt"_s, project.updated},
                         {u"latestDeployments"_s, latest},
                         {u"targets"_s, targets},
                         {u"link"_s, linkDocument(project, account)}};
    putSettings(document, project);
    static const QByteArray environment = environmentJson();
    QByteArray json = QJsonDocument(document).toJson(QJsonDocument::Compact);
    json.chop(1);
    return json + ",\"env\":" + environment + '}';
}

QJsonObject deploymentDocument(const Deployment& deployment, const Project& project,
                               const SandboxAccount& account) {
    QJsonObject document{{u"uid"_s, deployment.uid},
                         {u"name"_s, project.name},
                         {u"projectId"_s, project.id},
                         {u"url"_s, deployment.url},
                         {u"created"_s, deployment.created},
                         {u"createdAt"_s, deployment.created},
                         {u"source"_s, deployment.commit ? u"git"_s : u"cli"_s},
                         {u"state"_s, deployment.state},
                         {u"readyState"_s, deployment.state},
                         {u"type"_s, u"LAMBDAS"_s},
                         {u"creator"_s, creatorDocument(account)},
                         {u"inspectorUrl"_s, orNull(deployment.inspectorUrl)},
                         {u"target"_s, orNull(deployment.target)},
                         {u"aliasError"_s, QJsonValue::Null},
                         {u"isRollbackCandidate"_s, deployment.state == u"READY"}};
    if (deployment.buildingAt != 0)
        document.insert(u"buildingAt"_s, deployment.buildingAt);
    if (deployment.ready != 0) {
        document.insert(u"ready"_s, deployment.ready);
        document.insert(u"aliasAssigned"_s, deployment.ready);
    }
    if (deployment.commit)
        document.insert(u"meta"_s, metaDocument(deployment, project, account));
    if (!deployment.alias.isEmpty())
        document.insert(u"alias"_s, QJsonArray::fromStringList(deployment.alias));
    return document;
}

QJsonObject domainDocument(const Domain& domain, const Project& project) {
    QJsonObject document{
        {u"name"_s, domain.name},
        {u"apexName"_s, domain.name.section(u'.', -2)},
        {u"projectId"_s, project.id},
        {u"redirect"_s, orNull(domain.redirect)},
        {u"redirectStatusCode"_s, domain.redirect.isNull() ? QJsonValue::Null : QJsonValue(308)},
        {u"gitBranch"_s, orNull(domain.gitBranch)},
        {u"createdAt"_s, project.created},
        {u"updatedAt"_s, project.updated},
        {u"verified"_s, domain.verified}};
    if (!domain.verified) {
        document.insert(u"verification"_s,
                        QJsonArray{QJsonObject{{u"type"_s, u"TXT"_s},
                                               {u"domain"_s, u"_vercel."_s + domain.name},
                                               {u"value"_s, u"vc-domain-verify="_s + domain.name},
                                               {u"reason"_s, u"pending_domain_verification"_s}}});
    }
    return document;
}

}  // namespace tidemark::sandbox

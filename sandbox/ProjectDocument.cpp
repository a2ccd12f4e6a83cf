#include "sandbox/ProjectDocument.h"

#include <array>

#include "sandbox/Random.h"

using namespace Qt::StringLiterals;

namespace tidemark::sandbox {

namespace {

constexpr std::array variableNames = {"DATABASE_URL",      "SESSION_SECRET",   "NEXT_PUBLIC_API_BASE",
                                      "SMTP_PASSWORD",     "SEARCH_INDEX",     "FEATURE_FLAGS_URL",
                                      "IMAGE_SIGNING_KEY", "CACHE_PURGE_TOKEN"};

void writeCreator(JsonText& json, const SandboxAccount& account) {
    json.openObject("creator")
        .text("uid", account.userId)
        .text("username", account.slug)
        .text("email", account.slug + u"@mail.example"_s)
        .text("githubLogin", account.slug)
        .closeObject();
}

void writeMeta(JsonText& json, const Deployment& deployment, const Project& project,
               const SandboxAccount& account) {
    if (!deployment.commit)
        return;
    const bool personal = account.teamId.isEmpty();
    json.openObject("meta")
        .text("githubCommitAuthorName", account.name)
        .text("githubCommitOrg", account.slug)
        .text("githubCommitRepo", project.repository)
        .text("githubCommitRepoId", u"481516234"_s)
        .text("githubDeployment", u"1"_s)
        .text("githubOrg", account.slug)
        .text("githubRepo", project.repository)
        .text("githubRepoOwnerType", personal ? u"User"_s : u"Organization"_s)
        .text("githubRepoVisibility", u"private"_s)
        .text("branchAlias", deployment.alias.value(deployment.alias.size() - 1));
    const auto put = [&json](QByteArrayView name, const QString& text) {
        if (!text.isNull())
            json.text(name, text);
    };
    put("githubCommitMessage", deployment.commit->message);
    put("githubCommitRef", deployment.commit->ref);
    put("githubCommitSha", deployment.commit->sha);
    json.closeObject();
}

/// The same for every project, and rendered once: it is half of the document.
QByteArray environmentJson() {
    Random random(1);
    constexpr qint64 created = 1'690'000'000'000;
    JsonText json;
    json.openArray();
    for (const char* name : variableNames) {
        json.openObject()
            .text("type", u"encrypted"_s)
            .text("value", random.letters(160))
            .raw("target", R"(["production","preview","development"])")
            .null("configurationId")
            .text("comment", u""_s)
            .text("id", random.letters(16))
            .text("key", QString::fromLatin1(name))
            .number("createdAt", created)
            .number("updatedAt", created)
            .text("createdBy", random.letters(24))
            .null("updatedBy")
            .closeObject();
    }
    return json.closeArray().bytes();
}

/// The shape in which a project carries its newest deployments.
QByteArray latestJson(const Deployment& deployment, const Project& project, const SandboxAccount& account) {
    const bool ready = deployment.state == u"READY";
    JsonText json;
    json.openObject().texts("alias", deployment.alias);
    if (deployment.ready != 0)
        json.number("aliasAssigned", deployment.ready);
    else
        json.null("aliasAssigned");
    json.null("aliasError")
        .texts("automaticAliases", deployment.alias)
        .raw("builds", "[]")
        .number("createdAt", deployment.created)
        .text("createdIn", u"fra1"_s);
    writeCreator(json, account);
    json.text("deploymentHostname", deployment.url.section(u'.', 0, 0))
        .flag("forced", false)
        .text("id", deployment.uid);
    writeMeta(json, deployment, project, account);
    json.text("name", project.name)
        .text("plan", account.teamId.isEmpty() ? u"hobby"_s : u"pro"_s)
        .flag("private", true)
        .text("readyState", deployment.state)
        .text("readySubstate", ready ? u"PROMOTED"_s : u"STAGED"_s)
        .text("target", deployment.target)
        .text("teamId", account.teamId)
        .text("type", u"LAMBDAS"_s)
        .text("url", deployment.url)
        .text("userId", account.userId)
        .flag("withCache", true)
        .closeObject();
    return json.bytes();
}

void writeLink(JsonText& json, const Project& project, const SandboxAccount& account) {
    json.openObject("link")
        .text("type", u"github"_s)
        .text("org", account.slug)
        .text("repo", project.repository)
        .number("repoId", 481516234)
        .text("gitCredentialId", u"cred_5b1f0c2e7a9d"_s)
        .text("productionBranch", u"main"_s)
        .flag("sourceless", true)
        .number("createdAt", project.created)
        .number("updatedAt", project.created)
        .raw("deployHooks", "[]")
        .closeObject();
}

void writeSettings(JsonText& json, const Project& project) {
    for (const char* name : {"buildCommand", "devCommand", "installCommand", "outputDirectory",
                             "rootDirectory", "commandForIgnoringBuildStep", "passwordProtection",
                             "publicSource", "serverlessFunctionRegion", "lastRollbackTarget"})
        json.null(name);
    json.text("framework", project.framework)
        .text("nodeVersion", u"20.x"_s)
        .flag("directoryListing", false)
        .flag("autoExposeSystemEnvs", true)
        .flag("gitForkProtection", true)
        .flag("gitLFS", false)
        .flag("hasFloatingAliases", false)
        .flag("live", false)
        .flag("sourceFilesOutsideRootDirectory", true)
        .number("skewProtectionMaxAge", 43200)
        .raw("gitComments", R"({"onPullRequest":true,"onCommit":false})")
        .raw("ssoProtection", R"({"deploymentType":"preview"})");
    json.openObject("speedInsights").text("id", project.id.mid(4)).flag("hasData", true).closeObject();
    json.openObject("webAnalytics").text("id", project.id.mid(4)).closeObject();
}

/// The two newest deployments, and the one that serves production.
void writeLatest(JsonText& json, const Project& project, const SandboxAccount& account) {
    JsonText latest;
    latest.openArray();
    JsonText targets;
    targets.openObject();
    bool live = false;
    for (qsizetype index = 0; index < project.deployments.size() && (index < 2 || !live); ++index) {
        const Deployment& deployment = project.deployments.at(index);
        const bool serves = !live && deployment.target == u"production" && deployment.state == u"READY";
        if (index >= 2 && !serves)
            continue;
        const QByteArray document = latestJson(deployment, project, account);
        if (index < 2)
            latest.raw({}, document);
        if (serves)
            targets.raw("production", document);
        live = live || serves;
    }
    json.raw("latestDeployments", latest.closeArray().bytes()).raw("targets", targets.closeObject().bytes());
}

}  // namespace

QByteArray projectJson(const Project& project, const SandboxAccount& account) {
    static const QByteArray environment = environmentJson();
    JsonText json;
    json.openObject()
        .text("accountId", account.teamId.isEmpty() ? account.userId : account.teamId)
        .text("id", project.id)
        .text("name", project.name)
        .number("createdAt", project.created)
        .number("updatedAt", project.updated)
        .raw("env", environment);
    writeLatest(json, project, account);
    writeLink(json, project, account);
    writeSettings(json, project);
    return json.closeObject().bytes();
}

void writeDeployment(JsonText& json, const Deployment& deployment, const Project& project,
                     const SandboxAccount& account, QByteArrayView idName) {
    json.openObject()
        .text(idName, deployment.uid)
        .text("name", project.name)
        .text("projectId", project.id)
        .text("url", deployment.url.isNull() ? u""_s : deployment.url)
        .number("created", deployment.created)
        .number("createdAt", deployment.created)
        .text("source", deployment.commit ? u"git"_s : u"cli"_s)
        .text("state", deployment.state)
        .text("readyState", deployment.state)
        .text("type", u"LAMBDAS"_s);
    writeCreator(json, account);
    json.text("inspectorUrl", deployment.inspectorUrl)
        .text("target", deployment.target)
        .null("aliasError")
        .flag("isRollbackCandidate", deployment.state == u"READY");
    if (deployment.buildingAt != 0)
        json.number("buildingAt", deployment.buildingAt);
    if (deployment.ready != 0)
        json.number("ready", deployment.ready).number("aliasAssigned", deployment.ready);
    writeMeta(json, deployment, project, account);
    if (!deployment.alias.isEmpty())
        json.texts("alias", deployment.alias);
    json.closeObject();
}

void writeDomain(JsonText& json, const Domain& domain, const Project& project) {
    json.openObject()
        .text("name", domain.name)
        .text("apexName", domain.name.section(u'.', -2))
        .text("projectId", project.id)
        .text("redirect", domain.redirect)
        .text("gitBranch", domain.gitBranch)
        .number("createdAt", project.created)
        .number("updatedAt", project.updated)
        .flag("verified", domain.verified);
    if (domain.redirect.isNull())
        json.null("redirectStatusCode");
    else
        json.number("redirectStatusCode", 308);
    if (!domain.verified) {
        json.openArray("verification")
            .openObject()
            .text("type", u"TXT"_s)
            .text("domain", u"_vercel."_s + domain.name)
            .text("value", u"vc-domain-verify="_s + domain.name)
            .text("reason", u"pending_domain_verification"_s)
            .closeObject()
            .closeArray();
    }
    json.closeObject();
}

}  // namespace tidemark::sandbox

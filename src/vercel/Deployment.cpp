#include "vercel/Deployment.h"

#include <QJsonArray>

namespace tidemark {

using namespace Qt::StringLiterals;

DeploymentMeta DeploymentMeta::decode(JsonReader& reader) {
    return {.githubCommitMessage = reader.optionalString("githubCommitMessage"_L1),
            .githubCommitRef = reader.optionalString("githubCommitRef"_L1),
            .githubCommitSha = reader.optionalString("githubCommitSha"_L1)};
}

QJsonObject DeploymentMeta::encode() const {
    QJsonObject object;
    if (githubCommitMessage)
        object[u"githubCommitMessage"_s] = *githubCommitMessage;
    if (githubCommitRef)
        object[u"githubCommitRef"_s] = *githubCommitRef;
    if (githubCommitSha)
        object[u"githubCommitSha"_s] = *githubCommitSha;
    return object;
}

Deployment Deployment::decode(JsonReader& reader) {
    return {.id = reader.requiredString("uid"_L1),
            .name = reader.requiredString("name"_L1),
            .url = reader.requiredString("url"_L1),
            .created = reader.requiredInteger("created"_L1),
            .ready = reader.optionalInteger("ready"_L1),
            .state = reader.requiredString("state"_L1),
            .target = reader.optionalString("target"_L1),
            .inspectorUrl = reader.optionalString("inspectorUrl"_L1),
            .meta = reader.optionalObject("meta"_L1, DeploymentMeta::decode),
            .alias = reader.optionalStrings("alias"_L1)};
}

QJsonObject Deployment::encode() const {
    QJsonObject object{
        {u"uid"_s, id}, {u"name"_s, name}, {u"url"_s, url}, {u"created"_s, created}, {u"state"_s, state}};
    if (ready)
        object[u"ready"_s] = *ready;
    if (target)
        object[u"target"_s] = *target;
    if (inspectorUrl)
        object[u"inspectorUrl"_s] = *inspectorUrl;
    if (meta)
        object[u"meta"_s] = meta->encode();
    if (alias)
        object[u"alias"_s] = QJsonArray::fromStringList(*alias);
    return object;
}

DeploymentState Deployment::deploymentState() const {
    return deploymentStateFromRawText(state).value_or(DeploymentState::unknown);
}

std::optional<QString> Deployment::productionDomain() const {
    if (!alias || alias->isEmpty())
        return std::nullopt;
    for (const auto& name : *alias)
        if (!name.contains(defaultDeploymentSuffix))
            return name;
    return alias->first();
}

tl::expected<DeploymentsResponse, DecodingError> DeploymentsResponse::decode(const QByteArray& json) {
    return JsonReader::decodeObject(json, [](JsonReader& root) {
        return DeploymentsResponse{.deployments = root.requiredArray("deployments"_L1, Deployment::decode)};
    });
}

QJsonObject DeploymentsResponse::encode() const {
    QJsonArray array;
    for (const auto& deployment : deployments)
        array.append(deployment.encode());
    return {{u"deployments"_s, array}};
}

}  // namespace tidemark

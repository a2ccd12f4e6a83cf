#include "vercel/Deployment.h"

#include <QJsonArray>
#include <QTextBoundaryFinder>
#include <cmath>

#include "vercel/DateFormat.h"

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

double secondsSince(qint64 created, Clock::TimePoint now) {
    return static_cast<double>(now.time_since_epoch().count()) / 1000.0 -
           static_cast<double>(created) / 1000.0;
}

/// The text with its first character, which may be several code units, in lower case.
QString withLowerCaseInitial(const QString& text) {
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    const auto end = finder.toNextBoundary();
    return end <= 0 ? text : text.first(end).toLower() + text.sliced(end);
}

}  // namespace

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

QString Deployment::relativeAge(Clock::TimePoint now) const {
    const auto elapsed = static_cast<qint64>(std::trunc(secondsSince(created, now)));
    if (elapsed < 60)
        return u"%1s ago"_s.arg(elapsed);
    if (elapsed < 3600)
        return u"%1m ago"_s.arg(elapsed / 60);
    if (elapsed < 86400)
        return u"%1h ago"_s.arg(elapsed / 3600);
    return u"%1d ago"_s.arg(elapsed / 86400);
}

QString Deployment::pushedAtDescription(Clock::TimePoint now) const {
    if (secondsSince(created, now) < 60)
        return u"just now"_s;
    const Clock::TimePoint pushedAt{std::chrono::milliseconds(created)};
    if (DateFormat::isSameDay(pushedAt, now))
        return DateFormat::relative(pushedAt, now);
    return withLowerCaseInitial(DateFormat::absolute(pushedAt));
}

std::optional<QString> Deployment::buildDuration() const {
    if (deploymentState() != DeploymentState::ready || !ready || created >= *ready)
        return std::nullopt;
    // Unsigned, for the distance between two hostile times needs all 64 bits.
    const quint64 duration = static_cast<quint64>(*ready) - static_cast<quint64>(created);
    const quint64 seconds = duration / 1000;
    if (duration < 60000)
        return u"Built in %1s"_s.arg(seconds);
    const quint64 rest = seconds % 60;
    if (rest == 0)
        return u"Built in %1m"_s.arg(seconds / 60);
    return u"Built in %1m %2s"_s.arg(seconds / 60).arg(rest);
}

std::optional<QString> Deployment::productionDomain() const {
    if (!alias || alias->isEmpty())
        return std::nullopt;
    for (const auto& name : *alias) {
        if (!name.contains(defaultDeploymentSuffix))
            return name;
    }
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

#pragma once

#include <tl/expected.hpp>

#include <QByteArray>
#include <QJsonObject>
#include <QList>
#include <QString>
#include <optional>

#include "platform/base/JsonReader.h"
#include "vercel/DeploymentState.h"

namespace tidemark {

/// The domain under which the platform serves every deployment by default, with its leading dot.
inline constexpr QLatin1StringView defaultDeploymentSuffix{".vercel.app"};

/// Git metadata of a deployment.
struct DeploymentMeta {
    std::optional<QString> githubCommitMessage;
    std::optional<QString> githubCommitRef;
    std::optional<QString> githubCommitSha;

    [[nodiscard]] static DeploymentMeta decode(JsonReader& reader);
    [[nodiscard]] QJsonObject encode() const;
    bool operator==(const DeploymentMeta&) const = default;
};

/// One deployment. Times are in milliseconds since the Unix epoch.
///
/// This record and the others of the API can be encoded as well as decoded, so that stand-ins for the API
/// answer with the same records. The program itself encodes projects only.
struct Deployment {
    QString id;  ///< member "uid"
    QString name;
    QString url;  ///< its own host name, without scheme
    qint64 created = 0;
    std::optional<qint64> ready;
    QString state;  ///< as the API sends it; see deploymentState()
    std::optional<QString> target;
    std::optional<QString> inspectorUrl;
    std::optional<DeploymentMeta> meta;
    std::optional<QList<QString>> alias;

    [[nodiscard]] static Deployment decode(JsonReader& reader);
    [[nodiscard]] QJsonObject encode() const;

    /// The state; `unknown` for a text that names none.
    [[nodiscard]] DeploymentState deploymentState() const;

    /// The host to show: the first alias outside the default domain, else the first alias.
    [[nodiscard]] std::optional<QString> productionDomain() const;

    bool operator==(const Deployment&) const = default;
};

/// A project's deployments in the order received, newest first.
struct DeploymentsResponse {
    QList<Deployment> deployments;

    [[nodiscard]] static tl::expected<DeploymentsResponse, DecodingError> decode(const QByteArray& json);
    [[nodiscard]] QJsonObject encode() const;
    bool operator==(const DeploymentsResponse&) const = default;
};

}  // namespace tidemark

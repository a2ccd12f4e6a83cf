#pragma once

#include <QString>
#include <optional>

namespace tidemark {

/// The states of a deployment, as the API names them.
enum class DeploymentState : quint8 { ready, building, initializing, queued, error, canceled, unknown };

/// The state with exactly this text ("READY", …); nothing for any other text.
[[nodiscard]] std::optional<DeploymentState> deploymentStateFromRawText(QStringView text);

/// The API's text for the state; "unknown" for `unknown`, which the API does not have.
[[nodiscard]] QString rawText(DeploymentState state);

/// Whether the deployment is building, initializing or queued.
[[nodiscard]] bool isInProgress(DeploymentState state);

}  // namespace tidemark

#pragma once

#include <QString>
#include <optional>

namespace tidemark {

/// The states of a deployment, as the API names them.
enum class DeploymentState : quint8 { ready, building, initializing, queued, error, canceled, unknown };

/// The state with exactly this raw text ("READY", …); nothing for any other text.
[[nodiscard]] std::optional<DeploymentState> deploymentStateFromRawText(QStringView text);

/// The text that the API uses; "unknown" for a state of which it knows nothing.
[[nodiscard]] QString rawText(DeploymentState state);

/// Whether the deployment is on its way: building, initializing or queued.
[[nodiscard]] bool isInProgress(DeploymentState state);

}  // namespace tidemark

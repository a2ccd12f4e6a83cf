#pragma once

#include <QJsonObject>

#include "sandbox/Records.h"

namespace tidemark::sandbox {

/// A project as the project list gives it. It weighs some 8 KB like a real one, most of which no client
/// reads.
[[nodiscard]] QJsonObject projectDocument(const Project& project);

/// A deployment as the deployment list gives it; a new one carries its id under another name.
[[nodiscard]] QJsonObject deploymentDocument(const Deployment& deployment, const Project& project,
                                             const QString& idName);

[[nodiscard]] QJsonObject domainDocument(const Domain& domain);

}  // namespace tidemark::sandbox

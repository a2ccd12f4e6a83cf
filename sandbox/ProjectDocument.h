#pragma once

#include <QByteArray>
#include <QJsonObject>

#include "sandbox/Records.h"

namespace tidemark::sandbox {

/// A project as the project list gives it: some 8 KB, most of which no client of ours reads.
[[nodiscard]] QByteArray projectJson(const Project& project, const SandboxAccount& account);

/// A deployment as the deployment list gives it.
[[nodiscard]] QJsonObject deploymentDocument(const Deployment& deployment, const Project& project,
                                             const SandboxAccount& account);

[[nodiscard]] QJsonObject domainDocument(const Domain& domain, const Project& project);

}  // namespace tidemark::sandbox

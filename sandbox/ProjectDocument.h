#pragma once

#include <QByteArray>

#include "sandbox/JsonText.h"
#include "sandbox/Records.h"

namespace tidemark::sandbox {

/// A project as the project list gives it: some 8 KB, most of which no client of ours reads.
[[nodiscard]] QByteArray projectJson(const Project& project, const SandboxAccount& account);

/// A deployment as the deployment list gives it; a new one carries its id under another name.
void writeDeployment(JsonText& json, const Deployment& deployment, const Project& project,
                     const SandboxAccount& account, QByteArrayView idName = "uid");

void writeDomain(JsonText& json, const Domain& domain, const Project& project);

}  // namespace tidemark::sandbox

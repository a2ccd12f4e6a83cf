#pragma once

#include <QList>
#include <memory>
#include <vector>

#include "sandbox/Records.h"

namespace tidemark::sandbox {

/// The contents of a new world.
struct Seeds {
    QList<SandboxAccount> accounts;
    QString cloudflareToken;
    /// In the order of the project list.
    std::vector<std::unique_ptr<Project>> projects;
    QList<Zone> zones;
};

/// Accounts, projects with a past, and zones, all drawn from the options' seed and dated back from `now`.
[[nodiscard]] Seeds seedWorld(const SandboxOptions& options, qint64 now);

/// The domains of a new project: its default one, and for most a custom one and others of every kind.
[[nodiscard]] QList<Domain> seedDomains(quint64 seed, quint64 index, const Project& project,
                                        const SandboxAccount& account);

}  // namespace tidemark::sandbox

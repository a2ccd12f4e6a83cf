#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <algorithm>
#include <functional>
#include <optional>

namespace tidemark::sandbox {

/// How a sandbox is set up. Equal options and an equal clock give an equal world.
struct SandboxOptions {
    quint64 seed = 1;
    /// Accounts of the first service: the first is personal, the others are teams.
    int accounts = 2;
    /// Projects in all, shared out among the accounts; the teams get most of them.
    int projects = 12;
    /// Virtual seconds a second. At 1 a dozen projects deploy every few minutes; 0 freezes the world.
    double speed = 1;
    /// Port on the loopback interface; 0 takes any free one.
    int port = 0;
    /// Wall-clock milliseconds since the Unix epoch; the system's clock when empty. Called from the server's
    /// threads.
    std::function<qint64()> now{};
};

/// One account of the hosting service and what a client needs to speak for it.
struct SandboxAccount {
    QString name{};
    QString slug{};
    /// Empty for the personal account.
    QString teamId{};
    QString token{};

    bool operator==(const SandboxAccount&) const = default;
};

/// Git metadata of a deployment. A null text is left out of the answer.
struct Commit {
    QString message{};
    QString ref{};
    QString sha{};

    bool operator==(const Commit&) const = default;
};

/// One deployment. Times are wall-clock milliseconds; null texts and empty lists are left out or sent as
/// null, as the service does.
struct Deployment {
    QString uid{};
    /// Host name without scheme.
    QString url{};
    /// "READY", "BUILDING", … or any other text.
    QString state{};
    qint64 created = 0;
    /// 0 while it has not become ready.
    qint64 ready = 0;
    /// "production", or null for a preview.
    QString target{};
    QString inspectorUrl{};
    std::optional<Commit> commit{};
    QStringList alias{};

    bool operator==(const Deployment&) const = default;
};

struct Domain {
    QString name{};
    QString gitBranch{};
    QString redirect{};
    bool verified = true;

    bool operator==(const Domain&) const = default;
};

struct Project {
    QString id{};
    QString name{};
    /// Index into the world's accounts.
    int account = 0;
    /// Unique in a world: the project list is sorted by it, newest first, and pages are cut at it.
    qint64 updated = 0;
    /// Newest first.
    QList<Deployment> deployments{};
    QList<Domain> domains{};
    /// Never deploys by itself.
    bool quiet = false;

    /// Null for an unknown one.
    [[nodiscard]] Deployment* deployment(const QString& uid) {
        const auto found = std::ranges::find(deployments, uid, &Deployment::uid);
        return found == deployments.end() ? nullptr : &*found;
    }
};

/// How a zone's analytics answer.
enum class ZoneTraffic : quint8 {
    served,
    refused,  ///< status 200 with an "errors" member, as for a missing permission
    failing,  ///< status 500
};

/// One zone of the traffic service.
struct Zone {
    QString id{};
    QString name{};
    ZoneTraffic traffic = ZoneTraffic::served;
    qint64 dailyRequests = 10'000;

    bool operator==(const Zone&) const = default;
};

/// The fields of a push; each has a believable default.
struct NewDeployment {
    /// Empty: it starts as "QUEUED" and lives a life of its own. Given: it stays so until it is set.
    QString state{};
    /// How a life of its own ends; empty draws one.
    QString outcome{};
    QString uid{};
    bool production = true;
    std::optional<Commit> commit{};
};

}  // namespace tidemark::sandbox

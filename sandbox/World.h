#pragma once

#include <QHash>
#include <QSet>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <vector>

#include "sandbox/Records.h"
#include "sandbox/TimeLine.h"

namespace tidemark::sandbox {

/// The data of the three services, and how it changes by itself. Pure data: no server, no lock, and no clock
/// but the options'. Operations that name a project take its id or its name.
class World final {
public:
    explicit World(const SandboxOptions& options);
    World(const World&) = delete;
    World& operator=(const World&) = delete;
    ~World();

    /// Lets everything happen that was due by now.
    void advance();
    void setSpeed(double speed);
    [[nodiscard]] double speed() const { return m_timeLine.speed(); }
    [[nodiscard]] qint64 now() const { return m_now(); }
    [[nodiscard]] quint64 seed() const { return m_seed; }

    // Accounts and tokens.

    [[nodiscard]] const QList<SandboxAccount>& accounts() const { return m_accounts; }

    /// The account whose token this is; nothing for a wrong or revoked one.
    [[nodiscard]] std::optional<int> accountForToken(const QString& token) const;
    [[nodiscard]] const QString& cloudflareToken() const { return m_cloudflareToken; }
    [[nodiscard]] bool cloudflareAccepts(const QString& token) const;

    /// Refuses a token, of either service, from now on, or accepts it again.
    void setRevoked(const QString& token, bool isRevoked);

    // Projects, in the order of the project list.

    [[nodiscard]] int projectCount() const { return static_cast<int>(m_projects.size()); }
    [[nodiscard]] const Project& projectAt(int index) const;
    [[nodiscard]] const Project* project(const QString& idOrName) const;
    [[nodiscard]] const Project* projectOfDeployment(const QString& uid) const;

    /// Ids of an account's projects.
    [[nodiscard]] QStringList projectIds(int account) const;

    /// Comes first in the list from now on; gives its id.
    QString addProject(const QString& name, int account);
    bool removeProject(const QString& idOrName);

    // Deployments.

    /// A new newest deployment; gives its uid, or nothing for an unknown project.
    std::optional<QString> push(const QString& idOrName, const NewDeployment& fields = {});

    /// The newest deployment's state; ends the life of its own, if it had one. False without a deployment.
    bool setState(const QString& idOrName, const QString& state);

    /// Deploys the source of an earlier deployment again; gives the new one's uid.
    std::optional<QString> redeploy(const QString& uid);

    // The other two services.

    [[nodiscard]] const QString& statusIndicator() const { return m_statusIndicator; }
    void setStatusIndicator(const QString& indicator) { m_statusIndicator = indicator; }

    [[nodiscard]] const QList<Zone>& zones() const { return m_zones; }

private:
    struct Event {
        /// Empty for the next push somewhere.
        QString projectId;
        QString uid;
        QString state;
        QString outcome;
    };

    void scheduleNextPush(double after);
    void happen(double moment, const Event& event);
    void startLife(const Project& project, const Deployment& deployment, double moment,
                   const QString& outcome);
    void pushSomewhere(double moment);
    Deployment& prepend(Project& project, Deployment deployment);
    void enter(Project& project, Deployment& deployment, const QString& state, qint64 wallMs);
    [[nodiscard]] Project* find(const QString& idOrName) const;

    quint64 m_seed;
    std::function<qint64()> m_now;
    TimeLine m_timeLine;
    QList<SandboxAccount> m_accounts;
    QString m_cloudflareToken;
    QSet<QString> m_revoked;
    std::vector<std::unique_ptr<Project>> m_projects;
    QHash<QString, Project*> m_byId;
    QList<Zone> m_zones;
    QString m_statusIndicator = QStringLiteral("none");
    /// By virtual time, then in the order of scheduling.
    std::multimap<double, Event> m_events;
    quint64 m_pushes = 0;
    quint64 m_made = 0;
};

}  // namespace tidemark::sandbox

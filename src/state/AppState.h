#pragma once

#include <QCoroTask>
#include <QHash>
#include <QList>
#include <QObject>
#include <QSet>
#include <QString>
#include <functional>
#include <optional>

#include "cloudflare/ZoneAnalytics.h"
#include "config/AppConfiguration.h"
#include "platform/base/Clock.h"
#include "platform/base/UserDefaults.h"
#include "vercel/Deployment.h"
#include "vercel/VercelProject.h"
#include "vercel/VercelStatusClient.h"

namespace tidemark {

/// Whether a load of the analytics is needed: only if they are not fresh, or always.
enum class AnalyticsReload : quint8 { ifStale, always };

/// How many tracked projects have a newest deployment in which state.
struct DeploymentCounts {
    int tracked = 0;
    /// With a deployment, in whatever state.
    int known = 0;
    int live = 0;
    /// In progress: queued and initializing ones too.
    int building = 0;
    /// Failed deployments, not failed polls.
    int errors = 0;
    int canceled = 0;

    /// Counts one more tracked project; `deployment` is null when none is known.
    void add(const Deployment* deployment);
    /// One state for all: `error` if any failed, else `canceled`, else `building` for any in progress, else
    /// `ready` if all are, else `unknown`.
    [[nodiscard]] DeploymentState overallState() const;
};

/// The one model that the engine writes and every view reads. UI thread only. It has many operations because
/// each field can be read, assigned as a whole, changed by entry where it is a map or set, and observed by
/// itself.
///
/// Every field has a change signal of its own, emitted right after the change. Assigning a whole value that
/// equals the old one is silent; only `allProjects`, `deployments`, `recentDeployments`, `analyticsCards`,
/// `config` and `redeployHandler` tell of every assignment. Changing one entry of a map or set always tells.
///
/// `trackedIds`, `individualIds`, `productionDomains` and `productionOnly` go to the user defaults each time
/// they are assigned or changed, also when the value is the same. Pinned projects are always tracked. Sets
/// and maps may contain ids of unknown projects; they are ignored.
class AppState final : public QObject {
    Q_OBJECT

public:
    using RedeployHandler = std::function<QCoro::Task<>(QString projectId)>;
    template <typename T>
    using ByProject = QHash<QString, T>;
    using ProjectIds = QSet<QString>;

    /// Restores what the defaults hold, which must outlive the state.
    explicit AppState(UserDefaults& defaults);

    // Derived values, computed at every call.

    /// The tracked projects of `allProjects`, in that order: sorted by name.
    [[nodiscard]] QList<VercelProject> trackedProjects() const;
    /// Calls `visit` with each of them and its newest deployment, which is null when none is known.
    template <typename Visit>
    void visitTracked(Visit visit) const;
    [[nodiscard]] DeploymentCounts counts() const;
    [[nodiscard]] DeploymentState overallState() const { return counts().overallState(); }
    [[nodiscard]] int liveCount() const { return counts().live; }
    [[nodiscard]] int buildingCount() const { return counts().building; }
    [[nodiscard]] int errorCount() const { return counts().errors; }
    /// The project with this id; nothing when it is not known.
    [[nodiscard]] std::optional<VercelProject> project(const QString& projectId) const;

    // Operations.

    /// Untracking also unpins. Tracking emits `projectChosen`.
    void setTracked(const QString& projectId, bool tracked);
    /// Pins or unpins; pinning also tracks.
    void setIndividual(const QString& projectId, bool individual);
    /// Takes over one account's complete project list and tracks the projects that were never seen before.
    void integrateProjects(const QList<VercelProject>& projects, const QString& accountId);
    /// Forgets the projects of all other accounts, in the list and in its cache. Whether they are tracked and
    /// pinned is remembered. Silent if there are none.
    void keepProjectsOf(const QSet<QString>& accountIds);

    // Fields.

    [[nodiscard]] const QList<VercelProject>& allProjects() const { return m_allProjects; }
    void setAllProjects(QList<VercelProject> projects);

    /// The newest deployment of each polled project.
    [[nodiscard]] const ByProject<Deployment>& deployments() const { return m_deployments; }
    void setDeployments(const ByProject<Deployment>& deployments);
    void setDeployment(const QString& projectId, const Deployment& deployment);

    /// The last fetched list of each polled project, at most 5, newest first.
    [[nodiscard]] const ByProject<QList<Deployment>>& recentDeployments() const {
        return m_recentDeployments;
    }
    void setRecentDeployments(const ByProject<QList<Deployment>>& deployments);
    void setRecentDeployments(const QString& projectId, const QList<Deployment>& deployments);

    [[nodiscard]] VercelStatusLevel vercelPlatformStatus() const { return m_vercelPlatformStatus; }
    void setVercelPlatformStatus(VercelStatusLevel level);

    [[nodiscard]] const QList<ZoneAnalytics>& analyticsCards() const { return m_analyticsCards; }
    void setAnalyticsCards(QList<ZoneAnalytics> cards);

    [[nodiscard]] const std::optional<QString>& analyticsError() const { return m_analyticsError; }
    void setAnalyticsError(const std::optional<QString>& error);

    [[nodiscard]] bool isLoadingAnalytics() const { return m_isLoadingAnalytics; }
    void setIsLoadingAnalytics(bool isLoading);

    [[nodiscard]] std::optional<Clock::TimePoint> analyticsFetchedAt() const { return m_analyticsFetchedAt; }
    void setAnalyticsFetchedAt(std::optional<Clock::TimePoint> time);

    [[nodiscard]] bool productionOnly() const { return m_productionOnly; }
    void setProductionOnly(bool productionOnly);

    [[nodiscard]] const RedeployHandler& redeployHandler() const { return m_redeployHandler; }
    void setRedeployHandler(RedeployHandler handler);

    [[nodiscard]] const ByProject<QString>& productionDomains() const { return m_productionDomains; }
    void setProductionDomains(const ByProject<QString>& domains);
    void setProductionDomain(const QString& projectId, const QString& domain);

    /// The projects whose production domain was found in this run.
    [[nodiscard]] const ProjectIds& domainsCheckedThisSession() const { return m_domainsCheckedThisSession; }
    void setDomainsCheckedThisSession(const ProjectIds& projectIds);
    void insertDomainChecked(const QString& projectId);

    /// The last error text of each project; absent when its last poll succeeded.
    [[nodiscard]] const ByProject<QString>& errors() const { return m_errors; }
    void setErrors(const ByProject<QString>& errors);
    void setError(const QString& projectId, const QString& error);
    /// The same with the error of a failed redeploy. The popover shows it; the pinned item does not.
    void setRedeployError(const QString& projectId, const QString& error);
    void removeError(const QString& projectId);
    /// Whether the last error came from a redeploy.
    [[nodiscard]] bool hasRedeployError(const QString& projectId) const {
        return m_redeployErrors.contains(projectId);
    }

    /// The time of the last successful poll of each project.
    [[nodiscard]] const ByProject<Clock::TimePoint>& lastCheckedAt() const { return m_lastCheckedAt; }
    void setLastCheckedAt(const ByProject<Clock::TimePoint>& times);
    void setLastCheckedAt(const QString& projectId, Clock::TimePoint time);

    /// The projects whose last successful poll gave no deployment.
    [[nodiscard]] const ProjectIds& emptyProjectIds() const { return m_emptyProjectIds; }
    void setEmptyProjectIds(const ProjectIds& projectIds);
    void insertEmptyProject(const QString& projectId);
    void removeEmptyProject(const QString& projectId);

    /// Why the service refuses an account's token, by the account's id; absent while it is accepted.
    [[nodiscard]] const QHash<QString, QString>& accountErrors() const { return m_accountErrors; }
    void setAccountErrors(const QHash<QString, QString>& errors);

    [[nodiscard]] bool isLoadingProjects() const { return m_isLoadingProjects; }
    void setIsLoadingProjects(bool isLoading);

    /// The current configuration, tokens included; absent until a usable one was loaded, or one was saved.
    [[nodiscard]] const std::optional<AppConfiguration>& config() const { return m_config; }
    void setConfig(std::optional<AppConfiguration> config);

    /// The projects that are shown and polled.
    [[nodiscard]] const ProjectIds& trackedIds() const { return m_trackedIds; }
    void setTrackedIds(const ProjectIds& projectIds);

    /// The pinned projects: those with an item of their own in the panel.
    [[nodiscard]] const ProjectIds& individualIds() const { return m_individualIds; }
    void setIndividualIds(const ProjectIds& projectIds);

Q_SIGNALS:
    /// The user has tracked or pinned a project of which nothing current is known yet.
    void projectChosen(const QString& projectId);
    void allProjectsChanged();
    void deploymentsChanged();
    void recentDeploymentsChanged();
    void vercelPlatformStatusChanged();
    void analyticsCardsChanged();
    void analyticsErrorChanged();
    void isLoadingAnalyticsChanged();
    void analyticsFetchedAtChanged();
    void productionOnlyChanged();
    void redeployHandlerChanged();
    void productionDomainsChanged();
    void domainsCheckedThisSessionChanged();
    void errorsChanged();
    void lastCheckedAtChanged();
    void emptyProjectIdsChanged();
    void accountErrorsChanged();
    void isLoadingProjectsChanged();
    void configChanged();
    void trackedIdsChanged();
    void individualIdsChanged();

private:
    using Signal = void (AppState::*)();

    /// Stores the value, tells observers if it differs from the old one.
    template <typename T>
    void assign(T& field, const T& value, Signal changed);

    void persistProjects();
    void persistTrackedIds();
    void persistIndividualIds();
    void persistProductionDomains();

    UserDefaults& m_defaults;

    QList<VercelProject> m_allProjects;
    ByProject<Deployment> m_deployments;
    ByProject<QList<Deployment>> m_recentDeployments;
    VercelStatusLevel m_vercelPlatformStatus = VercelStatusLevel::unknown;
    QList<ZoneAnalytics> m_analyticsCards;
    std::optional<QString> m_analyticsError;
    bool m_isLoadingAnalytics = false;
    std::optional<Clock::TimePoint> m_analyticsFetchedAt;
    bool m_productionOnly = false;
    RedeployHandler m_redeployHandler;
    ByProject<QString> m_productionDomains;
    ProjectIds m_domainsCheckedThisSession;
    ByProject<QString> m_errors;
    ProjectIds m_redeployErrors;
    ByProject<Clock::TimePoint> m_lastCheckedAt;
    ProjectIds m_emptyProjectIds;
    QHash<QString, QString> m_accountErrors;
    bool m_isLoadingProjects = false;
    std::optional<AppConfiguration> m_config;
    ProjectIds m_trackedIds;
    ProjectIds m_individualIds;
};

template <typename Visit>
void AppState::visitTracked(Visit visit) const {
    for (const auto& project : m_allProjects) {
        if (!m_trackedIds.contains(project.id))
            continue;
        const auto deployment = m_deployments.constFind(project.id);
        visit(project, deployment == m_deployments.cend() ? nullptr : &*deployment);
    }
}

}  // namespace tidemark

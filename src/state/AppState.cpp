#include "state/AppState.h"

#include <QVariantMap>
#include <algorithm>
#include <utility>

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

const QString trackedIdsKey = u"trackedIds"_s;
const QString individualIdsKey = u"individualIds"_s;
const QString seenProjectIdsKey = u"seenProjectIds"_s;
const QString productionDomainsKey = u"productionDomains"_s;
const QString productionOnlyKey = u"productionOnly"_s;
const QString cachedProjectsKey = u"cachedProjects"_s;

QSet<QString> toSet(const QStringList& list) {
    return {list.cbegin(), list.cend()};
}

QStringList toList(const QSet<QString>& set) {
    return {set.cbegin(), set.cend()};
}

/// The stored dictionary; empty if the value is no dictionary of strings.
QHash<QString, QString> toDomains(const QVariant& value) {
    QHash<QString, QString> domains;
    const QVariantMap map = value.toMap();
    for (auto it = map.cbegin(); it != map.cend(); ++it) {
        if (it->typeId() != QMetaType::QString)
            return {};
        domains.insert(it.key(), it->toString());
    }
    return domains;
}

/// The rank of a UTF-16 unit in code point order: surrogates encode characters above U+FFFF, so they come
/// last.
int codePointRank(QChar unit) {
    return unit.isSurrogate() ? unit.unicode() + 0x10000 : unit.unicode();
}

/// Plain order by character code.
bool isBefore(const VercelProject& left, const VercelProject& right) {
    return std::ranges::lexicographical_compare(left.name, right.name, {}, codePointRank, codePointRank);
}

}  // namespace

void DeploymentCounts::add(const Deployment* deployment) {
    ++tracked;
    if (!deployment)
        return;
    ++known;
    switch (deployment->deploymentState()) {
        case DeploymentState::ready:
            ++live;
            return;
        case DeploymentState::building:
        case DeploymentState::initializing:
        case DeploymentState::queued:
            ++building;
            return;
        case DeploymentState::error:
            ++errors;
            return;
        case DeploymentState::canceled:
            ++canceled;
            return;
        case DeploymentState::unknown:
            return;
    }
}

DeploymentState DeploymentCounts::overallState() const {
    if (errors > 0)
        return DeploymentState::error;
    if (canceled > 0)
        return DeploymentState::canceled;
    if (building > 0)
        return DeploymentState::building;
    return known > 0 && live == known ? DeploymentState::ready : DeploymentState::unknown;
}

AppState::AppState(UserDefaults& defaults)
    : m_defaults(defaults),
      m_productionOnly(defaults.boolean(productionOnlyKey)),
      m_productionDomains(toDomains(defaults.value(productionDomainsKey))),
      m_trackedIds(toSet(defaults.stringArray(trackedIdsKey))),
      m_individualIds(toSet(defaults.stringArray(individualIdsKey))) {
    // Values that were just read are not written back, so that a file that cannot be read now keeps its
    // contents.
    const QByteArray cached = defaults.data(cachedProjectsKey);
    if (!cached.isEmpty())
        m_allProjects = decodeProjects(cached).value_or(QList<VercelProject>());
}

QList<VercelProject> AppState::trackedProjects() const {
    QList<VercelProject> tracked;
    std::ranges::copy_if(m_allProjects, std::back_inserter(tracked),
                         [this](const auto& project) { return m_trackedIds.contains(project.id); });
    return tracked;
}

DeploymentCounts AppState::counts() const {
    DeploymentCounts counts;
    visitTracked([&counts](const VercelProject&, const Deployment* deployment) { counts.add(deployment); });
    return counts;
}

std::optional<VercelProject> AppState::project(const QString& projectId) const {
    const auto found = std::ranges::find(m_allProjects, projectId, &VercelProject::id);
    if (found == m_allProjects.cend())
        return std::nullopt;
    return *found;
}

void AppState::setTracked(const QString& projectId, bool tracked) {
    const bool isNews = tracked && (!m_trackedIds.contains(projectId) || !m_deployments.contains(projectId));
    if (tracked)
        m_trackedIds.insert(projectId);
    else
        m_trackedIds.remove(projectId);
    persistTrackedIds();
    Q_EMIT trackedIdsChanged();
    if (!tracked)
        setIndividual(projectId, false);
    if (isNews)
        Q_EMIT projectChosen(projectId);
}

void AppState::setIndividual(const QString& projectId, bool individual) {
    if (individual)
        m_individualIds.insert(projectId);
    else
        m_individualIds.remove(projectId);
    persistIndividualIds();
    Q_EMIT individualIdsChanged();
    if (individual)
        setTracked(projectId, true);
}

void AppState::integrateProjects(const QList<VercelProject>& projects, const QString& accountId) {
    ProjectIds seen = toSet(m_defaults.stringArray(seenProjectIdsKey));
    ProjectIds tracked = m_trackedIds;
    ProjectIds incoming;
    incoming.reserve(projects.size());
    for (const auto& project : projects) {
        if (!seen.contains(project.id))
            tracked.insert(project.id);
        incoming.insert(project.id);
    }

    QList<VercelProject> merged;
    merged.reserve(m_allProjects.size() + projects.size());
    std::ranges::copy_if(m_allProjects, std::back_inserter(merged), [&](const auto& project) {
        return project.accountId != accountId && !incoming.contains(project.id);
    });
    merged += projects;
    std::ranges::stable_sort(merged, isBefore);

    setAllProjects(merged);
    setTrackedIds(tracked);
    m_defaults.setValue(seenProjectIdsKey, toList(seen.unite(incoming)));
    persistProjects();
}

void AppState::keepProjectsOf(const QSet<QString>& accountIds) {
    QList<VercelProject> kept = m_allProjects;
    kept.removeIf([&](const VercelProject& project) { return !accountIds.contains(project.accountId); });
    if (kept.size() == m_allProjects.size())
        return;
    setAllProjects(kept);
    persistProjects();
}

void AppState::persistProjects() {
    m_defaults.setValue(cachedProjectsKey, encodeProjects(m_allProjects));
}

template <typename T>
void AppState::assign(T& field, const T& value, Signal changed) {
    if (field == value)
        return;
    field = value;
    Q_EMIT(this->*changed)();
}

void AppState::setAllProjects(QList<VercelProject> projects) {
    m_allProjects = std::move(projects);
    Q_EMIT allProjectsChanged();
}

void AppState::setDeployments(const ByProject<Deployment>& deployments) {
    m_deployments = deployments;
    Q_EMIT deploymentsChanged();
}

void AppState::setDeployment(const QString& projectId, const Deployment& deployment) {
    m_deployments.insert(projectId, deployment);
    Q_EMIT deploymentsChanged();
}

void AppState::setRecentDeployments(const ByProject<QList<Deployment>>& deployments) {
    m_recentDeployments = deployments;
    Q_EMIT recentDeploymentsChanged();
}

void AppState::setRecentDeployments(const QString& projectId, const QList<Deployment>& deployments) {
    m_recentDeployments.insert(projectId, deployments);
    Q_EMIT recentDeploymentsChanged();
}

void AppState::setVercelPlatformStatus(VercelStatusLevel level) {
    assign(m_vercelPlatformStatus, level, &AppState::vercelPlatformStatusChanged);
}

void AppState::setAnalyticsCards(QList<ZoneAnalytics> cards) {
    m_analyticsCards = std::move(cards);
    Q_EMIT analyticsCardsChanged();
}

void AppState::setAnalyticsError(const std::optional<QString>& error) {
    assign(m_analyticsError, error, &AppState::analyticsErrorChanged);
}

void AppState::setIsLoadingAnalytics(bool isLoading) {
    assign(m_isLoadingAnalytics, isLoading, &AppState::isLoadingAnalyticsChanged);
}

void AppState::setAnalyticsFetchedAt(std::optional<Clock::TimePoint> time) {
    assign(m_analyticsFetchedAt, time, &AppState::analyticsFetchedAtChanged);
}

void AppState::setProductionOnly(bool productionOnly) {
    m_defaults.setValue(productionOnlyKey, productionOnly);
    assign(m_productionOnly, productionOnly, &AppState::productionOnlyChanged);
}

void AppState::setRedeployHandler(RedeployHandler handler) {
    m_redeployHandler = std::move(handler);
    Q_EMIT redeployHandlerChanged();
}

void AppState::setProductionDomains(const ByProject<QString>& domains) {
    assign(m_productionDomains, domains, &AppState::productionDomainsChanged);
    persistProductionDomains();
}

void AppState::setProductionDomain(const QString& projectId, const QString& domain) {
    m_productionDomains.insert(projectId, domain);
    persistProductionDomains();
    Q_EMIT productionDomainsChanged();
}

void AppState::setDomainsCheckedThisSession(const ProjectIds& projectIds) {
    assign(m_domainsCheckedThisSession, projectIds, &AppState::domainsCheckedThisSessionChanged);
}

void AppState::insertDomainChecked(const QString& projectId) {
    m_domainsCheckedThisSession.insert(projectId);
    Q_EMIT domainsCheckedThisSessionChanged();
}

void AppState::setErrors(const ByProject<QString>& errors) {
    assign(m_errors, errors, &AppState::errorsChanged);
}

void AppState::setError(const QString& projectId, const QString& error) {
    m_redeployErrors.remove(projectId);
    m_errors.insert(projectId, error);
    Q_EMIT errorsChanged();
}

void AppState::setRedeployError(const QString& projectId, const QString& error) {
    m_redeployErrors.insert(projectId);
    m_errors.insert(projectId, error);
    Q_EMIT errorsChanged();
}

void AppState::removeError(const QString& projectId) {
    m_redeployErrors.remove(projectId);
    m_errors.remove(projectId);
    Q_EMIT errorsChanged();
}

void AppState::setLastCheckedAt(const ByProject<Clock::TimePoint>& times) {
    assign(m_lastCheckedAt, times, &AppState::lastCheckedAtChanged);
}

void AppState::setLastCheckedAt(const QString& projectId, Clock::TimePoint time) {
    m_lastCheckedAt.insert(projectId, time);
    Q_EMIT lastCheckedAtChanged();
}

void AppState::setEmptyProjectIds(const ProjectIds& projectIds) {
    assign(m_emptyProjectIds, projectIds, &AppState::emptyProjectIdsChanged);
}

void AppState::insertEmptyProject(const QString& projectId) {
    m_emptyProjectIds.insert(projectId);
    Q_EMIT emptyProjectIdsChanged();
}

void AppState::removeEmptyProject(const QString& projectId) {
    m_emptyProjectIds.remove(projectId);
    Q_EMIT emptyProjectIdsChanged();
}

void AppState::setAccountErrors(const QHash<QString, QString>& errors) {
    assign(m_accountErrors, errors, &AppState::accountErrorsChanged);
}

void AppState::setIsLoadingProjects(bool isLoading) {
    assign(m_isLoadingProjects, isLoading, &AppState::isLoadingProjectsChanged);
}

void AppState::setConfig(std::optional<AppConfiguration> config) {
    m_config = std::move(config);
    Q_EMIT configChanged();
}

void AppState::setTrackedIds(const ProjectIds& projectIds) {
    assign(m_trackedIds, projectIds, &AppState::trackedIdsChanged);
    persistTrackedIds();
}

void AppState::setIndividualIds(const ProjectIds& projectIds) {
    assign(m_individualIds, projectIds, &AppState::individualIdsChanged);
    persistIndividualIds();
}

void AppState::persistTrackedIds() {
    m_defaults.setValue(trackedIdsKey, toList(m_trackedIds));
}

void AppState::persistIndividualIds() {
    m_defaults.setValue(individualIdsKey, toList(m_individualIds));
}

void AppState::persistProductionDomains() {
    QVariantMap map;
    for (auto it = m_productionDomains.cbegin(); it != m_productionDomains.cend(); ++it)
        map.insert(it.key(), it.value());
    m_defaults.setValue(productionDomainsKey, map);
}

}  // namespace tidemark

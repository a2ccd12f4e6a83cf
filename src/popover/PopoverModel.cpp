#include "popover/PopoverModel.h"

#include <utility>

#include "popover/RowEntries.h"
#include "presentation/StatePresentation.h"

namespace tidemark {

using namespace Qt::StringLiterals;

PopoverModel::PopoverModel(AppState& state, const Clock& clock, Workspace& workspace, const QString& version,
                           Actions actions)
    : m_state(state),
      m_clock(clock),
      m_workspace(workspace),
      m_versionText(u'v' + (version.isEmpty() ? u"dev"_s : version)),
      m_actions(std::move(actions)) {
    const auto listsChanged = [this] {
        m_areListsStale = true;
        m_refresh.schedule();
    };
    connect(&state, &AppState::allProjectsChanged, this, listsChanged);
    connect(&state, &AppState::trackedIdsChanged, this, listsChanged);
    connect(&state, &AppState::analyticsCardsChanged, this, listsChanged);
    for (const auto changed : {&AppState::deploymentsChanged, &AppState::recentDeploymentsChanged,
                               &AppState::errorsChanged, &AppState::productionDomainsChanged,
                               &AppState::emptyProjectIdsChanged, &AppState::lastCheckedAtChanged,
                               &AppState::isLoadingProjectsChanged, &AppState::individualIdsChanged,
                               &AppState::productionOnlyChanged, &AppState::vercelPlatformStatusChanged,
                               &AppState::analyticsErrorChanged, &AppState::isLoadingAnalyticsChanged})
        connect(&state, changed, this, [this] { m_refresh.schedule(); });
}

PopoverModel::~PopoverModel() {
    m_isActive = false;
    m_tasks.finish();
}

void PopoverModel::setActive(bool active) {
    if (active && !m_isActive) {
        for (const QString& projectId : std::exchange(m_expanded, {}))
            Q_EMIT rowChanged(projectId);
        foldCards();
        m_filter.clear();
        m_areListsStale = true;
        Q_EMIT filterChanged();
        refresh();
        Q_EMIT activated();
    }
    m_isActive = active;
    if (!m_isActive)
        leaveAnalytics();
}

void PopoverModel::refreshAges() {
    Q_EMIT refreshed();
}

void PopoverModel::refresh() {
    if (m_areListsStale)
        refreshLists();
    const PanelSummary summary = PanelSummary::of(m_state);
    if (summary != m_summary) {
        m_summary = summary;
        Q_EMIT summaryChanged();
    }
    Q_EMIT refreshed();
}

void PopoverModel::refreshLists() {
    m_areListsStale = false;
    m_trackedProjects.setEntries(trackedEntries(m_state));
    m_managedProjects.setEntries(managedEntries(m_state, m_filter));
    const auto cards = cardEntries(m_state);
    m_analyticsCards.setEntries(cards);
    // A card that comes back later is a new one.
    m_expandedCards.removeIf(
        [&cards](const QString& zoneId) { return !cards.contains({.rowId = zoneId, .section = {}}); });
}

QColor PopoverModel::platformDotColor() const {
    return presentation(m_state.vercelPlatformStatus()).dotColor;
}

QString PopoverModel::platformToolTip() const {
    return presentation(m_state.vercelPlatformStatus()).toolTip;
}

QString PopoverModel::productionToolTip() const {
    return productionOnly() ? u"Showing production deploys only — click to show all"_s
                            : u"Click to show production deploys only"_s;
}

bool PopoverModel::isLoadingAnalytics() const {
    return m_state.isLoadingAnalytics() && m_state.analyticsCards().isEmpty();
}

QString PopoverModel::analyticsNotice() const {
    if (m_state.isLoadingAnalytics() || !m_state.analyticsCards().isEmpty())
        return {};
    return m_state.analyticsError().value_or(
        u"No matching Cloudflare zones found.\nCheck your token in Preferences."_s);
}

void PopoverModel::setFilter(const QString& filter) {
    if (filter == m_filter)
        return;
    m_filter = filter;
    m_managedProjects.setEntries(managedEntries(m_state, m_filter));
    Q_EMIT filterChanged();
}

void PopoverModel::close() {
    Q_EMIT closeRequested();
}

void PopoverModel::openPreferences() {
    if (m_actions.onOpenPreferences)
        m_actions.onOpenPreferences();
}

void PopoverModel::openDashboard() {
    if (m_actions.onOpenDashboard)
        m_actions.onOpenDashboard();
}

void PopoverModel::openAnalyticsDashboard() {
    if (m_actions.onOpenAnalyticsDashboard)
        m_actions.onOpenAnalyticsDashboard();
}

void PopoverModel::enterManage() {
    if (m_actions.onManageProjects)
        m_actions.onManageProjects();
}

void PopoverModel::quit() {
    if (m_actions.onQuit)
        m_actions.onQuit();
}

void PopoverModel::open(const QString& address) {
    if (const auto url = webAddress(address))
        m_workspace.openURL(*url);
}

void PopoverModel::toggleProductionOnly() {
    m_state.setProductionOnly(!m_state.productionOnly());
}

void PopoverModel::toggleExpanded(const QString& projectId) {
    if (!m_expanded.remove(projectId))
        m_expanded.insert(projectId);
    Q_EMIT rowChanged(projectId);
}

void PopoverModel::foldCards() {
    for (const QString& zoneId : std::exchange(m_expandedCards, {}))
        Q_EMIT rowChanged(zoneId);
}

void PopoverModel::toggleCardExpanded(const QString& zoneId) {
    if (!m_expandedCards.remove(zoneId))
        m_expandedCards.insert(zoneId);
    Q_EMIT rowChanged(zoneId);
}

void PopoverModel::enterAnalytics() {
    foldCards();
    m_analyticsLoad = startLoadingAnalytics(AnalyticsReload::ifStale);
}

void PopoverModel::leaveAnalytics() {
    m_analyticsLoad.requestStop();
}

void PopoverModel::reloadAnalytics() {
    startLoadingAnalytics(AnalyticsReload::always);
}

TaskHandle PopoverModel::startLoadingAnalytics(AnalyticsReload reload) {
    if (!m_actions.loadAnalytics)
        return {};
    return m_tasks.start(
        [this, reload](std::stop_token stop) { return m_actions.loadAnalytics(reload, stop); });
}

void PopoverModel::redeploy(const QString& projectId) {
    if (m_redeploying.contains(projectId))
        return;
    m_redeploying.insert(projectId);
    Q_EMIT rowChanged(projectId);
    m_tasks.start([this, projectId](std::stop_token) { return awaitRedeploy(projectId); });
}

QCoro::Task<> PopoverModel::awaitRedeploy(QString projectId) {
    // A copy: the handler may be replaced while it runs.
    const AppState::RedeployHandler handler = m_state.redeployHandler();
    if (handler)
        co_await handler(projectId);
    m_redeploying.remove(projectId);
    Q_EMIT rowChanged(projectId);
}

void PopoverModel::setTracked(const QString& projectId, bool tracked) {
    m_state.setTracked(projectId, tracked);
}

void PopoverModel::setIndividual(const QString& projectId, bool individual) {
    m_state.setIndividual(projectId, individual);
}

}  // namespace tidemark

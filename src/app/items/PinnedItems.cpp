#include "app/items/PinnedItems.h"

#include <optional>
#include <utility>

namespace tidemark {

namespace {

template <typename T>
std::optional<T> find(const QHash<QString, T>& map, const QString& key) {
    const auto entry = map.constFind(key);
    return entry == map.cend() ? std::nullopt : std::optional(*entry);
}

void show(ProjectStatusItem& item, const AppState& state, const QString& projectId) {
    const auto deployment = find(state.deployments(), projectId);
    const auto error = find(state.errors(), projectId);
    const bool isNew = deployment && item.latestDeployment() != deployment;
    if (!isNew && item.lastError() == error)
        return;
    if (deployment && (isNew || !error))
        item.update(*deployment);
    if (error)
        item.setError(*error);
    else if (!deployment)
        item.clearError();
}

}  // namespace

PinnedItems::PinnedItems(const AppState& state, ProjectStatusItem::Services services, Actions actions)
    : m_state(state), m_services(services), m_actions(std::move(actions)) {
    connect(&m_state, &AppState::individualIdsChanged, this, [this] { m_sync.schedule(); });
    connect(&m_state, &AppState::allProjectsChanged, this, [this] { m_projects.schedule(); });
    for (const auto changed : {&AppState::deploymentsChanged, &AppState::errorsChanged})
        connect(&m_state, changed, this, [this] { m_update.schedule(); });
}

void PinnedItems::followProjects() {
    std::erase_if(m_items, [this](const auto& item) {
        return !m_state.individualIds().contains(item.first) || !m_state.project(item.first);
    });
    for (const auto& [projectId, item] : m_items)
        item->rename(m_state.project(projectId)->name);
}

void PinnedItems::syncIndividualItems() {
    followProjects();
    const auto& wanted = m_state.individualIds();
    // In order of their names. A pinned project that is not known yet waits for the next project list.
    for (const auto& project : m_state.allProjects())
        if (wanted.contains(project.id) && !m_items.contains(project.id))
            m_items.emplace(project.id, makeItem(project));
}

std::unique_ptr<ProjectStatusItem> PinnedItems::makeItem(const VercelProject& project) const {
    auto item = std::make_unique<ProjectStatusItem>(
        project, m_services,
        ProjectStatusItem::Actions{.onRefresh = [this, id = project.id] { m_actions.onRefresh(id); },
                                   .onPreferences = m_actions.onPreferences,
                                   .onCheckForUpdates = m_actions.onCheckForUpdates,
                                   .onQuit = m_actions.onQuit});
    show(*item, m_state, project.id);
    return item;
}

void PinnedItems::updateItems() {
    for (const auto& [projectId, item] : m_items)
        // A failed redeploy is told in the popover, where it was asked for.
        if (!m_state.hasRedeployError(projectId))
            show(*item, m_state, projectId);
}

}  // namespace tidemark

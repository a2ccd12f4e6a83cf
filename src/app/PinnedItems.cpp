#include <QCoreApplication>

#include "app/AppDelegate.h"

namespace tidemark {

void AppDelegate::syncIndividualItems() {
    const auto& wanted = m_appState.individualIds();
    std::erase_if(m_individualItems, [&wanted](const auto& item) { return !wanted.contains(item.first); });
    // In order of their names. What is not known yet waits for the next project list.
    for (const auto& project : m_appState.allProjects())
        if (wanted.contains(project.id) && !m_individualItems.contains(project.id))
            m_individualItems.emplace(project.id, makeIndividualItem(project));
}

std::unique_ptr<ProjectStatusItem> AppDelegate::makeIndividualItem(const VercelProject& project) {
    const auto& id = project.id;
    auto item = std::make_unique<ProjectStatusItem>(
        project,
        ProjectStatusItem::Services{.statusBar = m_services.statusBar,
                                    .notifications = m_services.notifications,
                                    .workspace = m_services.workspace,
                                    .clock = m_services.clock},
        ProjectStatusItem::Actions{.onRefresh = [this, id] { refresh(id); },
                                   .onPreferences = [this] { openPreferences(); },
                                   .onCheckForUpdates = checkForUpdatesAction(),
                                   .onQuit = [] { QCoreApplication::quit(); }});
    const auto deployment = m_appState.deployments().constFind(id);
    if (deployment != m_appState.deployments().cend())
        item->update(*deployment);
    const auto error = m_appState.errors().constFind(id);
    if (error != m_appState.errors().cend())
        item->setError(*error);
    return item;
}

std::function<void()> AppDelegate::checkForUpdatesAction() {
    if (!m_services.updates.isConfigured())
        return {};
    return [this] { m_services.updates.checkForUpdates(); };
}

ProjectStatusItem* AppDelegate::individualItem(const QString& projectId) const {
    const auto item = m_individualItems.find(projectId);
    return item == m_individualItems.end() ? nullptr : item->second.get();
}

void AppDelegate::observeIndividualIds() {
    // Queued: whoever changes the set is done with it by then.
    connect(&m_appState, &AppState::individualIdsChanged, this, &AppDelegate::syncIndividualItems,
            Qt::QueuedConnection);
}

void AppDelegate::refresh(const QString& projectId) {
    const auto client = clientForProject(projectId);
    if (!client)
        return;
    m_tasks.start(
        [this, projectId, client = *client](std::stop_token) { return refreshOnce(projectId, client); });
}

QCoro::Task<> AppDelegate::refreshOnce(QString projectId, VercelAPIClient client) {
    co_await fetchAndUpdate(projectId, client, m_appState.productionOnly());
}

}  // namespace tidemark

#pragma once

#include <QObject>
#include <QString>
#include <functional>
#include <map>
#include <memory>

#include "app/items/ProjectStatusItem.h"
#include "platform/base/DeferredCall.h"
#include "state/AppState.h"

namespace tidemark {

/// The panel items of the pinned projects. They follow the state: any number of changes in one turn of the
/// event loop make one update. UI thread only.
class PinnedItems final : public QObject {
    Q_OBJECT

public:
    struct Actions {
        std::function<void(const QString& projectId)> onRefresh;
        std::function<void()> onPreferences;
        /// Empty in a build without updates.
        std::function<void()> onCheckForUpdates;
        std::function<void()> onQuit;
    };

    /// All of them outlive the items.
    PinnedItems(const AppState& state, ProjectStatusItem::Services services, Actions actions);

    /// Makes and removes items so that there is one for each pinned project that is known. A project that is
    /// not known any more loses its item at once; new items wait for this call, so that they come in the
    /// order of their names.
    void syncIndividualItems();

private:
    [[nodiscard]] std::unique_ptr<ProjectStatusItem> makeItem(const VercelProject& project) const;
    /// Removes the items of projects that are not pinned or known any more, and renames the others.
    void followProjects();
    /// Hands each item the newest deployment and the last error, where it shows others.
    void updateItems();

    const AppState& m_state;
    ProjectStatusItem::Services m_services;
    Actions m_actions;
    std::map<QString, std::unique_ptr<ProjectStatusItem>> m_items;
    DeferredCall m_sync{[this] { syncIndividualItems(); }};
    DeferredCall m_projects{[this] { followProjects(); }};
    DeferredCall m_update{[this] { updateItems(); }};
};

}  // namespace tidemark

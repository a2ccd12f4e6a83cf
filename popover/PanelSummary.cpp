#include "popover/PanelSummary.h"

#include <algorithm>

#include "popover/DS.h"

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

bool isAllReady(const AppState& state, const QList<VercelProject>& tracked) {
    return !tracked.isEmpty() && std::ranges::all_of(tracked, [&state](const VercelProject& project) {
        const auto latest = state.deployments().constFind(project.id);
        return latest != state.deployments().cend() && latest->deploymentState() == DeploymentState::ready;
    });
}

void setBadge(PanelSummary& summary, const AppState& state, const QList<VercelProject>& tracked) {
    switch (state.overallState()) {
        case DeploymentState::ready:
            summary.badgeText =
                isAllReady(state, tracked) ? u"All Vercellent ✦"_s : u"%1 live"_s.arg(state.liveCount());
            summary.badgeColor = DS::live();
            return;
        case DeploymentState::building:
        case DeploymentState::initializing:
        case DeploymentState::queued:
            summary.badgeText = u"%1 building"_s.arg(state.buildingCount());
            summary.badgeColor = DS::building();
            return;
        case DeploymentState::error: {
            const int count = state.errorCount();
            summary.badgeText = count >= 2 ? u"%1 errors"_s.arg(count) : u"%1 error"_s.arg(count);
            summary.badgeColor = DS::error();
            return;
        }
        case DeploymentState::canceled:
        case DeploymentState::unknown:
            summary.badgeText = u"Loading…"_s;
            summary.badgeColor = DS::textFaint();
            return;
    }
    Q_UNREACHABLE();
}

}  // namespace

PanelSummary PanelSummary::of(const AppState& state) {
    const QList<VercelProject> tracked = state.trackedProjects();
    PanelSummary summary;
    summary.countText =
        tracked.size() == 1 ? u"1 project tracked"_s : u"%1 projects tracked"_s.arg(tracked.size());
    setBadge(summary, state, tracked);
    if (state.isLoadingProjects())
        summary.content = Content::loading;
    else
        summary.content = tracked.isEmpty() ? Content::nothingTracked : Content::list;
    const auto& errors = state.errors();
    summary.showsConnectionWarning =
        !tracked.isEmpty() && std::ranges::all_of(tracked, [&errors](const VercelProject& project) {
            return errors.contains(project.id);
        });
    summary.connectionError = errors.isEmpty() ? QString() : *errors.cbegin();
    return summary;
}

}  // namespace tidemark

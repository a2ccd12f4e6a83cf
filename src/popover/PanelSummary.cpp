#include "popover/PanelSummary.h"

#include <algorithm>

#include "presentation/StateColors.h"
#include "presentation/StatePresentation.h"
#include "presentation/StatusSummary.h"

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
    const QString counts = statusSummary(state);
    const DeploymentState overall = state.overallState();
    if (counts.isEmpty()) {
        summary.badgeText = u"Loading…"_s;
        summary.badgeColor = StateColors::textFaint();
        return;
    }
    summary.badgeText = isAllReady(state, tracked) ? u"All Vercellent ✦"_s : counts;
    summary.badgeColor = presentation(overall).wordColor;
}

}  // namespace

PanelSummary PanelSummary::of(const AppState& state) {
    const QList<VercelProject> tracked = state.trackedProjects();
    PanelSummary summary;
    summary.countText =
        tracked.size() == 1 ? u"1 project tracked"_s : u"%1 projects tracked"_s.arg(tracked.size());
    setBadge(summary, state, tracked);
    summary.isLoading = state.isLoadingProjects();
    summary.isNothingTracked = !summary.isLoading && tracked.isEmpty();
    const auto& errors = state.errors();
    summary.showsConnectionWarning =
        !tracked.isEmpty() && std::ranges::all_of(tracked, [&errors](const VercelProject& project) {
            return errors.contains(project.id);
        });
    summary.connectionError = errors.isEmpty() ? QString() : *errors.cbegin();
    return summary;
}

}  // namespace tidemark

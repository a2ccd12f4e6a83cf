#include "popover/PanelSummary.h"

#include "presentation/StateColors.h"
#include "presentation/StatePresentation.h"
#include "presentation/StatusSummary.h"

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

void setBadge(PanelSummary& summary, const DeploymentCounts& counts) {
    const QString text = statusSummary(counts);
    if (text.isEmpty()) {
        summary.badgeText = u"Loading…"_s;
        summary.badgeColor = StateColors::textFaint();
        return;
    }
    summary.badgeText = counts.live == counts.tracked ? u"All Vercellent ✦"_s : text;
    summary.badgeColor = presentation(counts.overallState()).wordColor;
}

}  // namespace

PanelSummary PanelSummary::of(const AppState& state) {
    DeploymentCounts counts;
    int unchecked = 0;
    const auto& errors = state.errors();
    state.visitTracked([&](const VercelProject& project, const Deployment* deployment) {
        counts.add(deployment);
        unchecked += errors.contains(project.id) ? 1 : 0;
    });
    PanelSummary summary;
    summary.countText =
        counts.tracked == 1 ? u"1 project tracked"_s : u"%1 projects tracked"_s.arg(counts.tracked);
    setBadge(summary, counts);
    summary.isLoading = state.isLoadingProjects();
    summary.isNothingTracked = !summary.isLoading && counts.tracked == 0;
    summary.showsConnectionWarning = counts.tracked > 0 && unchecked == counts.tracked;
    summary.connectionError = errors.isEmpty() ? QString() : *errors.cbegin();
    return summary;
}

}  // namespace tidemark

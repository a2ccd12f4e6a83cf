#include "popover/ManageRow.h"

#include "platform/base/Characters.h"
#include "presentation/DeploymentTexts.h"
#include "presentation/StateColors.h"
#include "presentation/StatePresentation.h"

namespace tidemark {

using namespace Qt::StringLiterals;

ManageRow ManageRow::of(const AppState& state, const QString& projectId, Clock::TimePoint now) {
    ManageRow row{.dotColor = StateColors::dotGray(),
                  .isTracked = state.trackedIds().contains(projectId),
                  .isPinned = state.individualIds().contains(projectId)};
    row.pinToolTip = row.isPinned ? u"Remove from menu bar"_s : u"Pin as individual menu bar icon"_s;
    if (const auto project = state.project(projectId))
        row.name = singleLine(project->name);
    const auto latest = state.deployments().constFind(projectId);
    if (latest == state.deployments().cend())
        return row;
    if (row.isTracked)
        row.dotColor = presentation(latest->deploymentState()).dotColor;
    row.deployedText = u"Deployed "_s + relativeAge(*latest, now);
    return row;
}

}  // namespace tidemark

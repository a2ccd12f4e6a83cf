#include "popover/ManageRowModel.h"

#include "platform/base/Characters.h"
#include "presentation/DeploymentTexts.h"
#include "presentation/StateColors.h"
#include "presentation/StatePresentation.h"

namespace tidemark {

using namespace Qt::StringLiterals;

ManageRowModel::Row ManageRowModel::currentRow() const {
    const AppState& state = popover()->state();
    Row row{.dotColor = StateColors::dotGray(),
            .isTracked = state.trackedIds().contains(rowId()),
            .isPinned = state.individualIds().contains(rowId())};
    if (const auto project = state.project(rowId()))
        row.name = singleLine(project->name);
    const auto latest = state.deployments().constFind(rowId());
    if (latest == state.deployments().cend())
        return row;
    if (row.isTracked)
        row.dotColor = presentation(latest->deploymentState()).dotColor;
    row.deployedText = u"Deployed "_s + relativeAge(*latest, popover()->now());
    return row;
}

void ManageRowModel::refresh() {
    const Row row = currentRow();
    if (row == m_row)
        return;
    m_row = row;
    Q_EMIT changed();
}

QString ManageRowModel::pinToolTip() const {
    return isPinned() ? u"Remove from menu bar"_s : u"Pin as individual menu bar icon"_s;
}

void ManageRowModel::toggleTracked() {
    if (popover())
        popover()->setTracked(rowId(), !m_row.isTracked);
}

void ManageRowModel::togglePinned() {
    if (popover())
        popover()->setIndividual(rowId(), !m_row.isPinned);
}

}  // namespace tidemark

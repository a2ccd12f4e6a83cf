#include "popover/ManageRowModel.h"

#include "desktop/Characters.h"
#include "popover/DS.h"
#include "popover/StatePresentation.h"

namespace tidemark {

using namespace Qt::StringLiterals;

void ManageRowModel::setPopover(PopoverModel* popover) {
    if (popover == m_popover)
        return;
    if (m_popover)
        m_popover->disconnect(this);
    m_popover = popover;
    if (m_popover)
        connect(m_popover, &PopoverModel::refreshed, this, &ManageRowModel::refresh);
    Q_EMIT popoverChanged();
    refresh();
}

void ManageRowModel::setProjectId(const QString& projectId) {
    if (projectId == m_projectId)
        return;
    m_projectId = projectId;
    Q_EMIT projectIdChanged();
    refresh();
}

ManageRowModel::Row ManageRowModel::currentRow() const {
    const AppState& state = m_popover->state();
    Row row{.dotColor = DS::dotGray(),
            .isTracked = state.trackedIds().contains(m_projectId),
            .isPinned = state.individualIds().contains(m_projectId)};
    if (const auto project = state.project(m_projectId))
        row.name = singleLine(project->name);
    const auto latest = state.deployments().constFind(m_projectId);
    if (latest == state.deployments().cend())
        return row;
    if (row.isTracked)
        row.dotColor = presentation(latest->deploymentState()).dotColor;
    row.deployedText = u"Deployed "_s + latest->relativeAge(m_popover->now());
    return row;
}

void ManageRowModel::refresh() {
    if (!m_popover)
        return;
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
    if (m_popover)
        m_popover->setTracked(m_projectId, !m_row.isTracked);
}

void ManageRowModel::togglePinned() {
    if (m_popover)
        m_popover->setIndividual(m_projectId, !m_row.isPinned);
}

}  // namespace tidemark

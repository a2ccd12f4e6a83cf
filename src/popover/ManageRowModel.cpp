#include "popover/ManageRowModel.h"

namespace tidemark {

void ManageRowModel::refresh() {
    const ManageRow row = ManageRow::of(popover()->state(), rowId(), popover()->now());
    if (row == m_row)
        return;
    m_row = row;
    Q_EMIT changed();
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

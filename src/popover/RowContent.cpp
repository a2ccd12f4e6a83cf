#include "popover/RowContent.h"

namespace tidemark {

void RowContent::setPopover(PopoverModel* popover) {
    if (popover == m_popover)
        return;
    if (m_popover)
        m_popover->disconnect(this);
    m_popover = popover;
    if (m_popover) {
        connect(m_popover, &PopoverModel::refreshed, this, [this] { refresh(); });
        connect(m_popover, &PopoverModel::rowChanged, this, [this](const QString& rowId) {
            if (rowId == m_rowId)
                Q_EMIT changed();
        });
        refresh();
    }
    Q_EMIT popoverChanged();
}

void RowContent::setRowId(const QString& rowId) {
    if (rowId == m_rowId)
        return;
    m_rowId = rowId;
    startAnew();
    Q_EMIT rowIdChanged();
    if (m_popover)
        refresh();
}

}  // namespace tidemark

#include "popover/RowListModel.h"

#include <QSet>
#include <algorithm>

namespace tidemark {

void RowListModel::setEntries(const QList<Entry>& entries) {
    if (entries == m_entries)
        return;
    removeMissing(entries);
    const QSet<Entry> present(m_entries.cbegin(), m_entries.cend());
    for (qsizetype row = 0; row < entries.size();) {
        if (row < m_entries.size() && m_entries.at(row) == entries.at(row)) {
            ++row;
        } else if (present.contains(entries.at(row))) {
            const qsizetype old = indexOf(entries.at(row), row);
            beginMoveRows({}, static_cast<int>(old), static_cast<int>(old), {}, static_cast<int>(row));
            m_entries.move(old, row);
            endMoveRows();
            ++row;
        } else {
            // New ones that stand together come together.
            qsizetype end = row + 1;
            while (end < entries.size() && !present.contains(entries.at(end)))
                ++end;
            beginInsertRows({}, static_cast<int>(row), static_cast<int>(end - 1));
            m_entries = m_entries.first(row) + entries.sliced(row, end - row) + m_entries.sliced(row);
            endInsertRows();
            row = end;
        }
    }
}

void RowListModel::removeMissing(const QList<Entry>& entries) {
    const QSet<Entry> wanted(entries.cbegin(), entries.cend());
    for (qsizetype end = m_entries.size(); end > 0;) {
        if (wanted.contains(m_entries.at(end - 1))) {
            --end;
            continue;
        }
        qsizetype begin = end - 1;
        while (begin > 0 && !wanted.contains(m_entries.at(begin - 1)))
            --begin;
        beginRemoveRows({}, static_cast<int>(begin), static_cast<int>(end - 1));
        m_entries.remove(begin, end - begin);
        endRemoveRows();
        end = begin;
    }
}

qsizetype RowListModel::indexOf(const Entry& entry, qsizetype from) const {
    const auto found = std::find(m_entries.cbegin() + from, m_entries.cend(), entry);
    return found == m_entries.cend() ? -1 : found - m_entries.cbegin();
}

int RowListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_entries.size());
}

QVariant RowListModel::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const Entry& entry = m_entries.at(index.row());
    switch (role) {
        case rowIdRole:
            return entry.rowId;
        case sectionRole:
            return entry.section;
        default:
            return {};
    }
}

QHash<int, QByteArray> RowListModel::roleNames() const {
    return {{rowIdRole, "rowId"}, {sectionRole, "section"}};
}

}  // namespace tidemark

#include "popover/ProjectRowModel.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QTimer>

namespace tidemark {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// How long a copy is told.
constexpr auto copiedTime = 1500ms;

}  // namespace

void HistoryModel::setEntries(const QList<HistoryEntry>& entries) {
    if (entries == m_entries)
        return;
    if (entries.size() == m_entries.size()) {
        m_entries = entries;
        Q_EMIT dataChanged(index(0), index(rowCount() - 1));
        return;
    }
    beginResetModel();
    m_entries = entries;
    endResetModel();
}

int HistoryModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_entries.size());
}

QVariant HistoryModel::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const HistoryEntry& entry = m_entries.at(index.row());
    switch (role) {
        case dotColorRole:
            return entry.dotColor;
        case refRole:
            return entry.ref;
        case wordRole:
            return entry.word;
        case wordColorRole:
            return entry.wordColor;
        case ageRole:
            return entry.age;
        default:
            return {};
    }
}

QHash<int, QByteArray> HistoryModel::roleNames() const {
    return {{dotColorRole, "dotColor"},
            {refRole, "ref"},
            {wordRole, "word"},
            {wordColorRole, "wordColor"},
            {ageRole, "age"}};
}

void ProjectRowModel::startAnew() {
    m_isCopied = false;
    m_row = {};
}

void ProjectRowModel::refresh() {
    const ProjectRow row = ProjectRow::of(popover()->state(), rowId(), popover()->now());
    if (row == m_row)
        return;
    m_row = row;
    m_history.setEntries(row.history);
    Q_EMIT changed();
}

QString ProjectRowModel::copyToolTip() const {
    if (m_isCopied)
        return u"Copied!"_s;
    return canCopy() ? u"Copy "_s + m_row.domainUrl : u"No URL available"_s;
}

void ProjectRowModel::toggleExpanded() {
    if (popover())
        popover()->toggleExpanded(rowId());
}

void ProjectRowModel::redeploy() {
    if (popover())
        popover()->redeploy(rowId());
}

void ProjectRowModel::copyUrl() {
    if (!canCopy())
        return;
    QGuiApplication::clipboard()->setText(m_row.domainUrl);
    m_isCopied = true;
    Q_EMIT changed();
    QTimer::singleShot(copiedTime, this, [this, copied = rowId()] {
        if (copied != rowId())
            return;
        m_isCopied = false;
        Q_EMIT changed();
    });
}

}  // namespace tidemark

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

void ProjectRowModel::setPopover(PopoverModel* popover) {
    if (popover == m_popover)
        return;
    if (m_popover)
        m_popover->disconnect(this);
    m_popover = popover;
    if (m_popover) {
        connect(m_popover, &PopoverModel::refreshed, this, &ProjectRowModel::refresh);
        connect(m_popover, &PopoverModel::projectChanged, this, [this](const QString& projectId) {
            if (projectId == m_projectId)
                Q_EMIT changed();
        });
    }
    Q_EMIT popoverChanged();
    refresh();
}

void ProjectRowModel::setProjectId(const QString& projectId) {
    if (projectId == m_projectId)
        return;
    m_projectId = projectId;
    m_isCopied = false;
    m_row = {};
    Q_EMIT projectIdChanged();
    refresh();
}

void ProjectRowModel::refresh() {
    if (!m_popover)
        return;
    const ProjectRow row = ProjectRow::of(m_popover->state(), m_projectId, m_popover->now());
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
    if (m_popover)
        m_popover->toggleExpanded(m_projectId);
}

void ProjectRowModel::redeploy() {
    if (m_popover)
        m_popover->redeploy(m_projectId);
}

void ProjectRowModel::copyUrl() {
    if (!canCopy())
        return;
    QGuiApplication::clipboard()->setText(m_row.domainUrl);
    m_isCopied = true;
    Q_EMIT changed();
    QTimer::singleShot(copiedTime, this, [this, projectId = m_projectId] {
        if (projectId != m_projectId)
            return;
        m_isCopied = false;
        Q_EMIT changed();
    });
}

}  // namespace tidemark

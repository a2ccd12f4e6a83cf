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

void ProjectRowModel::startAnew() {
    m_isCopied = false;
    m_row = {};
}

void ProjectRowModel::refresh() {
    const ProjectRow row = ProjectRow::of(popover()->state(), rowId(), popover()->now());
    if (row == m_row)
        return;
    m_row = row;
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

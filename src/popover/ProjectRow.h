#pragma once

#include <QColor>
#include <QList>
#include <QString>

#include "platform/base/Clock.h"
#include "state/AppState.h"

namespace tidemark {

/// One older deployment of a project, as a line of its history.
struct HistoryEntry {
    QColor dotColor;
    QString ref;
    QString word;
    QColor wordColor;
    QString age;

    bool operator==(const HistoryEntry&) const = default;
};

/// Everything that one line of the deployments list shows, collapsed and expanded. What there is nothing of
/// is empty.
struct ProjectRow {
    QString name;
    QColor dotColor;
    QString word;
    /// Fainter while the last check failed: the state is the last one known.
    QColor wordColor;
    QString domain;
    /// Opened and copied; empty when it is no web address, or one that hides where it leads.
    QString domainUrl;
    /// In place of a domain.
    QString placeholder;
    /// The line in words, for those who do not see it.
    QString summary;
    QString pushedAt;
    QString pushedToolTip;
    QString errorToolTip;

    QString branch;
    QString commitMessage;
    QString buildDuration;
    QString error;
    QString staleness;
    QString inspectorUrl;
    QString deploymentUrl;
    QList<HistoryEntry> history;

    bool operator==(const ProjectRow&) const = default;

    [[nodiscard]] static ProjectRow of(const AppState& state, const QString& projectId, Clock::TimePoint now);
};

}  // namespace tidemark

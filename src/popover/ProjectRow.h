#pragma once

#include <qqmlintegration.h>

#include <QColor>
#include <QList>
#include <QObject>
#include <QString>

#include "platform/base/Clock.h"
#include "state/AppState.h"

namespace tidemark {

/// One older deployment of a project, as a line of its history.
struct HistoryEntry {
    Q_GADGET
    QML_VALUE_TYPE(historyEntry)
    Q_PROPERTY(QColor dotColor MEMBER dotColor FINAL)
    Q_PROPERTY(QString ref MEMBER ref FINAL)
    Q_PROPERTY(QString word MEMBER word FINAL)
    Q_PROPERTY(QColor wordColor MEMBER wordColor FINAL)
    Q_PROPERTY(QString age MEMBER age FINAL)

public:
    QColor dotColor;
    QString ref;
    QString word;
    QColor wordColor;
    QString age;

    bool operator==(const HistoryEntry&) const = default;
};

/// The content of one row of the deployments list, collapsed and expanded. Missing parts are empty.
struct ProjectRow {
    Q_GADGET
    QML_VALUE_TYPE(projectRow)
    Q_PROPERTY(QString name MEMBER name FINAL)
    Q_PROPERTY(QColor dotColor MEMBER dotColor FINAL)
    Q_PROPERTY(QString word MEMBER word FINAL)
    Q_PROPERTY(QColor wordColor MEMBER wordColor FINAL)
    Q_PROPERTY(QString domain MEMBER domain FINAL)
    Q_PROPERTY(QString domainUrl MEMBER domainUrl FINAL)
    Q_PROPERTY(QString placeholder MEMBER placeholder FINAL)
    Q_PROPERTY(QString summary MEMBER summary FINAL)
    Q_PROPERTY(QString pushedAt MEMBER pushedAt FINAL)
    Q_PROPERTY(QString pushedToolTip MEMBER pushedToolTip FINAL)
    Q_PROPERTY(QString errorToolTip MEMBER errorToolTip FINAL)
    Q_PROPERTY(QString branch MEMBER branch FINAL)
    Q_PROPERTY(QString commitMessage MEMBER commitMessage FINAL)
    Q_PROPERTY(QString buildDuration MEMBER buildDuration FINAL)
    Q_PROPERTY(QString error MEMBER error FINAL)
    Q_PROPERTY(QString staleness MEMBER staleness FINAL)
    Q_PROPERTY(QString inspectorUrl MEMBER inspectorUrl FINAL)
    Q_PROPERTY(QString deploymentUrl MEMBER deploymentUrl FINAL)
    Q_PROPERTY(QList<tidemark::HistoryEntry> history MEMBER history FINAL)

public:
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

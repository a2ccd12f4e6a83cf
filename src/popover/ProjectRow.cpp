#include "popover/ProjectRow.h"

#include <algorithm>

#include "platform/base/Characters.h"
#include "platform/session/Workspace.h"
#include "presentation/DateFormat.h"
#include "presentation/DeploymentTexts.h"
#include "presentation/StateColors.h"
#include "presentation/StatePresentation.h"

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype longestCommitMessage = 50;
/// More than can be shown; laying out a megabyte takes seconds.
constexpr qsizetype longestError = 500;
/// Of the deployments before the newest.
constexpr qsizetype longestHistory = 4;

/// The entry of a map; nothing when there is none.
template <typename T>
const T* find(const QHash<QString, T>& map, const QString& key) {
    const auto entry = map.constFind(key);
    return entry == map.cend() ? nullptr : &*entry;
}

/// The address, if it is one that can be opened and leads where it seems to.
QString openable(const QString& address) {
    const auto url = webAddress(address);
    return url && url->userInfo().isEmpty() ? address : QString();
}

HistoryEntry historyEntry(const Deployment& deployment, Clock::TimePoint now) {
    const StatePresentation shown = presentation(deployment.deploymentState());
    const auto ref = deployment.meta ? deployment.meta->githubCommitRef : std::nullopt;
    return {.dotColor = shown.dotColor,
            .ref = singleLine(ref.value_or(deployment.target.value_or(u"—"_s))),
            .word = shown.word,
            .wordColor = shown.wordColor,
            .age = relativeAge(deployment, now)};
}

void showLatest(ProjectRow& row, const Deployment& latest, Clock::TimePoint now) {
    const Clock::TimePoint created{std::chrono::milliseconds(latest.created)};
    row.pushedAt = pushedAtDescription(latest, now);
    row.pushedToolTip = u"Pushed "_s + DateFormat::exact(created);
    if (latest.meta) {
        row.branch = singleLine(latest.meta->githubCommitRef.value_or(QString()));
        row.commitMessage =
            elided(latest.meta->githubCommitMessage.value_or(QString()), longestCommitMessage);
    }
    row.buildDuration = buildDuration(latest).value_or(QString());
    row.inspectorUrl = openable(latest.inspectorUrl.value_or(QString()));
    row.deploymentUrl = openable(u"https://"_s + latest.url);
}

/// The line in words, for those who do not see it.
QString summaryOf(const ProjectRow& row, bool isStateKnown) {
    QStringList parts{row.name, isStateKnown ? row.word : u"state unknown"_s};
    if (!row.error.isEmpty())
        parts << u"last check failed"_s;
    return parts.join(u", "_s);
}

QString placeholderFor(const AppState& state, const QString& projectId) {
    if (state.emptyProjectIds().contains(projectId))
        return u"No deployments yet"_s;
    return state.errors().contains(projectId) ? u"Last check failed"_s : u"Fetching…"_s;
}

}  // namespace

ProjectRow ProjectRow::of(const AppState& state, const QString& projectId, Clock::TimePoint now) {
    ProjectRow row;
    if (const auto project = state.project(projectId))
        row.name = singleLine(project->name);
    const Deployment* latest = find(state.deployments(), projectId);
    const StatePresentation shown =
        presentation(latest ? latest->deploymentState() : DeploymentState::unknown);
    row.dotColor = shown.dotColor;
    row.word = shown.word;
    row.wordColor = shown.wordColor;
    if (latest)
        showLatest(row, *latest, now);

    const QString* resolved = find(state.productionDomains(), projectId);
    const auto own = latest ? latest->productionDomain() : std::nullopt;
    const QString domain = resolved && !resolved->isEmpty() ? *resolved : own.value_or(QString());
    if (!domain.isEmpty()) {
        row.domain = singleLine(domain);
        row.domainUrl = openable(u"https://"_s + domain);
    } else if (!latest) {
        row.placeholder = placeholderFor(state, projectId);
    }

    if (const QString* error = find(state.errors(), projectId)) {
        row.error = elided(*error, longestError);
        row.staleness = stalenessDescription(state, projectId, now);
        row.errorToolTip = u"Last check failed: "_s + row.error + u'\n' + row.staleness;
        row.wordColor = withOpacity(row.wordColor, 0.45F);
    }
    if (const auto* recent = find(state.recentDeployments(), projectId)) {
        const qsizetype last = std::min(recent->size(), 1 + longestHistory);
        for (qsizetype i = 1; i < last; ++i)
            row.history.append(historyEntry(recent->at(i), now));
    }
    row.summary = summaryOf(row, latest != nullptr);
    return row;
}

}  // namespace tidemark

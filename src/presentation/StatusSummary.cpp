#include "presentation/StatusSummary.h"

#include <algorithm>
#include <chrono>
#include <optional>

namespace tidemark {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

QString counted(qint64 count, const QString& unit) {
    return count == 1 ? u"1 "_s + unit : u"%1 %2s"_s.arg(count).arg(unit);
}

/// In whole minutes, hours or days, at least a minute.
QString span(std::chrono::nanoseconds time) {
    if (time < 1h)
        return counted(std::max<qint64>(1, time / 1min), u"minute"_s);
    return time < 48h ? counted(time / 1h, u"hour"_s) : counted(time / 24h, u"day"_s);
}

bool hasToken(const AppState& state, const QString& accountId) {
    return state.config() && std::ranges::any_of(state.config()->accounts, [&](const auto& account) {
               return account.id == accountId && !account.apiToken.isEmpty();
           });
}

}  // namespace

QString statusSummary(const AppState& state) {
    switch (state.overallState()) {
        case DeploymentState::building:
        case DeploymentState::initializing:
        case DeploymentState::queued:
            return u"%1 building"_s.arg(state.buildingCount());
        case DeploymentState::error: {
            const int count = state.errorCount();
            return count >= 2 ? u"%1 errors"_s.arg(count) : u"%1 error"_s.arg(count);
        }
        case DeploymentState::ready:
            return u"%1 live"_s.arg(state.liveCount());
        case DeploymentState::canceled:
        case DeploymentState::unknown:
            return {};
    }
    Q_UNREACHABLE();
}

QString freshnessNote(const AppState& state, Clock::TimePoint now) {
    int total = 0;
    int succeeded = 0;
    int failed = 0;
    QString reason;
    std::optional<Clock::TimePoint> lastSuccess;
    for (const auto& project : state.allProjects()) {
        if (!state.trackedIds().contains(project.id) || !hasToken(state, project.accountId))
            continue;
        ++total;
        const auto checked = state.lastCheckedAt().constFind(project.id);
        const bool wasChecked = checked != state.lastCheckedAt().cend();
        if (wasChecked)
            lastSuccess = lastSuccess ? std::max(*lastSuccess, *checked) : *checked;
        const auto error = state.errors().constFind(project.id);
        if (error != state.errors().cend() && !state.hasRedeployError(project.id)) {
            if (++failed == 1)
                reason = *error;
        } else if (wasChecked) {
            ++succeeded;
        }
    }
    if (succeeded + failed < total)
        return u"%1 of %2 checked"_s.arg(succeeded + failed).arg(total);
    if (total == 0 || succeeded > 0)
        return {};
    if (!lastSuccess)
        return u"not checked yet: "_s + reason;
    return u"not checked for %1: %2"_s.arg(span(now - *lastSuccess), reason);
}

}  // namespace tidemark

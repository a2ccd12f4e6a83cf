#include "presentation/StatusSummary.h"

#include <QSet>
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

QSet<QString> accountsWithToken(const AppState& state) {
    QSet<QString> accountIds;
    if (state.config())
        for (const auto& account : state.config()->accounts)
            if (!account.apiToken.isEmpty())
                accountIds.insert(account.id);
    return accountIds;
}

/// How the last checks of the tracked projects ended.
class Freshness {
public:
    explicit Freshness(const AppState& state) : m_state(state), m_accountIds(accountsWithToken(state)) {}

    void add(const VercelProject& project) {
        if (!m_accountIds.contains(project.accountId))
            return;
        ++m_total;
        const auto checked = m_state.lastCheckedAt().constFind(project.id);
        const bool wasChecked = checked != m_state.lastCheckedAt().cend();
        if (wasChecked)
            m_lastSuccess = m_lastSuccess ? std::max(*m_lastSuccess, *checked) : *checked;
        const auto error = m_state.errors().constFind(project.id);
        if (error != m_state.errors().cend() && !m_state.hasRedeployError(project.id)) {
            if (++m_failed == 1)
                m_reason = *error;
        } else if (wasChecked) {
            ++m_succeeded;
        }
    }

    [[nodiscard]] QString note(Clock::TimePoint now) const {
        if (m_succeeded + m_failed < m_total)
            return u"%1 of %2 checked"_s.arg(m_succeeded + m_failed).arg(m_total);
        if (m_total == 0 || m_succeeded > 0)
            return {};
        if (!m_lastSuccess)
            return u"not checked yet: "_s + m_reason;
        return u"not checked for %1: %2"_s.arg(span(now - *m_lastSuccess), m_reason);
    }

private:
    const AppState& m_state;
    QSet<QString> m_accountIds;
    int m_total = 0;
    int m_succeeded = 0;
    int m_failed = 0;
    /// Of the first failure.
    QString m_reason;
    std::optional<Clock::TimePoint> m_lastSuccess;
};

}  // namespace

QString statusSummary(const DeploymentCounts& counts) {
    switch (counts.overallState()) {
        case DeploymentState::building:
        case DeploymentState::initializing:
        case DeploymentState::queued:
            return u"%1 building"_s.arg(counts.building);
        case DeploymentState::error:
            return counts.errors >= 2 ? u"%1 errors"_s.arg(counts.errors) : u"%1 error"_s.arg(counts.errors);
        case DeploymentState::ready:
            return u"%1 live"_s.arg(counts.live);
        case DeploymentState::canceled:
        case DeploymentState::unknown:
            return {};
    }
    Q_UNREACHABLE();
}

StatusOverview StatusOverview::of(const AppState& state, Clock::TimePoint now) {
    StatusOverview overview;
    Freshness freshness(state);
    state.visitTracked([&](const VercelProject& project, const Deployment* deployment) {
        overview.counts.add(deployment);
        freshness.add(project);
    });
    overview.freshnessNote = freshness.note(now);
    return overview;
}

}  // namespace tidemark

#pragma once

#include <QString>

#include "state/AppState.h"

namespace tidemark {

/// The state of all tracked projects as a count: "2 errors", "1 building", "12 live". Empty where the overall
/// state has no count: nothing is known yet, or a deployment was canceled.
[[nodiscard]] QString statusSummary(const DeploymentCounts& counts);

/// The state of all tracked projects, and how current it is. Made in one pass over them.
struct StatusOverview {
    DeploymentCounts counts;
    /// Says when the overall state is not current. While projects have not been checked since the start: "3
    /// of 12 checked". When the last check of each tracked project failed: "not checked for 12 minutes:
    /// Invalid API token (401)", with the first project's error. Empty otherwise. Projects whose account has
    /// no token do not count.
    QString freshnessNote;

    [[nodiscard]] static StatusOverview of(const AppState& state, Clock::TimePoint now);
};

}  // namespace tidemark

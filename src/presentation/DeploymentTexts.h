#pragma once

#include <QString>
#include <optional>

#include "platform/base/Clock.h"
#include "state/AppState.h"
#include "vercel/Deployment.h"

namespace tidemark {

/// A short age: "42s ago", "5m ago", "3h ago", "2d ago".
[[nodiscard]] QString relativeAge(const Deployment& deployment, Clock::TimePoint now);

/// When it was pushed, in words of the user's locale: "just now", "5 minutes ago", "yesterday, 7:25 PM".
[[nodiscard]] QString pushedAtDescription(const Deployment& deployment, Clock::TimePoint now);

/// "Built in 1m 5s"; only for a ready deployment.
[[nodiscard]] std::optional<QString> buildDuration(const Deployment& deployment);

/// How old the shown status of a project is, as a sentence.
[[nodiscard]] QString stalenessDescription(const AppState& state, const QString& projectId,
                                           Clock::TimePoint now);

}  // namespace tidemark

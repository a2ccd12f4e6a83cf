#pragma once

#include <QString>

#include "state/AppState.h"

namespace tidemark {

/// The state of all tracked projects as a count: "2 errors", "1 building", "12 live". Empty where the overall
/// state has no count: nothing is known yet, or a deployment was canceled.
[[nodiscard]] QString statusSummary(const AppState& state);

}  // namespace tidemark

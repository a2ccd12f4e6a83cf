#include "presentation/StatusSummary.h"

namespace tidemark {

using namespace Qt::StringLiterals;

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

}  // namespace tidemark

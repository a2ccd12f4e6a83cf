#include "vercel/DeploymentState.h"

#include <array>

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

struct RawText {
    DeploymentState state;
    QLatin1StringView text;
};

constexpr std::array rawTexts{
    RawText{DeploymentState::ready, "READY"_L1},
    RawText{DeploymentState::building, "BUILDING"_L1},
    RawText{DeploymentState::initializing, "INITIALIZING"_L1},
    RawText{DeploymentState::queued, "QUEUED"_L1},
    RawText{DeploymentState::error, "ERROR"_L1},
    RawText{DeploymentState::canceled, "CANCELED"_L1},
    RawText{DeploymentState::unknown, "unknown"_L1},
};

}  // namespace

std::optional<DeploymentState> deploymentStateFromRawText(QStringView text) {
    for (const auto& candidate : rawTexts)
        if (candidate.text == text)
            return candidate.state;
    return std::nullopt;
}

QString rawText(DeploymentState state) {
    return rawTexts.at(static_cast<std::size_t>(state)).text;
}

bool isInProgress(DeploymentState state) {
    return state == DeploymentState::building || state == DeploymentState::initializing ||
           state == DeploymentState::queued;
}

}  // namespace tidemark

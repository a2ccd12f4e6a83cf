#include "vercel/DeploymentState.h"

#include <array>

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

// Colours that hold their own on a light and on a dark panel: nobody tells us which one it is.
constexpr QRgb systemGreen = qRgb(48, 209, 88);
constexpr QRgb systemOrange = qRgb(255, 159, 10);
constexpr QRgb systemRed = qRgb(255, 69, 58);
constexpr QRgb systemGray = qRgb(152, 152, 157);
constexpr QRgb darkGray = qRgb(64, 64, 64);

struct Presentation {
    DeploymentState state;
    QLatin1StringView rawText;
    QRgb color;
    QStringView displayLabel;
};

constexpr std::array presentations{
    Presentation{DeploymentState::ready, "READY"_L1, systemGreen, u"✅ Ready"},
    Presentation{DeploymentState::building, "BUILDING"_L1, systemOrange, u"⏳ Building"},
    Presentation{DeploymentState::initializing, "INITIALIZING"_L1, systemOrange, u"⏳ Initializing"},
    Presentation{DeploymentState::queued, "QUEUED"_L1, systemOrange, u"⏳ Queued"},
    Presentation{DeploymentState::error, "ERROR"_L1, systemRed, u"❌ Failed"},
    Presentation{DeploymentState::canceled, "CANCELED"_L1, darkGray, u"🚫 Canceled"},
    Presentation{DeploymentState::unknown, "unknown"_L1, systemGray, u"⚪ Unknown"},
};

const Presentation& presentation(DeploymentState state) {
    return presentations.at(static_cast<std::size_t>(state));
}

}  // namespace

std::optional<DeploymentState> deploymentStateFromRawText(QStringView text) {
    for (const auto& candidate : presentations) {
        if (candidate.rawText == text)
            return candidate.state;
    }
    return std::nullopt;
}

QString rawText(DeploymentState state) {
    return presentation(state).rawText;
}

QColor color(DeploymentState state) {
    return QColor::fromRgb(presentation(state).color);
}

QString displayLabel(DeploymentState state) {
    return presentation(state).displayLabel.toString();
}

bool isInProgress(DeploymentState state) {
    return state == DeploymentState::building || state == DeploymentState::initializing ||
           state == DeploymentState::queued;
}

}  // namespace tidemark

#include "vercel/DeploymentState.h"

#include <array>

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

// Nobody tells us whether the panel is light or dark: mid tones hold their own on both.
constexpr QRgb systemGreen = qRgb(40, 167, 69);
constexpr QRgb systemOrange = qRgb(230, 126, 0);
constexpr QRgb systemRed = qRgb(235, 64, 52);
constexpr QRgb systemGray = qRgb(142, 142, 147);
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

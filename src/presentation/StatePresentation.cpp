#include "presentation/StatePresentation.h"

#include "presentation/StateColors.h"

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

constexpr QRgb systemGreen = qRgb(40, 167, 69);
constexpr QRgb systemOrange = qRgb(230, 126, 0);
constexpr QRgb systemRed = qRgb(235, 64, 52);
constexpr QRgb systemGray = qRgb(142, 142, 147);
constexpr QRgb darkGray = qRgb(64, 64, 64);

}  // namespace

QColor color(DeploymentState state) {
    switch (state) {
        case DeploymentState::ready:
            return QColor::fromRgb(systemGreen);
        case DeploymentState::building:
        case DeploymentState::initializing:
        case DeploymentState::queued:
            return QColor::fromRgb(systemOrange);
        case DeploymentState::error:
            return QColor::fromRgb(systemRed);
        case DeploymentState::canceled:
            return QColor::fromRgb(darkGray);
        case DeploymentState::unknown:
            return QColor::fromRgb(systemGray);
    }
    Q_UNREACHABLE();
}

QString displayLabel(DeploymentState state) {
    switch (state) {
        case DeploymentState::ready:
            return u"✅ Ready"_s;
        case DeploymentState::building:
            return u"⏳ Building"_s;
        case DeploymentState::initializing:
            return u"⏳ Initializing"_s;
        case DeploymentState::queued:
            return u"⏳ Queued"_s;
        case DeploymentState::error:
            return u"❌ Failed"_s;
        case DeploymentState::canceled:
            return u"🚫 Canceled"_s;
        case DeploymentState::unknown:
            return u"⚪ Unknown"_s;
    }
    Q_UNREACHABLE();
}

StatePresentation presentation(DeploymentState state) {
    switch (state) {
        case DeploymentState::ready:
            return {.word = u"Live"_s, .wordColor = StateColors::live(), .dotColor = StateColors::dotGreen()};
        case DeploymentState::building:
            return {.word = u"Building"_s,
                    .wordColor = StateColors::building(),
                    .dotColor = StateColors::dotAmber()};
        case DeploymentState::initializing:
            return {.word = u"Starting"_s,
                    .wordColor = StateColors::building(),
                    .dotColor = StateColors::dotAmber()};
        case DeploymentState::queued:
            return {.word = u"Queued"_s,
                    .wordColor = StateColors::building(),
                    .dotColor = StateColors::dotAmber()};
        case DeploymentState::error:
            return {.word = u"Error"_s, .wordColor = StateColors::error(), .dotColor = StateColors::dotRed()};
        case DeploymentState::canceled:
            return {.word = u"Canceled"_s,
                    .wordColor = StateColors::textDim(),
                    .dotColor = StateColors::dotGray()};
        case DeploymentState::unknown:
            return {.word = u"—"_s, .wordColor = StateColors::textDim(), .dotColor = StateColors::dotGray()};
    }
    Q_UNREACHABLE();
}

PlatformPresentation presentation(VercelStatusLevel level) {
    switch (level) {
        case VercelStatusLevel::ok:
            return {.dotColor = StateColors::dotGreen(), .toolTip = u"Vercel: All Systems Operational"_s};
        case VercelStatusLevel::minor:
            return {.dotColor = StateColors::dotAmber(), .toolTip = u"Vercel: Minor Incident"_s};
        case VercelStatusLevel::major:
            return {.dotColor = StateColors::dotRed(), .toolTip = u"Vercel: Major Outage"_s};
        case VercelStatusLevel::critical:
            return {.dotColor = StateColors::dotRed(), .toolTip = u"Vercel: Critical Outage"_s};
        case VercelStatusLevel::unknown:
            return {.dotColor = StateColors::dotGray(), .toolTip = u"Vercel: Status Unknown"_s};
    }
    Q_UNREACHABLE();
}

}  // namespace tidemark

#include "popover/StatePresentation.h"

#include "popover/DS.h"

namespace tidemark {

using namespace Qt::StringLiterals;

StatePresentation presentation(DeploymentState state) {
    switch (state) {
        case DeploymentState::ready:
            return {.word = u"Live"_s, .wordColor = DS::live(), .dotColor = DS::dotGreen()};
        case DeploymentState::building:
            return {.word = u"Building"_s, .wordColor = DS::building(), .dotColor = DS::dotAmber()};
        case DeploymentState::initializing:
            return {.word = u"Starting"_s, .wordColor = DS::building(), .dotColor = DS::dotAmber()};
        case DeploymentState::queued:
            return {.word = u"Queued"_s, .wordColor = DS::building(), .dotColor = DS::dotAmber()};
        case DeploymentState::error:
            return {.word = u"Error"_s, .wordColor = DS::error(), .dotColor = DS::dotRed()};
        case DeploymentState::canceled:
            return {.word = u"Canceled"_s, .wordColor = DS::textDim(), .dotColor = DS::dotGray()};
        case DeploymentState::unknown:
            return {.word = u"—"_s, .wordColor = DS::textDim(), .dotColor = DS::dotGray()};
    }
    Q_UNREACHABLE();
}

PlatformPresentation presentation(VercelStatusLevel level) {
    switch (level) {
        case VercelStatusLevel::ok:
            return {.dotColor = DS::dotGreen(), .toolTip = u"Vercel: All Systems Operational"_s};
        case VercelStatusLevel::minor:
            return {.dotColor = DS::dotAmber(), .toolTip = u"Vercel: Minor Incident"_s};
        case VercelStatusLevel::major:
            return {.dotColor = DS::dotRed(), .toolTip = u"Vercel: Major Outage"_s};
        case VercelStatusLevel::critical:
            return {.dotColor = DS::dotRed(), .toolTip = u"Vercel: Critical Outage"_s};
        case VercelStatusLevel::unknown:
            return {.dotColor = DS::dotGray(), .toolTip = u"Vercel: Status Unknown"_s};
    }
    Q_UNREACHABLE();
}

}  // namespace tidemark

#include "app/AppDelegate.h"
#include "app/VercelLogoShape.h"

namespace tidemark {

using namespace Qt::StringLiterals;

void AppDelegate::setupMainStatusItem() {
    m_mainStatusItem = m_services.statusBar.createStatusItem(u"tidemark"_s);
    if (m_mainStatusItem)
        m_mainStatusItem->setImage(VercelLogoShape::image(16));
    updateMainButton();
}

void AppDelegate::updateMainButton() {
    if (!m_mainStatusItem)
        return;
    const DeploymentState state = m_appState.overallState();
    AttributedTitle title{{.text = u"● "_s, .color = color(state), .pointSize = 9}};
    const QString summary = statusSummary(state);
    if (!summary.isEmpty())
        title.append({.text = u' ' + summary, .color = QColor(), .pointSize = 12});
    m_mainStatusItem->setAttributedTitle(title);
}

QString AppDelegate::statusSummary(DeploymentState state) const {
    if (m_appState.trackedProjects().isEmpty())
        return {};
    switch (state) {
        case DeploymentState::building:
        case DeploymentState::initializing:
        case DeploymentState::queued:
            return u"%1 building"_s.arg(m_appState.buildingCount());
        case DeploymentState::error: {
            const int count = m_appState.errorCount();
            return count >= 2 ? u"%1 errors"_s.arg(count) : u"%1 error"_s.arg(count);
        }
        case DeploymentState::ready:
            return u"%1 live"_s.arg(m_appState.liveCount());
        case DeploymentState::canceled:
        case DeploymentState::unknown:
            return {};
    }
    Q_UNREACHABLE();
}

}  // namespace tidemark

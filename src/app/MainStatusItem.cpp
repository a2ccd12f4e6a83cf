#include "app/AppDelegate.h"
#include "app/VercelLogoShape.h"
#include "presentation/StatePresentation.h"
#include "presentation/StatusSummary.h"

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
    const QString summary = statusSummary(m_appState);
    if (!summary.isEmpty())
        title.append({.text = u' ' + summary, .color = QColor(), .pointSize = 12});
    m_mainStatusItem->setAttributedTitle(title);
}

}  // namespace tidemark

#include "app/items/MainItem.h"

#include <utility>

#include "app/items/VercelLogoShape.h"
#include "presentation/StatePresentation.h"
#include "presentation/StatusSummary.h"

namespace tidemark {

using namespace Qt::StringLiterals;

MainItem::MainItem(const AppState& state, const Clock& clock, StatusBar& statusBar)
    : m_state(state), m_clock(clock), m_item(statusBar.createStatusItem(u"tidemark"_s)) {
    if (!m_item)
        return;
    m_item->setImage(VercelLogoShape::image(16));
    updateMainButton();
    for (const auto changed :
         {&AppState::deploymentsChanged, &AppState::allProjectsChanged, &AppState::trackedIdsChanged,
          &AppState::errorsChanged, &AppState::lastCheckedAtChanged, &AppState::configChanged})
        connect(&m_state, changed, this, [this] { m_update.schedule(); });
}

void MainItem::setAction(StatusItem::Action action) {
    if (m_item)
        m_item->setAction(std::move(action));
}

void MainItem::updateMainButton() {
    if (!m_item)
        return;
    const StatusOverview overview = StatusOverview::of(m_state, m_clock.now());
    const QString summary = statusSummary(overview.counts);
    m_item->setDot(color(overview.counts.overallState()));
    m_item->setLabel(summary);
    if (overview.freshnessNote.isEmpty())
        m_item->setToolTip({});
    else
        m_item->setToolTip(u"Tidemark — "_s + (summary.isEmpty() ? QString() : summary + u", "_s) +
                           overview.freshnessNote);
}

}  // namespace tidemark

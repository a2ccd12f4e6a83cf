#include "popover/AnalyticsCardModel.h"

#include <algorithm>

namespace tidemark {

void AnalyticsCardModel::refresh() {
    const auto& cards = popover()->state().analyticsCards();
    const auto found = std::ranges::find(
        cards, rowId(), [](const ZoneAnalytics& card) -> const QString& { return card.zone.id; });
    if (found == cards.cend() || *found == m_analytics)
        return;
    m_analytics = *found;
    m_row = AnalyticsCard::of(m_analytics);
    Q_EMIT changed();
}

bool AnalyticsCardModel::isExpanded() const {
    return popover() && popover()->isCardExpanded(rowId());
}

void AnalyticsCardModel::toggleExpanded() {
    if (popover())
        popover()->toggleCardExpanded(rowId());
}

}  // namespace tidemark

#include "popover/AnalyticsCard.h"

#include <algorithm>
#include <limits>

#include "cloudflare/CloudflareAPIClient.h"
#include "platform/base/Characters.h"

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

/// In points.
constexpr double fullHeight = 36;
constexpr double lowestBar = 3;
/// A week has seven; a hostile answer may have a million.
constexpr qsizetype mostBars = 11;

/// The sum of a figure over all days, bounded by the range of the type.
qint64 total(const QList<DayStats>& days, qint64 DayStats::* figure) {
    qint64 sum = 0;
    for (const DayStats& day : days)
        if (__builtin_add_overflow(sum, day.*figure, &sum))
            return day.*figure > 0 ? std::numeric_limits<qint64>::max() : std::numeric_limits<qint64>::min();
    return sum;
}

DayBar bar(const DayStats& day, qint64 busiest) {
    const double ratio = busiest < 1 ? 0 : static_cast<double>(day.pageViews) / static_cast<double>(busiest);
    return {.height = std::max(lowestBar, fullHeight * ratio),
            .label = singleLine(day.date.sliced(day.date.lastIndexOf(u'-') + 1)),
            .date = singleLine(day.date),
            .views = u"%1 views"_s.arg(day.pageViews)};
}

}  // namespace

AnalyticsCard AnalyticsCard::of(const ZoneAnalytics& analytics) {
    const auto& days = analytics.days;
    AnalyticsCard card{.projectName = singleLine(analytics.projectName),
                       .zoneName = singleLine(analytics.zone.name),
                       .views = u"%1 views"_s.arg(total(days, &DayStats::pageViews)),
                       .visitors = u"%1 visitors"_s.arg(total(days, &DayStats::uniques)),
                       .requests = QString::number(total(days, &DayStats::requests)),
                       .bandwidth = CloudflareAPIClient::formatBytes(total(days, &DayStats::bytes)),
                       .threats = QString::number(total(days, &DayStats::threats))};
    if (days.isEmpty())
        return card;
    const qint64 busiest = std::ranges::max_element(days, {}, &DayStats::pageViews)->pageViews;
    card.highestBar = busiest < 1 ? lowestBar : fullHeight;
    for (const DayStats& day : days.first(std::min(days.size(), mostBars)))
        card.bars.append(bar(day, busiest));
    return card;
}

}  // namespace tidemark

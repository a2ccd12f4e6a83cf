#include "popover/AnalyticsCardModel.h"

#include <algorithm>
#include <limits>

#include "cloudflare/CloudflareAPIClient.h"
#include "platform/base/Characters.h"

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

/// In points.
constexpr double highestBar = 36;
constexpr double lowestBar = 3;
/// A week is seven; a hostile answer may have a million.
constexpr qsizetype mostBars = 11;

/// The sum of a figure over all days. What is beyond the largest number is that number.
qint64 total(const QList<DayStats>& days, qint64 DayStats::* figure) {
    qint64 sum = 0;
    for (const DayStats& day : days)
        if (__builtin_add_overflow(sum, day.*figure, &sum))
            return day.*figure > 0 ? std::numeric_limits<qint64>::max() : std::numeric_limits<qint64>::min();
    return sum;
}

}  // namespace

void BarsModel::setDays(const QList<DayStats>& days) {
    if (days == m_days)
        return;
    beginResetModel();
    m_days = days;
    const auto busiest = std::ranges::max_element(m_days, {}, &DayStats::pageViews);
    m_busiest = busiest == m_days.cend() ? 0 : busiest->pageViews;
    endResetModel();
}

int BarsModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(std::min(m_days.size(), mostBars));
}

double BarsModel::highest() const {
    if (m_days.isEmpty())
        return 0;
    return m_busiest < 1 ? lowestBar : highestBar;
}

double BarsModel::height(const DayStats& day) const {
    const double ratio =
        m_busiest < 1 ? 0 : static_cast<double>(day.pageViews) / static_cast<double>(m_busiest);
    return std::max(lowestBar, highestBar * ratio);
}

QVariant BarsModel::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const DayStats& day = m_days.at(index.row());
    switch (role) {
        case heightRole:
            return height(day);
        case labelRole:
            return singleLine(day.date.sliced(day.date.lastIndexOf(u'-') + 1));
        case dateRole:
            return singleLine(day.date);
        case viewsRole:
            return u"%1 views"_s.arg(day.pageViews);
        default:
            return {};
    }
}

QHash<int, QByteArray> BarsModel::roleNames() const {
    return {{heightRole, "barHeight"}, {labelRole, "label"}, {dateRole, "date"}, {viewsRole, "views"}};
}

void AnalyticsCardModel::refresh() {
    const auto& cards = popover()->state().analyticsCards();
    const auto found = std::ranges::find(
        cards, rowId(), [](const ZoneAnalytics& card) -> const QString& { return card.zone.id; });
    if (found == cards.cend() || *found == m_card)
        return;
    m_card = *found;
    m_bars.setDays(m_card.days);
    Q_EMIT changed();
}

QString AnalyticsCardModel::projectName() const {
    return singleLine(m_card.projectName);
}

QString AnalyticsCardModel::zoneName() const {
    return singleLine(m_card.zone.name);
}

QString AnalyticsCardModel::views() const {
    return u"%1 views"_s.arg(total(m_card.days, &DayStats::pageViews));
}

QString AnalyticsCardModel::visitors() const {
    return u"%1 visitors"_s.arg(total(m_card.days, &DayStats::uniques));
}

QString AnalyticsCardModel::requests() const {
    return QString::number(total(m_card.days, &DayStats::requests));
}

QString AnalyticsCardModel::bandwidth() const {
    return CloudflareAPIClient::formatBytes(total(m_card.days, &DayStats::bytes));
}

QString AnalyticsCardModel::threats() const {
    return QString::number(total(m_card.days, &DayStats::threats));
}

bool AnalyticsCardModel::isExpanded() const {
    return popover() && popover()->isCardExpanded(rowId());
}

void AnalyticsCardModel::toggleExpanded() {
    if (popover())
        popover()->toggleCardExpanded(rowId());
}

}  // namespace tidemark

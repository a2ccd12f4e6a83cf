#pragma once

#include <qqmlintegration.h>

#include <QObject>

#include "popover/AnalyticsCard.h"
#include "popover/RowContent.h"

namespace tidemark {

/// Gives a view of the analytics list its card.
class AnalyticsCardModel : public tidemark::RowContent {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(tidemark::AnalyticsCard row READ row NOTIFY changed FINAL)
    Q_PROPERTY(bool isExpanded READ isExpanded NOTIFY changed FINAL)

public:
    using RowContent::RowContent;

    [[nodiscard]] const AnalyticsCard& row() const { return m_row; }
    [[nodiscard]] bool isExpanded() const;

    Q_INVOKABLE void toggleExpanded();

protected:
    void refresh() override;

private:
    /// The row was computed from it.
    ZoneAnalytics m_analytics;
    AnalyticsCard m_row;
};

}  // namespace tidemark

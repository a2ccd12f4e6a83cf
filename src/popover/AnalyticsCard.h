#pragma once

#include <qqmlintegration.h>

#include <QList>
#include <QObject>
#include <QString>

#include "cloudflare/ZoneAnalytics.h"

namespace tidemark {

/// One day of a card's chart.
struct DayBar {
    Q_GADGET
    QML_VALUE_TYPE(dayBar)
    Q_PROPERTY(qreal height MEMBER height FINAL)
    Q_PROPERTY(QString label MEMBER label FINAL)
    Q_PROPERTY(QString date MEMBER date FINAL)
    Q_PROPERTY(QString views MEMBER views FINAL)

public:
    /// In points.
    qreal height = 0;
    /// The day of the month.
    QString label;
    QString date;
    QString views;

    bool operator==(const DayBar&) const = default;
};

/// One card of the analytics list, collapsed and expanded: a site's traffic in words.
struct AnalyticsCard {
    Q_GADGET
    QML_VALUE_TYPE(analyticsCard)
    Q_PROPERTY(QString projectName MEMBER projectName FINAL)
    Q_PROPERTY(QString zoneName MEMBER zoneName FINAL)
    Q_PROPERTY(QString views MEMBER views FINAL)
    Q_PROPERTY(QString visitors MEMBER visitors FINAL)
    Q_PROPERTY(QString requests MEMBER requests FINAL)
    Q_PROPERTY(QString bandwidth MEMBER bandwidth FINAL)
    Q_PROPERTY(QString threats MEMBER threats FINAL)
    Q_PROPERTY(QList<tidemark::DayBar> bars MEMBER bars FINAL)
    Q_PROPERTY(qreal highestBar MEMBER highestBar FINAL)

public:
    QString projectName;
    /// The site's domain.
    QString zoneName;
    // Totals of the days.
    QString views;
    QString visitors;
    QString requests;
    QString bandwidth;
    QString threats;
    /// At most as many as the chart has room for.
    QList<DayBar> bars;
    /// In points; 0 without days.
    qreal highestBar = 0;

    bool operator==(const AnalyticsCard&) const = default;

    [[nodiscard]] static AnalyticsCard of(const ZoneAnalytics& analytics);
};

}  // namespace tidemark

#pragma once

#include <QList>
#include <QString>

namespace tidemark {

/// A domain in Cloudflare.
struct Zone {
    QString id;
    QString name;

    bool operator==(const Zone&) const = default;
};

/// One day of a zone's traffic.
struct DayStats {
    QString date;  ///< year-month-day, as Cloudflare writes it
    qint64 pageViews = 0;
    qint64 uniques = 0;  ///< unique visitors
    qint64 requests = 0;
    qint64 threats = 0;
    qint64 bytes = 0;

    bool operator==(const DayStats&) const = default;
};

/// A zone, the project that it was matched to and its days, oldest first.
struct ZoneAnalytics {
    Zone zone;
    QString projectName;
    QList<DayStats> days;

    bool operator==(const ZoneAnalytics&) const = default;
};

}  // namespace tidemark

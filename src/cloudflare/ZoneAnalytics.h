#pragma once

#include <tl/expected.hpp>

#include <QByteArray>
#include <QList>
#include <QString>

#include "platform/base/JsonReader.h"

namespace tidemark {

/// A domain that is managed by Cloudflare.
struct Zone {
    QString id;
    QString name;

    [[nodiscard]] static Zone decode(JsonReader& reader);
    bool operator==(const Zone&) const = default;
};

/// One day of a zone's traffic.
struct DayStats {
    QString date;  ///< year-month-day, as sent by Cloudflare
    qint64 pageViews = 0;
    qint64 uniques = 0;  ///< unique visitors
    qint64 requests = 0;
    qint64 threats = 0;
    qint64 bytes = 0;

    bool operator==(const DayStats&) const = default;
};

/// A zone, the name of the matching project, and the days of the zone, oldest first.
struct ZoneAnalytics {
    Zone zone;
    QString projectName;
    QList<DayStats> days;

    bool operator==(const ZoneAnalytics&) const = default;
};

/// Decodes a list of zones.
[[nodiscard]] tl::expected<QList<Zone>, DecodingError> decodeZones(const QByteArray& json);

/// Decodes the days of the first zone in an answer to the traffic query. Fails only when the answer is not
/// JSON. An answer of another shape, as for a refused query, gives no days. A day without one of its groups
/// of figures is omitted, and a figure that is missing or no 64-bit integer counts as 0.
[[nodiscard]] tl::expected<QList<DayStats>, DecodingError> decodeDays(const QByteArray& json);

}  // namespace tidemark

#pragma once

#include <tl/expected.hpp>

#include <QByteArray>
#include <QList>
#include <QString>

#include "platform/base/JsonReader.h"

namespace tidemark {

/// A domain in Cloudflare.
struct Zone {
    QString id;
    QString name;

    [[nodiscard]] static Zone decode(JsonReader& reader);
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

/// The zones of a zones list, in its order.
[[nodiscard]] tl::expected<QList<Zone>, DecodingError> decodeZones(const QByteArray& json);

/// The days of the first zone in an answer to the traffic query, in its order. What is no JSON object or
/// array fails. A query that was refused answers in another shape, which gives no days; a day that lacks a
/// group of its figures is left out, and a figure that is missing or no 64-bit integer counts as 0.
[[nodiscard]] tl::expected<QList<DayStats>, DecodingError> decodeDays(const QByteArray& json);

}  // namespace tidemark

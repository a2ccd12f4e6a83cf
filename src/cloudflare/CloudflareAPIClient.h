#pragma once

#include <QCoroTask>
#include <QList>
#include <QString>
#include <QUrl>
#include <optional>
#include <stop_token>

#include "cloudflare/CloudflareError.h"
#include "cloudflare/ZoneAnalytics.h"
#include "platform/base/Clock.h"
#include "vercel/VercelProject.h"

namespace tidemark {

/// Client of the Cloudflare API for one token. It is a value, and each task works on a copy, so a client may
/// be destroyed during its requests. The HTTP client and the clock must outlive them.
class CloudflareAPIClient {
public:
    CloudflareAPIClient(HttpClient& http, const Clock& clock, QUrl baseURL, QString apiToken);

    /// The first 50 zones that the token may read, in Cloudflare's order.
    [[nodiscard]] QCoro::Task<CloudflareResult<QList<Zone>>> fetchZones(std::stop_token stop) const;

    /// The last `days` days of a zone up to today, oldest first. Cloudflare counts days in UTC, so there may
    /// be one more.
    [[nodiscard]] QCoro::Task<CloudflareResult<QList<DayStats>>> fetchAnalytics(QString zoneId, int days,
                                                                                std::stop_token stop) const;

    /// The first project with the name of the zone or of its first label, ignoring case.
    [[nodiscard]] static std::optional<VercelProject> matchProject(const Zone& zone,
                                                                   const QList<VercelProject>& projects);

    /// In units of powers of 1024, with a decimal point in every locale: "512 B", "1.5 KB", "1.25 GB".
    [[nodiscard]] static QString formatBytes(qint64 bytes);

    /// The UTC date, as year-month-day, of the time at which the local day that was `days` days ago began.
    /// Uses the machine's current time zone.
    [[nodiscard]] static QString startDate(Clock::TimePoint now, int days);

private:
    [[nodiscard]] HttpRequest request(const QString& path) const;
    [[nodiscard]] HttpRequest analyticsRequest(const QString& zoneId, int days) const;

    HttpClient* m_http;
    const Clock* m_clock;
    QUrl m_baseURL;
    QString m_apiToken;
};

}  // namespace tidemark

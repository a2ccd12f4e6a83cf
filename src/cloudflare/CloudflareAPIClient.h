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

/// Speaks to the Cloudflare API with one token. A plain value without state: a task works on a copy of its
/// own, so a client may be dropped while its requests run. The HTTP client and the clock must outlive them.
class CloudflareAPIClient {
public:
    CloudflareAPIClient(HttpClient& http, const Clock& clock, QUrl baseURL, QString apiToken);

    /// The zones that the token may read, in Cloudflare's order. One page: no more than 50.
    [[nodiscard]] QCoro::Task<CloudflareResult<QList<Zone>>> fetchZones(std::stop_token stop) const;

    /// A zone's last days up to today, oldest first. Cloudflare's days are those of UTC, so there may be one
    /// more than asked for.
    [[nodiscard]] QCoro::Task<CloudflareResult<QList<DayStats>>> fetchAnalytics(QString zoneId, int days,
                                                                                std::stop_token stop) const;

    /// The first project that is called like the zone, or like its first label; case does not matter.
    [[nodiscard]] static std::optional<VercelProject> matchProject(const Zone& zone,
                                                                   const QList<VercelProject>& projects);

    /// In powers of 1024 and with a decimal point in every locale: "512 B", "1.5 KB", "1.25 GB".
    [[nodiscard]] static QString formatBytes(qint64 bytes);

    /// The day in UTC, as year-month-day, in which the user's day that was `days` days ago began. The user's
    /// zone is the one that the machine is in now.
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

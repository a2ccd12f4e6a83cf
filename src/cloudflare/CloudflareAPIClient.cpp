#include "cloudflare/CloudflareAPIClient.h"

#include <QDateTime>
#include <QJsonDocument>
#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

#include "platform/http/SuccessfulBody.h"

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

QString analyticsQuery(const QString& zoneId, int days, const QString& startDate) {
    return u"{\n  viewer {\n    zones(filter: { zoneTag: \""_s + zoneId +
           u"\" }) {\n      httpRequests1dGroups(\n        limit: "_s + QString::number(days + 1) +
           u"\n        filter: { date_gt: \""_s + startDate +
           u"\" }\n        orderBy: [date_ASC]\n      ) {\n        dimensions { date }\n"
           "        sum { requests pageViews bytes threats }\n        uniq { uniques }\n      }\n    }\n"
           "  }\n}"_s;
}

/// Rounds ties to even, as printf does, but ignores the locale. Qt's own formatting rounds ties up.
QString fixed(double value, int decimals) {
    std::array<char, 32> text{};
    const auto end = std::to_chars(text.begin(), text.end(), value, std::chars_format::fixed, decimals).ptr;
    return QString::fromLatin1(text.data(), end - text.data());
}

}  // namespace

CloudflareAPIClient::CloudflareAPIClient(HttpClient& http, const Clock& clock, QUrl baseURL, QString apiToken)
    : m_http(&http), m_clock(&clock), m_baseURL(std::move(baseURL)), m_apiToken(std::move(apiToken)) {}

HttpRequest CloudflareAPIClient::request(const QString& path) const {
    QUrl url = m_baseURL;
    url.setPath(path);
    return {.url = url, .headers = {{"Authorization", "Bearer " + m_apiToken.toUtf8()}}};
}

HttpRequest CloudflareAPIClient::analyticsRequest(const QString& zoneId, int days) const {
    HttpRequest post = request(u"/client/v4/graphql"_s);
    post.method = HttpMethod::post;
    post.headers.emplaceBack("Content-Type", "application/json");
    const QJsonObject body{{u"query"_s, analyticsQuery(zoneId, days, startDate(m_clock->now(), days))}};
    post.body = QJsonDocument(body).toJson(QJsonDocument::Compact);
    return post;
}

// Each public operation starts a coroutine that owns a copy of the client.

QCoro::Task<CloudflareResult<QList<Zone>>> CloudflareAPIClient::fetchZones(std::stop_token stop) const {
    static constexpr auto run = [](CloudflareAPIClient client,
                                   std::stop_token stopToken) -> QCoro::Task<CloudflareResult<QList<Zone>>> {
        HttpRequest request = client.request(u"/client/v4/zones"_s);
        request.url.setQuery(u"per_page=50"_s);
        HttpResult result = co_await client.m_http->send(std::move(request), std::move(stopToken));
        co_return successfulBody<CloudflareFailure>(std::move(result), {200})
            .and_then([](const QByteArray& body) {
                return decodeZones(body).map_error(
                    [](const DecodingError&) { return CloudflareFailure(CloudflareError{}); });
            });
    };
    return run(*this, std::move(stop));
}

QCoro::Task<CloudflareResult<QList<DayStats>>> CloudflareAPIClient::fetchAnalytics(
    QString zoneId, int days, std::stop_token stop) const {
    static constexpr auto run =
        [](CloudflareAPIClient client, QString id, int count,
           std::stop_token stopToken) -> QCoro::Task<CloudflareResult<QList<DayStats>>> {
        HttpRequest request = client.analyticsRequest(id, count);
        HttpResult result = co_await client.m_http->send(std::move(request), std::move(stopToken));
        co_return successfulBody<CloudflareFailure>(std::move(result), {200})
            .and_then([](const QByteArray& body) {
                return decodeDays(body).map_error(
                    [](DecodingError error) { return CloudflareFailure(std::move(error)); });
            });
    };
    return run(*this, std::move(zoneId), days, std::move(stop));
}

std::optional<VercelProject> CloudflareAPIClient::matchProject(const Zone& zone,
                                                               const QList<VercelProject>& projects) {
    const QString full = zone.name.toLower();
    const QString base = full.section(u'.', 0, 0);
    const auto match = std::ranges::find_if(projects, [&](const VercelProject& project) {
        const QString name = project.name.toLower();
        return name == base || name == full;
    });
    return match == projects.end() ? std::nullopt : std::optional(*match);
}

QString CloudflareAPIClient::formatBytes(qint64 bytes) {
    constexpr qint64 kilo = 1024;
    constexpr qint64 mega = kilo * 1024;
    constexpr qint64 giga = mega * 1024;
    const auto in = [bytes](qint64 unit) { return static_cast<double>(bytes) / static_cast<double>(unit); };
    if (bytes < kilo)
        return QString::number(bytes) + " B"_L1;
    if (bytes < mega)
        return fixed(in(kilo), 1) + " KB"_L1;
    if (bytes < giga)
        return fixed(in(mega), 1) + " MB"_L1;
    return fixed(in(giga), 2) + " GB"_L1;
}

QString CloudflareAPIClient::startDate(Clock::TimePoint now, int days) {
    const QDateTime local = QDateTime::fromMSecsSinceEpoch(now.time_since_epoch().count());
    // Calendar days, not multiples of 24 hours. Where clocks go forward at midnight, a day begins at one
    // o'clock.
    const QDateTime start = local.date().startOfDay().addDays(-days);
    return start.toUTC().date().toString(Qt::ISODate);
}

}  // namespace tidemark

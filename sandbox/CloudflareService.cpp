#include "sandbox/CloudflareService.h"

#include <QDateTime>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <algorithm>

#include "sandbox/Random.h"

namespace tidemark::sandbox {

namespace {

using namespace Qt::StringLiterals;

constexpr quint64 trafficDraws = 20;

/// How far back daily figures are kept.
constexpr int keptDays = 90;

QJsonArray oneError(int code, const QString& message) {
    return {QJsonObject{{u"code"_s, code}, {u"message"_s, message}}};
}

Reply refusal(int status, int code, const QString& message) {
    return Reply::json(
        {{u"success"_s, false}, {u"errors"_s, oneError(code, message)}, {u"result"_s, QJsonValue::Null}},
        status);
}

/// The query interface reports its own errors with status 200.
Reply queryError(const QString& message) {
    return Reply::json({{u"data"_s, QJsonValue::Null}, {u"errors"_s, oneError(10000, message)}});
}

QString captured(const QString& text, const QString& pattern) {
    return QRegularExpression(pattern).match(text).captured(1);
}

QDate today(const World& world) {
    return QDateTime::fromMSecsSinceEpoch(world.now()).toUTC().date();
}

/// 0 at midnight UTC, 1 at the next one.
double dayElapsed(const World& world) {
    return QDateTime::fromMSecsSinceEpoch(world.now()).toUTC().time().msecsSinceStartOfDay() / 86'400'000.0;
}

}  // namespace

bool CloudflareService::serves(const QString& path) {
    return path.startsWith("/client/v4/"_L1);
}

Reply CloudflareService::answer(const Request& request) const {
    if (request.authorization.isEmpty())
        return refusal(401, 10000, u"Authentication error"_s);
    if (!m_world.cloudflareAccepts(request.bearerToken()))
        return refusal(403, 9109, u"Invalid access token"_s);
    if (request.method == "GET" && request.path == u"/client/v4/zones")
        return listZones(request);
    if (request.method == "POST" && request.path == u"/client/v4/graphql")
        return query(request);
    return refusal(404, 7003, u"No route for that URI"_s);
}

Reply CloudflareService::listZones(const Request& request) const {
    const QList<Zone>& zones = m_world.zones();
    const int asked = request.queryValue("per_page"_L1).toInt();
    const int perPage = asked > 0 ? std::min(asked, 50) : 20;
    const int page = std::max(request.queryValue("page"_L1).toInt(), 1);
    QJsonArray result;
    for (const Zone& zone : zones.mid(static_cast<qsizetype>(page - 1) * perPage, perPage))
        result.append(QJsonObject{{u"id"_s, zone.id}, {u"name"_s, zone.name}});
    const QJsonObject info{{u"page"_s, page},
                           {u"total_pages"_s, (zones.size() + perPage - 1) / perPage},
                           {u"total_count"_s, zones.size()}};
    return Reply::json(
        {{u"result"_s, result}, {u"result_info"_s, info}, {u"success"_s, true}, {u"errors"_s, QJsonArray()}});
}

Reply CloudflareService::query(const Request& request) const {
    if (!request.contentType.startsWith("application/json"))
        return refusal(415, 10001, u"The body must be application/json"_s);
    const QJsonDocument body = QJsonDocument::fromJson(request.body);
    const QString text = body.object().value(u"query"_s).toString();
    if (text.isEmpty())
        return refusal(400, 10002, u"The body holds no query"_s);
    const QString tag = captured(text, uR"re(zoneTag:\s*"([^"]*)")re"_s);
    const int limit = captured(text, uR"(limit:\s*(\d+))"_s).toInt();
    const QDate after = QDate::fromString(captured(text, uR"re(date_gt:\s*"([^"]*)")re"_s), Qt::ISODate);
    if (!text.contains("httpRequests1dGroups"_L1) || limit < 1 || !after.isValid())
        return queryError(u"The query cannot be parsed"_s);
    const QList<Zone>& zones = m_world.zones();
    const auto zone =
        std::find_if(zones.begin(), zones.end(), [&](const Zone& each) { return each.id == tag; });
    if (zone == zones.end() || zone->traffic == ZoneTraffic::refused)
        return queryError(u"The token has no access to the analytics of this zone"_s);
    if (zone->traffic == ZoneTraffic::failing)
        return refusal(500, 10500, u"Internal server error"_s);

    QJsonArray groups;
    const QDate last = today(m_world);
    for (QDate date = std::max(after.addDays(1), last.addDays(-keptDays));
         date <= last && groups.size() < limit; date = date.addDays(1))
        groups.append(day(*zone, date));
    const QJsonArray answered{QJsonObject{{u"httpRequests1dGroups"_s, groups}}};
    const QJsonObject viewer{{u"zones"_s, answered}};
    return Reply::json({{u"data"_s, QJsonObject{{u"viewer"_s, viewer}}}, {u"errors"_s, QJsonValue::Null}});
}

QJsonObject CloudflareService::day(const Zone& zone, QDate date) const {
    Random random = Random::stream(m_world.seed() ^ seedOf(zone.id), trafficDraws,
                                   static_cast<quint64>(date.toJulianDay()));
    const double elapsed = date == today(m_world) ? dayElapsed(m_world) : 1.0;
    const double requests = static_cast<double>(zone.dailyRequests) * elapsed * (0.8 + 0.4 * random.real());
    const auto share = [&](double low, double high) {
        return static_cast<qint64>(requests * (low + (high - low) * random.real()));
    };
    const QJsonObject sum{{u"requests"_s, static_cast<qint64>(requests)},
                          {u"pageViews"_s, share(0.18, 0.26)},
                          {u"bytes"_s, share(21'000, 38'000)},
                          {u"threats"_s, random.chance(0.3) ? share(0.0, 0.004) : 0}};
    return {{u"dimensions"_s, QJsonObject{{u"date"_s, date.toString(Qt::ISODate)}}},
            {u"sum"_s, sum},
            {u"uniq"_s, QJsonObject{{u"uniques"_s, share(0.05, 0.08)}}}};
}

}  // namespace tidemark::sandbox

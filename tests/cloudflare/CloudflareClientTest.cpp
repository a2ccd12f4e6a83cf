#include <QCoroTask>

#include "cloudflare/CloudflareAPIClient.h"
#include "tests/TestProgram.h"
#include "tests/fakes/FakeHttpClient.h"
#include "tests/fakes/ManualClock.h"

using namespace tidemark;
using namespace Qt::StringLiterals;

namespace {

QString told(const auto& result) {
    return result ? u"ok %1"_s.arg(result->size()) : description(result.error());
}

/// The outcomes of a request for the zones and of one for a zone's traffic that get this result.
QStringList outcomes(const HttpResult& result) {
    FakeHttpClient http;
    const ManualClock clock;
    http.answer(HttpMethod::get, u"/client/v4/zones?per_page=50"_s, result);
    http.answer(HttpMethod::post, u"/client/v4/graphql"_s, result);
    const CloudflareAPIClient client(http, clock, QUrl(u"https://api.example"_s), u"tok"_s);
    return {told(QCoro::waitFor(client.fetchZones({}))),
            told(QCoro::waitFor(client.fetchAnalytics(u"z"_s, 7, {})))};
}

QByteArray answer(const QByteArray& groups) {
    return R"({"data":{"viewer":{"zones":[{"httpRequests1dGroups":[)" + groups +
           R"(]},{"httpRequests1dGroups":5}]}},"errors":[{}]})";
}

QByteArray group(const QByteArray& date, const QByteArray& sum, const QByteArray& uniq) {
    return R"({"dimensions":{"date":)" + date + R"(},"sum":)" + sum + R"(,"uniq":)" + uniq + '}';
}

}  // namespace

class CloudflareClientTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void theQueryIsWrittenOut() {
        FakeHttpClient http;
        const ManualClock clock;
        http.answer(HttpMethod::post, u"/client/v4/graphql"_s, httpAnswer(200));
        const CloudflareAPIClient client(http, clock, QUrl(u"https://api.example"_s), u"tok"_s);
        std::ignore = QCoro::waitFor(client.fetchAnalytics(u"%1%2"_s, 7, {}));
        QCOMPARE(http.requests().last().body,
                 "{\"query\":\"{\\n  viewer {\\n    zones(filter: { zoneTag: \\\"%1%2\\\" }) {\\n"
                 "      httpRequests1dGroups(\\n        limit: 8\\n"
                 "        filter: { date_gt: \\\"2023-11-06\\\" }\\n        orderBy: [date_ASC]\\n"
                 "      ) {\\n        dimensions { date }\\n"
                 "        sum { requests pageViews bytes threats }\\n        uniq { uniques }\\n"
                 "      }\\n    }\\n  }\\n}\"}");
    }

    void everyResultHasItsOutcome() {
        const QString unreadable = u"Couldn't read Cloudflare's response."_s;
        const auto rejected =
            u"Cloudflare rejected the token.\nCheck it has \"Read analytics and logs\" "
            "permission."_s;
        const QList<std::tuple<HttpResult, QString, QString>> rows{
            {httpAnswer(401), rejected, rejected},
            {httpAnswer(403), rejected, rejected},
            {httpAnswer(429), u"Cloudflare rate limit reached.\nTry again in a minute."_s, {}},
            {httpAnswer(201, "{}"), u"Cloudflare returned HTTP 201."_s, {}},
            {tl::unexpected(TransportError::notHttp), unreadable, {}},
            {tl::unexpected(TransportError::timedOut), description(TransportError::timedOut), {}},
            {httpAnswer(200, "<html>"), unreadable, u"The answer is not valid JSON."_s},
            {httpAnswer(200, "[]"), unreadable, u"ok 0"_s},
            {httpAnswer(200, R"({"result":null})"), unreadable, u"ok 0"_s},
            {httpAnswer(200, R"({"result":[{"id":"z","name":5}]})"), unreadable, u"ok 0"_s}};
        for (const auto& [result, zones, traffic] : rows)
            QCOMPARE(outcomes(result), (QStringList{zones, traffic.isNull() ? zones : traffic}));
    }

    void trafficOfAnotherShapeIsNoTraffic() {
        for (const auto& json : QByteArrayList{
                 R"({"data":null,"errors":[{}]})", R"({"data":{"viewer":{"zones":[]}}})",
                 R"({"data":{"viewer":{"zones":[{"httpRequests1dGroups":{}}]}}})",
                 answer("").replace(R"({"httpRequests1dGroups":5})", "5"), answer("null"),
                 answer(group("\"d\"", "{}", "{}") + ",5"), answer(group("5", "{}", "{}")),
                 answer(group("\"d\"", "[]", "{}")), answer(group("\"d\"", "{}", "null")), answer("{}")})
            QCOMPARE(decodeDays(json), QList<DayStats>());
    }

    void aFigureIsAnIntegerOrNothing() {
        const QByteArray sum = R"({"requests":3,"pageViews":1,"threats":4,"bytes":9223372036854775807})";
        QCOMPARE(decodeDays(
                     answer(group("\"2\"", sum, R"({"uniques":-2})") + ",{}," + group("\"1\"", "{}", "{}"))),
                 (QList<DayStats>{{u"2"_s, 1, -2, 3, 4, std::numeric_limits<qint64>::max()}, {u"1"_s}}));
        const auto views = [](const QByteArray& number) {
            return decodeDays(answer(group("\"\"", "{\"pageViews\":" + number + '}', "{}")))->at(0).pageViews;
        };
        for (const auto* exact : {"12", "12.0", "1.2e1"})
            QCOMPARE(views(exact), 12);
        for (const auto* other : {"\"12\"", "12.5", "9223372036854775808", "-1e300", "true", "null", "[12]"})
            QCOMPARE(views(other), 0);
    }

    void theFirstProjectOfThatNameMatches() {
        const auto match = [](const QString& zone, const QStringList& names) {
            QList<VercelProject> projects;
            for (const auto& name : names)
                projects.append({.id = u"p"_s, .name = name});
            return CloudflareAPIClient::matchProject({u"z"_s, zone}, projects).value_or(VercelProject()).name;
        };
        QCOMPARE(match(u"Example.COM"_s, {u"other"_s, u"example"_s}), u"example"_s);
        QCOMPARE(match(u"example.com"_s, {u"Example.com"_s, u"example"_s}), u"Example.com"_s);
        QCOMPARE(match(u"docs.example.org"_s, {u"example"_s, u"docs.example"_s, u"org"_s}), QString());
    }

    void bytesAreShort() {
        const auto text = CloudflareAPIClient::formatBytes;
        QCOMPARE(text(-5000), u"-5000 B"_s);
        QCOMPARE(text(1023), u"1023 B"_s);
        QCOMPARE(text(1280), u"1.2 KB"_s);  // ties are rounded to the even digit, as in C
        QCOMPARE(text(1'048'575), u"1024.0 KB"_s);
        QCOMPARE(text(1'207'959'552), u"1.12 GB"_s);
        QCOMPARE(text(std::numeric_limits<qint64>::max()), u"8589934592.00 GB"_s);
    }

    void theStartIsAMidnightOfTheUserInUtc() {
        const auto start = [](const char* zone, const QString& now) {
            qputenv("TZ", zone);
            const std::chrono::milliseconds time(QDateTime::fromString(now, Qt::ISODate).toMSecsSinceEpoch());
            QString date = CloudflareAPIClient::startDate(Clock::TimePoint(time), 7);
            qputenv("TZ", "Europe/Berlin");
            return date;
        };
        QCOMPARE(start("America/Los_Angeles", u"2025-06-15T03:00:00Z"_s), u"2025-06-07"_s);
        QCOMPARE(start("Pacific/Kiritimati", u"2025-01-01T09:59:59Z"_s), u"2024-12-24"_s);
        // The clocks change during these days.
        QCOMPARE(start("Europe/London", u"2025-03-31T12:00:00Z"_s), u"2025-03-24"_s);
        QCOMPARE(start("Europe/London", u"2025-10-27T12:00:00Z"_s), u"2025-10-19"_s);
        // The clocks change at midnight, today and seven days ago.
        QCOMPARE(start("Atlantic/Azores", u"2025-03-30T12:00:00Z"_s), u"2025-03-23"_s);
        QCOMPARE(start("Asia/Beirut", u"2024-04-07T12:00:00Z"_s), u"2024-03-30"_s);
    }
};

TIDEMARK_TEST(CloudflareClientTest)
#include "CloudflareClientTest.moc"

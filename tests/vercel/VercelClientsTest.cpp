#include <QCoroTask>
#include <QJsonDocument>
#include <QTest>

#include "tests/fakes/FakeHttpClient.h"
#include "vercel/VercelAPIClient.h"
#include "vercel/VercelStatusClient.h"

using namespace tidemark;
using namespace Qt::StringLiterals;

namespace {

QByteArray page(int count, std::optional<qint64> next = std::nullopt) {
    ProjectsResponse response;
    for (int i = 0; i < count; ++i)
        response.projects.append({.id = u"p%1"_s.arg(i), .name = u"n"_s});
    if (next)
        response.pagination = ProjectsResponse::Pagination{.next = next};
    return QJsonDocument(response.encode()).toJson();
}

QString errorText(const auto& result) {
    return result ? u"ok"_s : description(result.error());
}

/// What the outcome of one operation is called in the tables.
QString outcome(FakeHttpClient& http, const QString& operation) {
    const VercelAPIClient client(http, QUrl(u"https://api.example"_s), u"tok"_s, {});
    const std::stop_token stop;
    if (operation == "projects"_L1)
        return errorText(QCoro::waitFor(client.fetchAllProjects(stop)));
    if (operation == "deployments"_L1)
        return errorText(QCoro::waitFor(client.fetchRecentDeployments(u"p"_s, 5, false, stop)));
    if (operation == "redeploy"_L1)
        return errorText(QCoro::waitFor(client.redeployDeployment(u"d"_s, stop)));
    const auto domain = QCoro::waitFor(client.fetchProductionDomain(u"p"_s, stop));
    return domain ? domain->value_or(u"absent"_s) : errorText(domain);
}

void prepare(FakeHttpClient& http, const HttpResult& result) {
    http.answer(HttpMethod::get, u"/v9/projects?limit=100"_s, result);
    http.answer(HttpMethod::get, u"/v6/deployments?projectId=p&limit=5"_s, result);
    http.answer(HttpMethod::get, u"/v9/projects/p/domains?limit=50"_s, result);
    http.answer(HttpMethod::post, u"/v13/deployments?forceNew=1"_s, result);
}

}  // namespace

class VercelClientsTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void everyStatusHasItsOutcome_data() {
        QTest::addColumn<int>("status");
        QTest::addColumn<QStringList>("outcomes");  // projects, deployments, domains, redeploy
        const auto all = [](const QString& text) { return QStringList{text, text, u"absent"_s, text}; };
        QTest::newRow("200") << 200
                             << QStringList{u"The answer could not be read: “projects” is missing."_s,
                                            u"The answer could not be read: “deployments” is missing."_s,
                                            u"absent"_s, u"ok"_s};
        QTest::newRow("201") << 201
                             << QStringList{u"HTTP error 201"_s, u"HTTP error 201"_s, u"absent"_s, u"ok"_s};
        QTest::newRow("302") << 302 << all(u"HTTP error 302"_s);
        QTest::newRow("401") << 401 << all(u"Invalid API token (401)"_s);
        QTest::newRow("404") << 404 << all(u"HTTP error 404"_s);
        QTest::newRow("409") << 409 << all(u"HTTP error 409"_s);
        QTest::newRow("429") << 429 << all(u"Rate limited (429)"_s);
        QTest::newRow("500") << 500 << all(u"HTTP error 500"_s);
    }

    void everyStatusHasItsOutcome() {
        QFETCH(const int, status);
        FakeHttpClient http;
        prepare(http, httpAnswer(status, "{}"));
        QStringList outcomes;
        for (const auto& operation : {u"projects"_s, u"deployments"_s, u"domains"_s, u"redeploy"_s})
            outcomes << outcome(http, operation);
        QTEST(outcomes, "outcomes");
    }

    void transportErrorsPassThrough() {
        FakeHttpClient http;
        prepare(http, tl::unexpected(TransportError::timedOut));
        for (const auto& operation : {u"projects"_s, u"deployments"_s, u"domains"_s, u"redeploy"_s})
            QCOMPARE(outcome(http, operation), description(TransportError::timedOut));
        prepare(http, tl::unexpected(TransportError::notHttp));
        QCOMPARE(outcome(http, u"deployments"_s), u"Invalid server response"_s);
        QCOMPARE(outcome(http, u"domains"_s), u"absent"_s);
        prepare(http, httpAnswer(200, "<html>"));
        QCOMPARE(outcome(http, u"deployments"_s), u"The answer is not valid JSON."_s);
        QCOMPARE(outcome(http, u"domains"_s), u"absent"_s);
    }

    void requestsAreBuiltAsTheApiWantsThem() {
        FakeHttpClient http;
        const QString base = u"https://api.example"_s;
        const QString deployments =
            base + u"/v6/deployments?projectId=p%26%2B%201&limit=5&target=production&teamId=t%2F1"_s;
        http.answer(HttpMethod::get, deployments, httpAnswer(200, R"({"deployments":[]})"));
        http.answer(HttpMethod::get, base + u"/v9/projects?limit=100&teamId=t%2F1"_s,
                    httpAnswer(200, page(3)));
        http.answer(HttpMethod::post, base + u"/v13/deployments?forceNew=1&teamId=t%2F1"_s, httpAnswer(201));
        {
            // The client may be gone before the answer comes.
            const auto client = std::make_unique<VercelAPIClient>(http, QUrl(base), u"tok"_s, u"t/1"_s);
            const std::stop_token stop;
            auto listing = client->fetchRecentDeployments(u"p&+ 1"_s, 5, true, stop);
            auto projects = client->fetchAllProjects(stop);
            auto redeploy = client->redeployDeployment(u"dpl_\"1"_s, stop);
            const_cast<std::unique_ptr<VercelAPIClient>&>(client).reset();
            QVERIFY(QCoro::waitFor(std::move(listing)));
            QVERIFY(QCoro::waitFor(std::move(projects)));
            QVERIFY(QCoro::waitFor(std::move(redeploy)));
        }
        for (const auto& request : http.requests()) {
            QCOMPARE(request.timeout, std::chrono::milliseconds(60000));
            QCOMPARE(request.headers.first(),
                     (std::pair<QByteArray, QByteArray>("Authorization", "Bearer tok")));
        }
        const HttpRequest& redeploy = http.requests().last();
        QCOMPARE(redeploy.headers.last(),
                 (std::pair<QByteArray, QByteArray>("Content-Type", "application/json")));
        QCOMPARE(redeploy.body, QByteArray("{\"deploymentId\":\"dpl_\\\"1\"}"));
    }

    void anIdStaysInItsSegment() {
        FakeHttpClient http;
        const VercelAPIClient client(http, QUrl(u"https://api.example"_s), u"tok"_s, {});
        http.answer(HttpMethod::get, u"/v9/projects/a%2Fb%3Fc%25/domains?limit=50"_s, httpAnswer(404));
        QVERIFY(QCoro::waitFor(client.fetchProductionDomain(u"a/b?c%"_s, {})));
        for (const auto& id : {u"."_s, u".."_s, QString()})
            QVERIFY(!*QCoro::waitFor(client.fetchProductionDomain(id, {})));
        QCOMPARE(http.requests().size(), 1);
    }

    void pagesAreFollowed_data() {
        QTest::addColumn<QList<int>>("sizes");  // of the pages, each with a cursor
        QTest::addColumn<bool>("lastHasCursor");
        QTest::addColumn<int>("requests");
        QTest::addColumn<int>("projects");
        QTest::newRow("none") << QList{0} << false << 1 << 0;
        QTest::newRow("short page ends in spite of a cursor") << QList{99} << true << 1 << 99;
        QTest::newRow("full page without a cursor") << QList{100} << false << 1 << 100;
        QTest::newRow("three and a bit") << QList{100, 100, 100, 40} << true << 4 << 340;
        QTest::newRow("never more than twenty") << QList<int>(21, 100) << true << 20 << 2000;
    }

    void pagesAreFollowed() {
        QFETCH(const QList<int>, sizes);
        QFETCH(const bool, lastHasCursor);
        FakeHttpClient http;
        for (int i = 0; i < sizes.size(); ++i) {
            const auto query = i == 0 ? u"?limit=100"_s : u"?limit=100&until=%1"_s.arg(i);
            const bool hasCursor = i + 1 < sizes.size() || lastHasCursor;
            http.answer(HttpMethod::get, u"/v9/projects"_s + query,
                        httpAnswer(200, page(sizes.at(i), hasCursor ? std::optional(i + 1) : std::nullopt)));
        }
        const VercelAPIClient client(http, QUrl(u"https://api.example"_s), u"tok"_s, {});
        const auto projects = QCoro::waitFor(client.fetchAllProjects({}));
        QVERIFY(projects);
        QTEST(static_cast<int>(projects->size()), "projects");
        QTEST(static_cast<int>(http.requests().size()), "requests");
    }

    void aFailedPageDiscardsTheOthers() {
        FakeHttpClient http;
        http.answer(HttpMethod::get, u"/v9/projects?limit=100"_s, httpAnswer(200, page(100, 7)));
        http.answer(HttpMethod::get, u"/v9/projects?limit=100&until=7"_s, httpAnswer(401));
        QCOMPARE(outcome(http, u"projects"_s), u"Invalid API token (401)"_s);
    }

    void theProductionDomainIsTheFirstVerifiedCustomOne_data() {
        QTest::addColumn<QByteArray>("json");
        QTest::addColumn<QString>("domain");
        const QByteArray skipped = R"({"name":"branch.example","gitBranch":"dev","verified":true},)"
                                   R"({"name":"x.vercel.app","verified":true},)"
                                   R"({"name":"old.example","redirect":"","verified":true})";
        QTest::newRow("verified wins")
            << QByteArray(
                   skipped +
                   R"(,{"name":"p.example","verified":false},{"name":"q.example","gitBranch":null,"verified":true})")
            << u"q.example"_s;
        QTest::newRow("else the first")
            << QByteArray(skipped + R"(,{"name":"p.example"},{"name":"r.example","verified":false})")
            << u"p.example"_s;
        QTest::newRow("suffix in the middle counts")
            << QByteArray(R"({"name":"x.vercel.app.example"})") << u"x.vercel.app.example"_s;
        QTest::newRow("no candidate") << skipped << u"absent"_s;
        QTest::newRow("one entry unreadable")
            << QByteArray(R"({"name":"p.example"},{"name":5})") << u"absent"_s;
    }

    void theProductionDomainIsTheFirstVerifiedCustomOne() {
        QFETCH(const QByteArray, json);
        FakeHttpClient http;
        prepare(http, httpAnswer(200, "{\"domains\":[" + json + "]}"));
        QTEST(outcome(http, u"domains"_s), "domain");
    }

    void theStatusPageGivesALevelWhateverHappens_data() {
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<VercelStatusLevel>("level");
        const auto indicator = [](const QByteArray& text) -> QByteArray {
            return "{\"page\":{},\"status\":{\"indicator\":\"" + text + "\",\"description\":\"x\"}}";
        };
        QTest::newRow("none") << 200 << indicator("none") << VercelStatusLevel::ok;
        QTest::newRow("minor") << 200 << indicator("minor") << VercelStatusLevel::minor;
        QTest::newRow("major in a 503") << 503 << indicator("major") << VercelStatusLevel::major;
        QTest::newRow("critical") << 200 << indicator("critical") << VercelStatusLevel::critical;
        QTest::newRow("capital") << 200 << indicator("None") << VercelStatusLevel::unknown;
        QTest::newRow("no indicator") << 200 << QByteArray(R"({"status":{}})") << VercelStatusLevel::unknown;
        QTest::newRow("no status") << 200 << QByteArray("{}") << VercelStatusLevel::unknown;
        QTest::newRow("html") << 200 << QByteArray("<html>") << VercelStatusLevel::unknown;
        QTest::newRow("no answer") << 0 << QByteArray() << VercelStatusLevel::unknown;
    }

    void theStatusPageGivesALevelWhateverHappens() {
        QFETCH(const int, status);
        QFETCH(const QByteArray, body);
        FakeHttpClient http;
        http.answer(HttpMethod::get, u"/api/v2/status.json"_s,
                    status == 0 ? tl::unexpected(TransportError::offline) : httpAnswer(status, body));
        const VercelStatusClient client(http, QUrl(u"https://status.example/api/v2/status.json"_s));
        QTEST(QCoro::waitFor(client.fetch({})), "level");
        QVERIFY(http.requests().first().headers.isEmpty());
    }
};

QTEST_GUILESS_MAIN(VercelClientsTest)
#include "VercelClientsTest.moc"

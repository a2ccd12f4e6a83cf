#include <QCoroTask>
#include <QJsonDocument>

#include "platform/http/NetworkHttpClient.h"
#include "sandbox/Sandbox.h"
#include "tests/TestProgram.h"
#include "tests/fakes/FakeHttpClient.h"
#include "tests/fakes/MisbehavingServer.h"
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

const QUrl base(u"https://api.example"_s);

/// The outcomes, in words, of all operations when every request gets this result: the list of projects, the
/// deployments, the domain, and the redeployment.
QStringList outcomes(const HttpResult& result) {
    FakeHttpClient http;
    http.answer(HttpMethod::get, u"/v9/projects?limit=100"_s, result);
    http.answer(HttpMethod::get, u"/v6/deployments?projectId=p&limit=5"_s, result);
    http.answer(HttpMethod::get, u"/v9/projects/p/domains?limit=50"_s, result);
    http.answer(HttpMethod::post, u"/v13/deployments?forceNew=1"_s, result);
    const VercelAPIClient client(http, base, u"tok"_s, {});
    const auto domain = QCoro::waitFor(client.fetchProductionDomain(u"p"_s, {}));
    return {errorText(QCoro::waitFor(client.fetchAllProjects({}))),
            errorText(QCoro::waitFor(client.fetchRecentDeployments(u"p"_s, 5, false, {}))),
            domain ? domain->value_or(u"absent"_s) : errorText(domain),
            errorText(QCoro::waitFor(client.redeployDeployment(u"d"_s, {})))};
}

}  // namespace

class VercelClientsTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void everyResultHasItsOutcome() {
        const QString isMissing = u"The answer could not be read: “%1” is missing."_s;
        QCOMPARE(outcomes(httpAnswer(200, "{}")),
                 (QStringList{isMissing.arg(u"projects"_s), isMissing.arg(u"deployments"_s), u"absent"_s,
                              u"ok"_s}));
        QCOMPARE(outcomes(httpAnswer(201, "{}")),
                 (QStringList{u"HTTP error 201"_s, u"HTTP error 201"_s, u"absent"_s, u"ok"_s}));
        const QString notJson = u"The answer is not valid JSON."_s;
        QCOMPARE(outcomes(httpAnswer(200, "<html>")), (QStringList{notJson, notJson, u"absent"_s, u"ok"_s}));

        const auto failed = [](const QString& text) { return QStringList{text, text, u"absent"_s, text}; };
        QCOMPARE(outcomes(httpAnswer(401)), failed(u"Invalid API token (401)"_s));
        QCOMPARE(outcomes(httpAnswer(429)), failed(u"Rate limited (429)"_s));
        QCOMPARE(outcomes(httpAnswer(500)), failed(u"HTTP error 500"_s));
        QCOMPARE(outcomes(tl::unexpected(TransportError::notHttp)), failed(u"Invalid server response"_s));
        QCOMPARE(outcomes(tl::unexpected(TransportError::timedOut)),
                 QStringList(4, description(TransportError::timedOut)));
    }

    void requestsAreBuiltAsTheApiWantsThem() {
        FakeHttpClient http;
        http.answer(HttpMethod::get,
                    u"https://api.example/v6/deployments"
                    u"?projectId=p%26%2B%201&limit=5&target=production&teamId=t%2F1"_s,
                    httpAnswer(200, R"({"deployments":[]})"));
        http.answer(HttpMethod::post, u"https://api.example/v13/deployments?forceNew=1&teamId=t%2F1"_s,
                    httpAnswer(201));
        // The client may be destroyed before the answer arrives.
        auto client = std::make_unique<VercelAPIClient>(http, base, u"tok"_s, u"t/1"_s);
        auto listing = client->fetchRecentDeployments(u"p&+ 1"_s, 5, true, {});
        auto redeploy = client->redeployDeployment(u"dpl_\"1"_s, {});
        client.reset();
        QVERIFY(QCoro::waitFor(std::move(listing)));
        QVERIFY(QCoro::waitFor(std::move(redeploy)));
        using Header = std::pair<QByteArray, QByteArray>;
        for (const auto& request : http.requests())
            QCOMPARE(request.headers.first(), Header("Authorization", "Bearer tok"));
        QCOMPARE(http.requests().last().headers.last(), Header("Content-Type", "application/json"));
        QCOMPARE(http.requests().last().body, "{\"deploymentId\":\"dpl_\\\"1\"}");
    }

    void anIdStaysInItsSegment() {
        FakeHttpClient http;
        const VercelAPIClient client(http, base, u"tok"_s, {});
        http.answer(HttpMethod::get, u"/v9/projects/a%2Fb%3Fc%25/domains?limit=50"_s, httpAnswer(404));
        QVERIFY(QCoro::waitFor(client.fetchProductionDomain(u"a/b?c%"_s, {})));
        for (const auto& id : {u"."_s, u".."_s, QString()})
            QVERIFY(!*QCoro::waitFor(client.fetchProductionDomain(id, {})));
        QCOMPARE(http.requests().size(), 1);
    }

    /// Projects with many variables make a page of 100 of them large.
    void aLargePageIsRead() {
        const QByteArray large = page(100) + QByteArray(20'000'000, ' ');
        MisbehavingServer server(MisbehavingServer::writes(MisbehavingServer::answer("200 OK", large)));
        NetworkHttpClient http({.insecureLoopback = NetworkHttpClient::InsecureLoopback::allowed});
        const VercelAPIClient client(http, server.url({}), u"tok"_s, {});
        const auto projects = QCoro::waitFor(client.fetchAllProjects({}));
        QCOMPARE(errorText(projects), u"ok"_s);
        QCOMPARE(projects->size(), 100);
    }

    void pagesAreFollowed() {
        // The number of projects from pages of these sizes, and the number of requests. All pages have a
        // cursor, except perhaps the last.
        const auto followed = [](const QList<int>& sizes, bool lastHasCursor) {
            FakeHttpClient http;
            for (int i = 0; i < sizes.size(); ++i) {
                const auto cursor = i == 0 ? QString() : u"&until=%1"_s.arg(i);
                const bool hasNext = i + 1 < sizes.size() || lastHasCursor;
                const QByteArray body = page(sizes.at(i), hasNext ? std::optional(i + 1) : std::nullopt);
                http.answer(HttpMethod::get, u"/v9/projects?limit=100"_s + cursor, httpAnswer(200, body));
            }
            const VercelAPIClient client(http, base, u"tok"_s, {});
            const auto projects = QCoro::waitFor(client.fetchAllProjects({}));
            return std::pair(projects ? projects->size() : -1, http.requests().size());
        };
        using Followed = std::pair<qsizetype, qsizetype>;
        QCOMPARE(followed({0}, false), Followed(0, 1));
        QCOMPARE(followed({99}, true), Followed(99, 1));  // a page that is not full is the last
        QCOMPARE(followed({100, 100, 100, 40}, true), Followed(340, 4));
        QCOMPARE(followed(QList<int>(21, 100), true), Followed(2000, 20));  // the limit
    }

    void aFailedPageDiscardsTheOthers() {
        FakeHttpClient http;
        http.answer(HttpMethod::get, u"/v9/projects?limit=100"_s, httpAnswer(200, page(100, 7)));
        http.answer(HttpMethod::get, u"/v9/projects?limit=100&until=7"_s, httpAnswer(401));
        const VercelAPIClient client(http, base, u"tok"_s, {});
        QCOMPARE(errorText(QCoro::waitFor(client.fetchAllProjects({}))), u"Invalid API token (401)"_s);
    }

    void theProductionDomainIsTheFirstVerifiedCustomOne() {
        const auto domain = [](const QByteArray& entries) {
            return outcomes(httpAnswer(200, "{\"domains\":[" + entries + "]}")).at(2);
        };
        const QByteArray skipped = R"({"name":"branch.example","gitBranch":"dev","verified":true},)"
                                   R"({"name":"x.vercel.app","verified":true},)"
                                   R"({"name":"old.example","redirect":"","verified":true})";
        const QByteArray verified = R"({"name":"q.example","gitBranch":null,"verified":true})";
        QCOMPARE(domain(skipped), u"absent"_s);
        QCOMPARE(domain(skipped + R"(,{"name":"p.example","verified":false},)" + verified), u"q.example"_s);
        QCOMPARE(domain(skipped + R"(,{"name":"p.example"},{"name":"r.example","verified":false})"),
                 u"p.example"_s);
        QCOMPARE(domain(verified + R"(,{"name":5})"), u"absent"_s);  // an invalid entry discards all
    }

    void theSandboxIsUnderstood() {
        sandbox::Sandbox service({.projects = 640, .speed = 0});
        QVERIFY(service.start());
        NetworkHttpClient http({.insecureLoopback = NetworkHttpClient::InsecureLoopback::allowed});
        qsizetype listed = 0;
        for (const auto& account : service.accounts()) {
            const VercelAPIClient client(http, service.baseUrl(), account.token, account.teamId);
            const auto projects = QCoro::waitFor(client.fetchAllProjects({}));
            QVERIFY2(projects, qPrintable(errorText(projects)));
            listed += projects->size();
            for (const auto& project : projects->first(20)) {
                const auto known = service.world()->project(project.id)->deployments;
                const auto recent = QCoro::waitFor(client.fetchRecentDeployments(project.id, 5, false, {}));
                QVERIFY2(recent, qPrintable(errorText(recent)));
                QCOMPARE(recent->size(), std::min<qsizetype>(5, known.size()));
                for (qsizetype i = 0; i < recent->size(); ++i) {
                    QCOMPARE(recent->at(i).id, known.at(i).uid);
                    QCOMPARE(recent->at(i).created, known.at(i).created);
                }
                if (recent->isEmpty())
                    continue;
                QVERIFY(QCoro::waitFor(client.redeployDeployment(recent->first().id, {})));
                QCOMPARE(service.world()->project(project.id)->deployments.size(), known.size() + 1);
            }
            service.world()->setRevoked(account.token, true);
            QCOMPARE(errorText(QCoro::waitFor(client.fetchAllProjects({}))), u"Invalid API token (401)"_s);
        }
        QCOMPARE(listed, 640);
        const VercelStatusClient status(http, service.baseUrl().resolved(QUrl(u"/api/v2/status.json"_s)));
        QCOMPARE(QCoro::waitFor(status.fetch({})), VercelStatusLevel::ok);
    }

    void theStatusPageGivesALevelWhateverHappens() {
        const auto level = [](const HttpResult& result) {
            FakeHttpClient http;
            http.answer(HttpMethod::get, u"https://status.example/s.json"_s, result);
            const VercelStatusClient client(http, QUrl(u"https://status.example/s.json"_s));
            const VercelStatusLevel found = QCoro::waitFor(client.fetch({}));
            return http.requests().first().headers.isEmpty() ? std::optional(found) : std::nullopt;
        };
        const auto indicator = [](const QByteArray& text, int status = 200) {
            return httpAnswer(status, "{\"page\":{},\"status\":{\"indicator\":\"" + text + "\"}}");
        };
        using enum VercelStatusLevel;
        QCOMPARE(level(indicator("none")), ok);
        QCOMPARE(level(indicator("major", 503)), major);
        QCOMPARE(level(indicator("critical")), critical);
        QCOMPARE(level(indicator("None")), unknown);
        QCOMPARE(level(httpAnswer(200, R"({"status":{}})")), unknown);
        QCOMPARE(level(httpAnswer(200, "<html>")), unknown);
        QCOMPARE(level(tl::unexpected(TransportError::offline)), unknown);
    }
};

TIDEMARK_TEST(VercelClientsTest)
#include "VercelClientsTest.moc"

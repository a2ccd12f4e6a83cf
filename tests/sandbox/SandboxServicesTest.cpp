#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

#include "sandbox/Sandbox.h"

using namespace tidemark::sandbox;
using namespace Qt::StringLiterals;

namespace {

// 2023-11-15, 06:00 UTC.
constexpr qint64 now = 1'700'028'000'000;

SandboxOptions frozen(SandboxOptions options = {}) {
    options.speed = 0;
    options.now = [] { return now; };
    return options;
}

using Query = QList<std::pair<QString, QString>>;

struct Answer {
    int status = 0;
    QJsonObject json;
    qsizetype size = 0;
};

Answer ask(Sandbox& sandbox, const Request& request) {
    const Reply reply = sandbox.answer(request);
    return {reply.status, QJsonDocument::fromJson(reply.body).object(), reply.body.size()};
}

QByteArray bearer(const QString& token) {
    return "Bearer " + token.toUtf8();
}

/// A GET of the hosting service in the name of an account.
Answer get(Sandbox& sandbox, int account, const QString& path, Query query = {}) {
    const SandboxAccount speaker = sandbox.accounts().at(account);
    if (!speaker.teamId.isEmpty())
        query.append({u"teamId"_s, speaker.teamId});
    return ask(sandbox,
               {.method = "GET", .path = path, .query = query, .authorization = bearer(speaker.token)});
}

Answer control(Sandbox& sandbox, const QByteArray& method, const QString& path,
               const QJsonObject& body = {}) {
    return ask(sandbox, {.method = method, .path = path, .body = QJsonDocument(body).toJson()});
}

Answer analytics(Sandbox& sandbox, const QString& zone, const QString& after, int limit = 8) {
    const QString query =
        uR"({ viewer { zones(filter: { zoneTag: "%1" }) { httpRequests1dGroups(
        limit: %2 filter: { date_gt: "%3" } orderBy: [date_ASC]) { dimensions { date } } } } })"_s.arg(zone)
            .arg(limit)
            .arg(after);
    const QJsonObject body{{u"query"_s, query}};
    return ask(sandbox, {.method = "POST",
                         .path = u"/client/v4/graphql"_s,
                         .authorization = bearer(sandbox.cloudflareToken()),
                         .contentType = "application/json",
                         .body = QJsonDocument(body).toJson()});
}

QJsonArray groups(const Answer& answer) {
    const QJsonArray zones = answer.json[u"data"][u"viewer"][u"zones"].toArray();
    return zones.at(0)[u"httpRequests1dGroups"].toArray();
}

}  // namespace

class SandboxServicesTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void projectListIsPaged_data() {
        QTest::addColumn<int>("projects");
        QTest::addColumn<QList<int>>("pages");
        QTest::newRow("none") << 0 << QList<int>{0};
        QTest::newRow("one short") << 99 << QList<int>{99};
        QTest::newRow("exact") << 100 << QList<int>{100};
        QTest::newRow("one more") << 101 << QList<int>{100, 1};
        QTest::newRow("several") << 340 << QList<int>{100, 100, 100, 40};
        QTest::newRow("many") << 2050 << (QList<int>(20, 100) << 50);
    }

    void projectListIsPaged() {
        QFETCH(int, projects);
        QFETCH(QList<int>, pages);
        Sandbox sandbox(frozen({.accounts = 1, .projects = projects}));
        const QStringList expected = sandbox.world()->projectIds(0);
        QStringList ids;
        QList<int> sizes;
        Query query{{u"limit"_s, u"100"_s}};
        while (sizes.size() <= pages.size()) {
            const Answer page = get(sandbox, 0, u"/v9/projects"_s, query);
            QCOMPARE(page.status, 200);
            const QJsonArray documents = page.json[u"projects"].toArray();
            sizes.append(static_cast<int>(documents.size()));
            for (const auto& document : documents)
                ids.append(document[u"id"].toString());
            const QJsonValue next = page.json[u"pagination"][u"next"];
            if (!next.isDouble())
                break;
            query = {{u"limit"_s, u"100"_s}, {u"until"_s, QString::number(next.toInteger())}};
        }
        QCOMPARE(sizes, pages);
        QCOMPARE(ids, expected);
    }

    void pagesAreAsHeavyAsRealOnesAndFollowTheWorld() {
        Sandbox sandbox(frozen({.accounts = 1, .projects = 100}));
        const Query query{{u"limit"_s, u"100"_s}};
        const Answer before = get(sandbox, 0, u"/v9/projects"_s, query);
        QVERIFY(before.size > 700'000 && before.size < 1'000'000);
        sandbox.world()->renameProject(u"docs"_s, u"handbook"_s);
        sandbox.world()->push(u"storefront"_s, {.state = u"ERROR"_s});
        const QJsonArray after = get(sandbox, 0, u"/v9/projects"_s, query).json[u"projects"].toArray();
        QCOMPARE(after.at(1)[u"name"].toString(), u"handbook"_s);
        QCOMPARE(after.at(0)[u"latestDeployments"].toArray().at(0)[u"readyState"].toString(), u"ERROR"_s);
    }

    void everyTokenOpensItsOwnScopeOnly_data() {
        QTest::addColumn<QString>("token");
        QTest::addColumn<QString>("team");
        QTest::addColumn<int>("status");
        const Sandbox sandbox(frozen({.accounts = 3}));
        const QList<SandboxAccount> accounts = sandbox.accounts();
        QTest::newRow("personal") << accounts[0].token << QString() << 200;
        QTest::newRow("team") << accounts[1].token << accounts[1].teamId << 200;
        QTest::newRow("no token") << QString() << QString() << 401;
        QTest::newRow("wrong token") << u"nonsense"_s << accounts[1].teamId << 401;
        QTest::newRow("other service's token") << sandbox.cloudflareToken() << QString() << 401;
        QTest::newRow("another team") << accounts[1].token << accounts[2].teamId << 403;
        QTest::newRow("personal token, team") << accounts[0].token << accounts[1].teamId << 403;
        QTest::newRow("team forgotten") << accounts[1].token << QString() << 403;
        QTest::newRow("unknown team") << accounts[1].token << u"team_x"_s << 403;
    }

    void everyTokenOpensItsOwnScopeOnly() {
        QFETCH(QString, token);
        QFETCH(QString, team);
        QFETCH(int, status);
        Sandbox sandbox(frozen({.accounts = 3}));
        Request request{.method = "GET", .path = u"/v9/projects"_s};
        if (!team.isEmpty())
            request.query = {{u"teamId"_s, team}};
        if (!token.isEmpty())
            request.authorization = bearer(token);
        const Answer answer = ask(sandbox, request);
        QCOMPARE(answer.status, status);
        QCOMPARE(answer.json.contains(u"error"), status != 200);
        sandbox.world()->revokeToken(token);
        QCOMPARE(ask(sandbox, request).status, 401);
        sandbox.world()->restoreToken(token);
        QCOMPARE(ask(sandbox, request).status, status);
    }

    void projectsBelongToOneAccount() {
        Sandbox sandbox(frozen());
        const QString teams = sandbox.world()->projectIds(1).first();
        const QString path = u"/v9/projects/%1/domains"_s.arg(teams);
        const Query about{{u"projectId"_s, teams}};
        QCOMPARE(get(sandbox, 1, path).status, 200);
        QCOMPARE(get(sandbox, 0, path).status, 404);
        QCOMPARE(get(sandbox, 1, u"/v6/deployments"_s, about).status, 200);
        QCOMPARE(get(sandbox, 0, u"/v6/deployments"_s, about).status, 404);
        QCOMPARE(get(sandbox, 0, u"/v6/deployments"_s, {{u"projectId"_s, u"prj_x"_s}}).status, 404);
    }

    void deploymentsAreFilteredAndLimited() {
        Sandbox sandbox(frozen());
        sandbox.world()->setDeployments(
            u"docs"_s,
            {{.uid = u"d4"_s, .url = u"d4.example"_s, .state = u"BUILDING"_s, .created = now - 1},
             {.uid = u"d3"_s, .state = u"READY"_s, .created = now - 2, .target = u"production"_s},
             {.uid = u"d2"_s, .state = u"ODD"_s, .created = now - 3, .commit = Commit{.ref = u"x"_s}},
             {.uid = u"d1"_s, .state = u"ERROR"_s, .created = now - 4, .target = u"production"_s}});
        const auto uids = [&](Query query) {
            query.append({u"projectId"_s, sandbox.world()->project(u"docs"_s)->id});
            QStringList found;
            for (const auto& each :
                 get(sandbox, 1, u"/v6/deployments"_s, query).json[u"deployments"].toArray())
                found.append(each[u"uid"].toString());
            return found.join(u' ');
        };
        QCOMPARE(uids({}), u"d4 d3 d2 d1"_s);
        QCOMPARE(uids({{u"limit"_s, u"2"_s}}), u"d4 d3"_s);
        QCOMPARE(uids({{u"limit"_s, u"1"_s}, {u"target"_s, u"production"_s}}), u"d3"_s);
        QCOMPARE(uids({{u"until"_s, QString::number(now - 2)}}), u"d2 d1"_s);
    }

    void commitTextsSurviveTheWire_data() {
        QTest::addColumn<QString>("message");
        QTest::newRow("lines") << u"one\n\ttwo\r\nthree"_s;
        QTest::newRow("marks") << u"C:\\new \"x\" </script> \u0001\u007f"_s;
        QTest::newRow("scripts") << u"Größe 日本語 🌱✨"_s;
        QTest::newRow("half a pair at the end") << u"cut off 🌱"_s.chopped(1);
        QTest::newRow("half a pair inside") << u"🌱🌱"_s.remove(1, 2).append(u"."_s);
        QTest::newRow("empty") << u""_s;
    }

    void commitTextsSurviveTheWire() {
        QFETCH(QString, message);
        Sandbox sandbox(frozen());
        sandbox.world()->push(u"docs"_s, {.state = u"READY"_s, .commit = Commit{.message = message}});
        const Query query{{u"projectId"_s, u"docs"_s}};
        const QJsonValue newest =
            get(sandbox, 1, u"/v6/deployments"_s, query).json[u"deployments"].toArray().at(0);
        QCOMPARE(newest[u"meta"][u"githubCommitMessage"], QJsonValue(message));
        QVERIFY(newest[u"meta"][u"githubCommitRef"].isUndefined());
        QVERIFY(get(sandbox, 1, u"/v9/projects"_s).json.contains(u"pagination"));
    }

    void redeployAnswersTheNewDeployment() {
        Sandbox sandbox(frozen());
        const SandboxAccount team = sandbox.accounts().at(1);
        const QString source = sandbox.world()->project(u"docs"_s)->deployments.first().uid;
        const auto post = [&](const QByteArray& body) {
            return ask(sandbox, {.method = "POST",
                                 .path = u"/v13/deployments"_s,
                                 .query = {{u"forceNew"_s, u"1"_s}, {u"teamId"_s, team.teamId}},
                                 .authorization = bearer(team.token),
                                 .contentType = "application/json",
                                 .body = body});
        };
        const Answer answer = post(R"({"deploymentId":")" + source.toUtf8() + R"("})");
        QCOMPARE(answer.status, 200);
        QCOMPARE(answer.json[u"id"].toString(), sandbox.world()->project(u"docs"_s)->deployments.first().uid);
        QVERIFY(answer.json[u"id"].toString() != source);
        const QString foreign = sandbox.world()->project(u"journal"_s)->deployments.first().uid;
        QCOMPARE(post("{\"deploymentId\":\"" + foreign.toUtf8() + "\"}").status, 404);
        QCOMPARE(post(R"({"deploymentId":"dpl_x"})").status, 404);
        QCOMPARE(post("nonsense").status, 400);
    }

    void domainsCarryNullsAsTheServiceDoes() {
        Sandbox sandbox(frozen());
        sandbox.world()->setDomains(u"docs"_s, {{.name = u"a.example"_s, .gitBranch = u"staging"_s},
                                                {.name = u"b.example"_s, .redirect = u"c.example"_s},
                                                {.name = u"c.example"_s, .verified = false}});
        const QJsonArray domains = get(sandbox, 1, u"/v9/projects/docs/domains"_s).json[u"domains"].toArray();
        QCOMPARE(domains.size(), 3);
        QCOMPARE(domains[0][u"gitBranch"].toString(), u"staging"_s);
        QVERIFY(domains[0][u"redirect"].isNull());
        QCOMPARE(domains[1][u"redirect"].toString(), u"c.example"_s);
        QVERIFY(domains[2][u"gitBranch"].isNull());
        QCOMPARE(domains[2][u"verified"], QJsonValue(false));
    }

    void statusPageNeedsNoToken() {
        Sandbox sandbox(frozen());
        const Request request{.method = "GET", .path = u"/api/v2/status.json"_s};
        QCOMPARE(ask(sandbox, request).json[u"status"][u"indicator"].toString(), u"none"_s);
        sandbox.world()->setStatusIndicator(u"critical"_s);
        QCOMPARE(ask(sandbox, request).json[u"status"][u"indicator"].toString(), u"critical"_s);
    }

    void zonesNeedTheirToken() {
        Sandbox sandbox(frozen());
        Request request{.method = "GET",
                        .path = u"/client/v4/zones"_s,
                        .query = {{u"per_page"_s, u"50"_s}},
                        .authorization = bearer(sandbox.cloudflareToken())};
        QCOMPARE(ask(sandbox, request).json[u"result"].toArray().size(), sandbox.world()->zones().size());
        request.authorization = bearer(sandbox.accounts().first().token);
        QCOMPARE(ask(sandbox, request).status, 403);
        request.authorization.clear();
        QCOMPARE(ask(sandbox, request).status, 401);
    }

    void analyticsKeepToTheDatesAsked() {
        Sandbox sandbox(frozen());
        const QString zone = sandbox.world()->zones().first().id;
        const QJsonArray week = groups(analytics(sandbox, zone, u"2023-11-08"_s));
        QCOMPARE(week.size(), 7);
        QCOMPARE(week.first()[u"dimensions"][u"date"].toString(), u"2023-11-09"_s);
        QCOMPARE(week.last()[u"dimensions"][u"date"].toString(), u"2023-11-15"_s);
        for (const auto& day : week) {
            const double requests = day[u"sum"][u"requests"].toDouble();
            QVERIFY(requests > 0 && day[u"sum"][u"pageViews"].toDouble() <= requests);
            QVERIFY(day[u"uniq"][u"uniques"].toDouble() <= day[u"sum"][u"pageViews"].toDouble());
        }
        QCOMPARE(groups(analytics(sandbox, zone, u"2023-11-07"_s)).size(), 8);
        QCOMPARE(groups(analytics(sandbox, zone, u"2023-11-01"_s)).size(), 8);
        QCOMPARE(groups(analytics(sandbox, zone, u"2023-11-15"_s)).size(), 0);
        // A past day's figures are the same from whatever start they are asked.
        QCOMPARE(groups(analytics(sandbox, zone, u"2023-11-10"_s)).first(), week.at(2));
    }

    void zonesFailInTheirOwnWays() {
        Sandbox sandbox(frozen());
        sandbox.world()->setZones({{.id = u"refused"_s, .traffic = ZoneTraffic::refused},
                                   {.id = u"failing"_s, .traffic = ZoneTraffic::failing}});
        for (const QString& zone : {u"refused"_s, u"unknown"_s}) {
            const Answer answer = analytics(sandbox, zone, u"2023-11-08"_s);
            QCOMPARE(answer.status, 200);
            QVERIFY(answer.json[u"data"].isNull());
            QVERIFY(!answer.json[u"errors"].toArray().isEmpty());
        }
        QCOMPARE(analytics(sandbox, u"failing"_s, u"2023-11-08"_s).status, 500);
    }

    void controlsReachTheWorld() {
        Sandbox sandbox(frozen());
        const QJsonObject shop{{u"name"_s, u"shop"_s}, {u"account"_s, u"Paper Heron"_s}};
        const QString id = control(sandbox, "POST", u"/sandbox/projects"_s, shop).json[u"id"].toString();
        QCOMPARE(sandbox.world()->project(id)->account, 1);
        const QJsonObject push{
            {u"project"_s, u"shop"_s}, {u"state"_s, u"BUILDING"_s}, {u"message"_s, u"Open the shop"_s}};
        QCOMPARE(control(sandbox, "POST", u"/sandbox/deploy"_s, push).status, 201);
        const QJsonObject all{{u"project"_s, u"*"_s}, {u"state"_s, u"READY"_s}};
        QCOMPARE(control(sandbox, "POST", u"/sandbox/state"_s, all).json[u"changed"], QJsonValue(12));
        const QJsonObject shown = control(sandbox, "GET", u"/sandbox/world"_s).json;
        const QJsonValue newest = shown[u"projects"].toArray().at(0)[u"newest"];
        QCOMPARE(newest[u"state"].toString(), u"READY"_s);
        QCOMPARE(newest[u"message"].toString(), u"Open the shop"_s);
        control(sandbox, "POST", u"/sandbox/speed"_s, {{u"speed"_s, 4}});
        QCOMPARE(sandbox.world()->speed(), 4.0);
        control(sandbox, "POST", u"/sandbox/status"_s, {{u"indicator"_s, u"minor"_s}});
        QCOMPARE(sandbox.world()->statusIndicator(), u"minor"_s);
        control(sandbox, "POST", u"/sandbox/tokens"_s, {{u"token"_s, sandbox.accounts().first().token}});
        QCOMPARE(get(sandbox, 0, u"/v9/projects"_s).status, 401);
    }

    void controlsRefuseNonsense_data() {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<int>("status");
        QTest::newRow("unknown route") << u"/sandbox/nothing"_s << QByteArray("{}") << 404;
        QTest::newRow("no JSON") << u"/sandbox/state"_s << QByteArray("state=READY") << 400;
        QTest::newRow("no state") << u"/sandbox/state"_s << QByteArray(R"({"project":"*"})") << 400;
        QTest::newRow("no project") << u"/sandbox/deploy"_s << QByteArray(R"({"project":"x"})") << 404;
        QTest::newRow("speed") << u"/sandbox/speed"_s << QByteArray(R"({"speed":-1})") << 400;
        QTest::newRow("fault") << u"/sandbox/faults"_s << QByteArray(R"({"kind":"flood"})") << 400;
        QTest::newRow("account") << u"/sandbox/projects"_s << QByteArray(R"({"name":"x","account":9})")
                                 << 400;
    }

    void controlsRefuseNonsense() {
        QFETCH(QString, path);
        QFETCH(QByteArray, body);
        QFETCH(int, status);
        Sandbox sandbox(frozen());
        const Answer answer = ask(sandbox, {.method = "POST", .path = path, .body = body});
        QCOMPARE(answer.status, status);
        QVERIFY(!answer.json[u"error"].toString().isEmpty());
    }

    void faultsHitWhatTheyNameAndAsOftenAsTheySay() {
        Sandbox sandbox(frozen());
        const QString docs = sandbox.world()->project(u"docs"_s)->id;
        const QString storefront = sandbox.world()->project(u"storefront"_s)->id;
        const auto poll = [&](const QString& id) {
            return get(sandbox, 1, u"/v6/deployments"_s, {{u"projectId"_s, id}}).status;
        };
        sandbox.faults().add({.pathPrefix = u"/v6/"_s, .projectId = docs, .times = 2, .status = 429});
        QCOMPARE(poll(storefront), 200);
        QCOMPARE(poll(docs), 429);
        QCOMPARE(get(sandbox, 1, u"/v9/projects/%1/domains"_s.arg(docs)).status, 200);
        QCOMPARE(poll(docs), 429);
        QCOMPARE(poll(docs), 200);
        const QJsonObject fault{
            {u"kind"_s, u"status"_s}, {u"status"_s, 503}, {u"path"_s, u"/v9/"_s}, {u"project"_s, u"docs"_s}};
        control(sandbox, "POST", u"/sandbox/faults"_s, fault);
        QCOMPARE(get(sandbox, 1, u"/v9/projects/docs/domains"_s).status, 503);
        QCOMPARE(get(sandbox, 1, u"/v9/projects"_s).status, 200);
        control(sandbox, "DELETE", u"/sandbox/faults"_s);
        QCOMPARE(get(sandbox, 1, u"/v9/projects/docs/domains"_s).status, 200);
    }

    void logIsBoundedAndLeavesTheControlsOut() {
        Sandbox sandbox(frozen());
        control(sandbox, "GET", u"/sandbox/world"_s);
        QCOMPARE(sandbox.log().total(), 0);
        const int over = RequestLog::capacity + 3;
        for (int index = 0; index < over; ++index)
            static_cast<void>(
                sandbox.answer({.method = "GET", .path = u"/v9/%1"_s.arg(index), .body = "body"}));
        QCOMPARE(sandbox.log().total(), over);
        const QList<LoggedRequest> entries = sandbox.log().entries();
        QCOMPARE(entries.size(), RequestLog::capacity);
        QCOMPARE(entries.first().path, u"/v9/3"_s);
        QCOMPARE(entries.last().status, 401);
        QCOMPARE(entries.last().time, now);
        QCOMPARE(sandbox.log().entries(u"/v9/10002"_s).size(), 1);
        sandbox.log().clear();
        QCOMPARE(sandbox.log().total(), 0);
        QVERIFY(sandbox.log().entries().isEmpty());
    }
};

QTEST_GUILESS_MAIN(SandboxServicesTest)
#include "SandboxServicesTest.moc"

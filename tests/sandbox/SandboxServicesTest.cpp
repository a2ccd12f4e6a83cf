#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>
#include <QTest>
#include <tuple>

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

/// The documents of the project "docs".
QJsonArray deployments(Sandbox& sandbox, Query query = {}) {
    query.append({u"projectId"_s, u"docs"_s});
    return get(sandbox, 1, u"/v6/deployments"_s, query).json[u"deployments"].toArray();
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
    void projectListIsPaged() {
        for (const int projects : {0, 99, 100, 101, 340}) {
            Sandbox sandbox(frozen({.accounts = 1, .projects = projects}));
            QStringList ids;
            Query query{{u"limit"_s, u"100"_s}};
            QJsonValue next;
            do {
                const Answer page = get(sandbox, 0, u"/v9/projects"_s, query);
                const QJsonArray documents = page.json[u"projects"].toArray();
                next = page.json[u"pagination"][u"next"];
                QVERIFY(next.isDouble() ? documents.size() == 100 : next.isNull());
                for (const auto& document : documents)
                    ids.append(document[u"id"].toString());
                query = {{u"limit"_s, u"100"_s}, {u"until"_s, QString::number(next.toInteger())}};
            } while (next.isDouble());
            QCOMPARE(QSet(ids.cbegin(), ids.cend()).size(), projects);
            QCOMPARE(ids, sandbox.world()->projectIds(0));
        }
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

    void everyTokenOpensItsOwnScopeOnly() {
        Sandbox sandbox(frozen({.accounts = 3}));
        const auto status = [&sandbox](const QString& token, const QString& team) {
            return ask(sandbox, {.method = "GET",
                                 .path = u"/v9/projects"_s,
                                 .query = team.isEmpty() ? Query() : Query{{u"teamId"_s, team}},
                                 .authorization = token.isEmpty() ? QByteArray() : bearer(token)})
                .status;
        };
        const QString personal = sandbox.accounts().at(0).token;
        const SandboxAccount team = sandbox.accounts().at(1);
        QCOMPARE(status(personal, {}), 200);
        QCOMPARE(status(team.token, team.teamId), 200);
        for (const QString& token : {QString(), u"nonsense"_s, sandbox.cloudflareToken()})
            QCOMPARE(status(token, {}), 401);
        for (const QString& foreign : {sandbox.accounts().at(2).teamId, QString(), u"team_x"_s})
            QCOMPARE(status(team.token, foreign), 403);
        QCOMPARE(status(personal, team.teamId), 403);
        sandbox.world()->revokeToken(personal);
        QCOMPARE(status(personal, {}), 401);
        sandbox.world()->restoreToken(personal);
        QCOMPARE(status(personal, {}), 200);
    }

    void deploymentsAreFilteredAndLimited() {
        Sandbox sandbox(frozen());
        sandbox.world()->setDeployments(
            u"docs"_s,
            {{.uid = u"d4"_s, .url = u"d4.example"_s, .state = u"BUILDING"_s, .created = now - 1},
             {.uid = u"d3"_s, .state = u"READY"_s, .created = now - 2, .target = u"production"_s},
             {.uid = u"d2"_s, .state = u"ODD"_s, .created = now - 3, .commit = Commit{.ref = u"x"_s}},
             {.uid = u"d1"_s, .state = u"ERROR"_s, .created = now - 4, .target = u"production"_s}});
        const auto uids = [&sandbox](const Query& query) {
            QStringList found;
            for (const auto& each : deployments(sandbox, query))
                found.append(each[u"uid"].toString());
            return found.join(u' ');
        };
        QCOMPARE(uids({}), u"d4 d3 d2 d1"_s);
        QCOMPARE(uids({{u"limit"_s, u"2"_s}}), u"d4 d3"_s);
        QCOMPARE(uids({{u"limit"_s, u"1"_s}, {u"target"_s, u"production"_s}}), u"d3"_s);
        QCOMPARE(uids({{u"until"_s, QString::number(now - 2)}}), u"d2 d1"_s);
        QCOMPARE(get(sandbox, 0, u"/v6/deployments"_s, {{u"projectId"_s, u"docs"_s}}).status, 404);
    }

    void commitTextsSurviveTheWire() {
        Sandbox sandbox(frozen());
        const QStringList messages{u"one\n\ttwo\r\nthree"_s,    u"C:\\new \"x\" </script> \u0001\u007f"_s,
                                   u"Größe 日本語 🌱✨"_s,        u"half a pair at the end 🌱"_s.chopped(1),
                                   u"🌱🌱 inside"_s.remove(1, 2), u""_s};
        for (const QString& message : messages) {
            sandbox.world()->push(u"docs"_s, {.state = u"READY"_s, .commit = Commit{.message = message}});
            const QJsonValue meta = deployments(sandbox).at(0)[u"meta"];
            QCOMPARE(meta[u"githubCommitMessage"], QJsonValue(message));
            QVERIFY(meta[u"githubCommitRef"].isUndefined());
            QVERIFY(get(sandbox, 1, u"/v9/projects"_s).json.contains(u"pagination"));
        }
    }

    void redeployAnswersTheNewDeployment() {
        Sandbox sandbox(frozen());
        const SandboxAccount team = sandbox.accounts().at(1);
        const auto redeploy = [&](const QByteArray& uid) {
            return ask(sandbox, {.method = "POST",
                                 .path = u"/v13/deployments"_s,
                                 .query = {{u"forceNew"_s, u"1"_s}, {u"teamId"_s, team.teamId}},
                                 .authorization = bearer(team.token),
                                 .contentType = "application/json",
                                 .body = "{\"deploymentId\":" + uid + "}"});
        };
        const auto quotedUid = [&](const QString& project) {
            return '"' + sandbox.world()->project(project)->deployments.last().uid.toUtf8() + '"';
        };
        const Deployment source = sandbox.world()->project(u"docs"_s)->deployments.last();
        const Answer answer = redeploy(quotedUid(u"docs"_s));
        QCOMPARE(answer.status, 200);
        const Deployment& made = sandbox.world()->project(u"docs"_s)->deployments.first();
        QCOMPARE(answer.json[u"id"].toString(), made.uid);
        QVERIFY(made.uid != source.uid);
        QCOMPARE(made.state, u"QUEUED"_s);
        QCOMPARE(made.commit, source.commit);
        QCOMPARE(made.target, source.target);
        QCOMPARE(redeploy(quotedUid(u"journal"_s)).status, 404);  // another account's
        QCOMPARE(redeploy("\"dpl_x\"").status, 404);
        QCOMPARE(redeploy("nonsense").status, 400);
    }

    void otherServicesHaveTheirOwnRules() {
        Sandbox sandbox(frozen());
        sandbox.world()->setStatusIndicator(u"critical"_s);
        const Answer page = ask(sandbox, {.method = "GET", .path = u"/api/v2/status.json"_s});  // no token
        QCOMPARE(page.json[u"status"][u"indicator"].toString(), u"critical"_s);
        const auto zones = [&sandbox](const QByteArray& authorization) {
            return ask(sandbox, {.method = "GET",
                                 .path = u"/client/v4/zones"_s,
                                 .query = {{u"per_page"_s, u"50"_s}},
                                 .authorization = authorization});
        };
        QCOMPARE(zones(bearer(sandbox.cloudflareToken())).json[u"result"].toArray().size(),
                 sandbox.world()->zones().size());
        QCOMPARE(zones(bearer(sandbox.accounts().first().token)).status, 403);
        QCOMPARE(zones({}).status, 401);
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
        QCOMPARE(groups(analytics(sandbox, zone, u"2023-11-01"_s)).size(), 8);  // the limit
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
        const auto post = [&sandbox](const QString& control, const QByteArray& body) {
            return ask(sandbox, {.method = "POST", .path = u"/sandbox/"_s + control, .body = body});
        };
        const QString id =
            post(u"projects"_s, R"({"name":"shop","account":"Paper Heron"})").json[u"id"].toString();
        QCOMPARE(sandbox.world()->project(id)->account, 1);
        QCOMPARE(post(u"deploy"_s, R"({"project":"shop","state":"BUILDING","message":"Open"})").status, 201);
        QCOMPARE(post(u"state"_s, R"({"project":"*","state":"READY"})").json[u"changed"], QJsonValue(12));
        const Answer shown = ask(sandbox, {.method = "GET", .path = u"/sandbox/world"_s});
        const QJsonValue newest = shown.json[u"projects"].toArray().at(0)[u"newest"];
        QCOMPARE(newest[u"state"].toString(), u"READY"_s);
        QCOMPARE(newest[u"message"].toString(), u"Open"_s);
        post(u"speed"_s, R"({"speed":4})");
        QCOMPARE(sandbox.world()->speed(), 4.0);
        post(u"status"_s, R"({"indicator":"minor"})");
        QCOMPARE(sandbox.world()->statusIndicator(), u"minor"_s);
        post(u"tokens"_s, "{\"token\":\"" + sandbox.accounts().first().token.toUtf8() + "\"}");
        QCOMPARE(get(sandbox, 0, u"/v9/projects"_s).status, 401);
    }

    void controlsRefuseNonsense() {
        Sandbox sandbox(frozen());
        const auto refusal = [&sandbox](const QString& control, const QByteArray& body) {
            const Answer answer =
                ask(sandbox, {.method = "POST", .path = u"/sandbox/"_s + control, .body = body});
            return answer.json[u"error"].toString().isEmpty() ? 0 : answer.status;
        };
        QCOMPARE(refusal(u"nothing"_s, "{}"), 404);
        QCOMPARE(refusal(u"state"_s, "state=READY"), 400);
        QCOMPARE(refusal(u"state"_s, R"({"project":"*"})"), 400);
        QCOMPARE(refusal(u"deploy"_s, R"({"project":"x"})"), 404);
        QCOMPARE(refusal(u"speed"_s, R"({"speed":-1})"), 400);
        QCOMPARE(refusal(u"faults"_s, R"({"kind":"flood"})"), 400);
        QCOMPARE(refusal(u"projects"_s, R"({"name":"x","account":9})"), 400);
    }

    void faultsHitWhatTheyNameAndAsOftenAsTheySay() {
        Sandbox sandbox(frozen());
        const QString docs = sandbox.world()->project(u"docs"_s)->id;
        const QString domains = u"/v9/projects/docs/domains"_s;
        const auto poll = [&](const QString& id) {
            return get(sandbox, 1, u"/v6/deployments"_s, {{u"projectId"_s, id}}).status;
        };
        sandbox.faults().add({.pathPrefix = u"/v6/"_s, .projectId = docs, .times = 2, .status = 429});
        QCOMPARE(poll(u"storefront"_s), 200);
        QCOMPARE(poll(docs), 429);
        QCOMPARE(get(sandbox, 1, domains).status, 200);
        QCOMPARE(poll(docs), 429);
        QCOMPARE(poll(docs), 200);
        ask(sandbox, {.method = "POST",
                      .path = u"/sandbox/faults"_s,
                      .body = R"({"kind":"status","status":503,"path":"/v9/","project":"docs"})"});
        QCOMPARE(get(sandbox, 1, domains).status, 503);
        QCOMPARE(get(sandbox, 1, u"/v9/projects"_s).status, 200);
        ask(sandbox, {.method = "DELETE", .path = u"/sandbox/faults"_s});
        QCOMPARE(get(sandbox, 1, domains).status, 200);
    }

    void logIsBoundedAndLeavesTheControlsOut() {
        Sandbox sandbox(frozen());
        ask(sandbox, {.method = "GET", .path = u"/sandbox/world"_s});
        QCOMPARE(sandbox.log().total(), 0);
        const int over = RequestLog::capacity + 3;
        for (int index = 0; index < over; ++index)
            std::ignore = sandbox.answer({.method = "GET", .path = u"/v9/%1"_s.arg(index), .body = "body"});
        QCOMPARE(sandbox.log().total(), over);
        const QList<LoggedRequest> entries = sandbox.log().entries();
        QCOMPARE(entries.size(), RequestLog::capacity);
        QCOMPARE(entries.first().path, u"/v9/3"_s);
        QCOMPARE(entries.last().status, 401);
        QCOMPARE(entries.last().time, now);
        QCOMPARE(sandbox.log().entries(u"/v9/10002"_s).size(), 1);
        sandbox.log().clear();
        QVERIFY(sandbox.log().entries().isEmpty());
    }
};

QTEST_GUILESS_MAIN(SandboxServicesTest)
#include "SandboxServicesTest.moc"

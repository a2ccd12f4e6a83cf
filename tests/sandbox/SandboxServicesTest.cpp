#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <tuple>

#include "sandbox/Sandbox.h"
#include "tests/TestProgram.h"

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

}  // namespace

class SandboxServicesTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void projectListIsPaged() {
        for (const int projects : {0, 99, 100, 240}) {
            Sandbox sandbox(frozen({.accounts = 1, .projects = projects}));
            QStringList ids;
            Query query{{u"limit"_s, u"100"_s}};
            QJsonValue next;
            do {
                const Answer page = get(sandbox, 0, u"/v9/projects"_s, query);
                next = page.json[u"pagination"][u"next"];
                for (const auto& document : page.json[u"projects"].toArray())
                    ids.append(document[u"id"].toString());
                QVERIFY(next.isDouble() ? ids.size() % 100 == 0 : next.isNull());
                query = {{u"limit"_s, u"100"_s}, {u"until"_s, QString::number(next.toInteger())}};
            } while (next.isDouble());
            QCOMPARE(ids.size(), projects);
            QCOMPARE(ids, sandbox.world()->projectIds(0));
        }
    }

    void pagesAreAsHeavyAsRealOnes() {
        Sandbox sandbox(frozen({.accounts = 1, .projects = 100}));
        const Answer page = get(sandbox, 0, u"/v9/projects"_s, {{u"limit"_s, u"100"_s}});
        QVERIFY(page.size > 700'000 && page.size < 1'000'000);
    }

    void everyTokenOpensItsOwnScopeOnly() {
        Sandbox sandbox(frozen({.accounts = 3}));
        const auto status = [&sandbox](const QString& token, int account) {
            const Query query{{u"teamId"_s, sandbox.accounts().at(account).teamId}};
            const QByteArray authorization = bearer(token);
            return ask(sandbox, {"GET", u"/v9/projects"_s, query, authorization}).status;
        };
        const QString token = sandbox.accounts().at(1).token;
        QCOMPARE(status(token, 1), 200);
        QCOMPARE(status(token, 2), 403);
        QCOMPARE(status(sandbox.cloudflareToken(), 1), 401);
        sandbox.world()->setRevoked(token, true);
        QCOMPARE(status(token, 1), 401);
    }

    void deploymentsAreFilteredAndLimited() {
        Sandbox sandbox(frozen());
        for (const bool production : {true, false, true, false})
            sandbox.world()->push(u"docs"_s, {.state = u"READY"_s,
                                              .uid = production ? u"live"_s : u"preview"_s,
                                              .production = production});
        const auto uids = [&sandbox](const Query& query) {
            QStringList found;
            for (const auto& each : deployments(sandbox, query))
                found.append(each[u"uid"].toString());
            return found.join(u' ');
        };
        QCOMPARE(uids({{u"limit"_s, u"4"_s}}), u"preview live preview live"_s);
        QCOMPARE(uids({{u"limit"_s, u"1"_s}, {u"target"_s, u"production"_s}}), u"live"_s);
        QCOMPARE(get(sandbox, 0, u"/v6/deployments"_s, {{u"projectId"_s, u"docs"_s}}).status, 404);
    }

    void commitTextsSurviveTheWire() {
        Sandbox sandbox(frozen());
        for (const auto& message :
             {u"one\n\ttwo\r\nC:\\new \"x\" </script> \u0001\u007f"_s, u"Größe 日本語 🌱"_s, u""_s}) {
            sandbox.world()->push(u"docs"_s, {.state = u"READY"_s, .commit = Commit{.message = message}});
            const QJsonValue meta = deployments(sandbox).at(0)[u"meta"];
            QCOMPARE(meta[u"githubCommitMessage"], QJsonValue(message));
            QVERIFY(meta[u"githubCommitRef"].isUndefined());
        }
    }

    void statusPageIsOpenToAll() {
        Sandbox sandbox(frozen());
        sandbox.world()->setStatusIndicator(u"critical"_s);
        const Answer page = ask(sandbox, {.method = "GET", .path = u"/api/v2/status.json"_s});  // no token
        QCOMPARE(page.json[u"status"][u"indicator"].toString(), u"critical"_s);
    }

    void controlsReachTheWorldAndRefuseNonsense() {
        Sandbox sandbox(frozen());
        const auto post = [&sandbox](const QString& control, const QByteArray& body) {
            return ask(sandbox, {.method = "POST", .path = u"/sandbox/"_s + control, .body = body});
        };
        QCOMPARE(post(u"projects"_s, R"({"name":"shop","account":"Paper Heron"})").status, 201);
        QCOMPARE(post(u"deploy"_s, R"({"project":"shop","state":"BUILDING","message":"Open"})").status, 201);
        QCOMPARE(post(u"state"_s, R"({"project":"*","state":"READY"})").json[u"changed"], QJsonValue(12));
        const Deployment newest = sandbox.world()->project(u"shop"_s)->deployments.first();
        QCOMPARE(newest.state, u"READY"_s);
        QCOMPARE(newest.commit->message, u"Open"_s);
        post(u"tokens"_s, "{\"token\":\"" + sandbox.accounts().first().token.toUtf8() + "\"}");
        QCOMPARE(get(sandbox, 0, u"/v9/projects"_s).status, 401);

        QCOMPARE(post(u"nothing"_s, "{}").status, 404);
        QCOMPARE(post(u"state"_s, "state=READY").status, 400);
        QCOMPARE(post(u"deploy"_s, R"({"project":"x"})").status, 404);
        QCOMPARE(post(u"faults"_s, R"({"kind":"flood"})").status, 400);
    }

    void faultsHitWhatTheyNameAndAsOftenAsTheySay() {
        Sandbox sandbox(frozen());
        const QString docs = sandbox.world()->project(u"docs"_s)->id;
        const auto poll = [&](const QString& id) {
            return get(sandbox, 1, u"/v6/deployments"_s, {{u"projectId"_s, id}}).status;
        };
        const auto domains = [&] { return get(sandbox, 1, u"/v9/projects/docs/domains"_s).status; };
        sandbox.faults().add({.pathPrefix = u"/v6/"_s, .projectId = docs, .times = 1, .status = 429});
        QCOMPARE(poll(u"storefront"_s), 200);
        QCOMPARE(domains(), 200);
        QCOMPARE(poll(docs), 429);
        QCOMPARE(poll(docs), 200);
        ask(sandbox, {.method = "POST",
                      .path = u"/sandbox/faults"_s,
                      .body = R"({"kind":"status","status":503,"path":"/v9/","project":"docs"})"});
        QCOMPARE(domains(), 503);
        ask(sandbox, {.method = "DELETE", .path = u"/sandbox/faults"_s});
        QCOMPARE(domains(), 200);
    }

    void logIsBoundedAndLeavesTheControlsOut() {
        Sandbox sandbox(frozen());
        ask(sandbox, {.method = "GET", .path = u"/sandbox/world"_s});
        const int over = RequestLog::capacity + 3;
        for (int index = 0; index < over; ++index)
            std::ignore = sandbox.answer({.method = "GET", .path = u"/v9/%1"_s.arg(index)});
        QCOMPARE(sandbox.log().total(), over);
        QCOMPARE(sandbox.log().entries().size(), RequestLog::capacity);
        QCOMPARE(sandbox.log().entries().first().path, u"/v9/3"_s);
    }
};

TIDEMARK_TEST(SandboxServicesTest)
#include "SandboxServicesTest.moc"

#include <QCoroTask>
#include <QTemporaryDir>

#include "cloudflare/load/AnalyticsLoader.h"
#include "platform/base/TaskScope.h"
#include "platform/http/NetworkHttpClient.h"
#include "sandbox/Sandbox.h"
#include "tests/TestProgram.h"
#include "tests/fakes/FakeHttpClient.h"
#include "tests/fakes/ManualClock.h"

using namespace tidemark;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Reload = AnalyticsReload;

namespace {

const QString zonesTarget = u"/client/v4/zones?per_page=50"_s;
const QString trafficTarget = u"/client/v4/graphql"_s;

/// Two tracked projects, "docs" and "shop", and one that is not, "idle"; zones named after all three.
struct Scene {
    Scene() {
        state->setAllProjects({{u"1"_s, u"docs"_s}, {u"2"_s, u"idle"_s}, {u"3"_s, u"shop"_s}});
        state->setTrackedIds({u"1"_s, u"3"_s});
        setToken(u"tok"_s);
        answerZones(httpAnswer(200, R"({"result":[{"id":"1","name":"shop.a"},{"id":"2","name":"idle.a"},
                                                  {"id":"3","name":"docs.a"},{"id":"4","name":"docs.b"}]})"));
        http.answer(HttpMethod::post, trafficTarget, [this](const HttpRequest&) {
            return httpAnswer(http.count(HttpMethod::post, trafficTarget) == failing ? 429 : 200, "{}");
        });
    }

    void setToken(const QString& token) { state->setConfig(AppConfiguration{.cloudflareToken = token}); }
    void answerZones(const HttpResult& result) { http.answer(HttpMethod::get, zonesTarget, result); }

    TaskHandle load(Reload reload) {
        TaskHandle task = tasks.start([this, reload](std::stop_token stop) {
            return AnalyticsLoader(*state, http, clock, QUrl(u"https://api.example"_s)).load(reload, stop);
        });
        ManualClock::settle();
        return task;
    }

    /// The cards, the error's first line, and how many seconds ago the last load was.
    QString shown() {
        QStringList cards;
        for (const auto& card : state->analyticsCards())
            cards << card.zone.name + u'=' + card.projectName;
        const auto at = state->analyticsFetchedAt();
        const auto error = state->analyticsError().value_or(QString()).section(u'\n', 0, 0);
        return u"%1|%2|%3"_s.arg(cards.join(u' '), error,
                                 at ? QString::number((clock.now() - *at) / 1s) : u"never"_s);
    }

    QTemporaryDir folder;
    FakeHttpClient http;
    ManualClock clock;
    UserDefaults defaults{folder.filePath(u"defaults.ini"_s)};
    std::unique_ptr<AppState> state = std::make_unique<AppState>(defaults);
    qsizetype failing = 0;
    TaskScope tasks;
};

}  // namespace

class AnalyticsLoaderTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void cardsOfWhatItStartedWithArePublishedAtOnce() {
        Scene scene;
        scene.state->setAnalyticsError(u"old"_s);
        QStringList order;
        const auto note = [&](auto signal, const QString& what) {
            connect(scene.state.get(), signal, this, [&order, what] { order << what; });
        };
        note(&AppState::isLoadingAnalyticsChanged, u"loading"_s);
        note(&AppState::analyticsCardsChanged, u"cards"_s);
        note(&AppState::analyticsErrorChanged, u"error"_s);
        note(&AppState::analyticsFetchedAtChanged, u"time"_s);
        scene.http.hold(HttpMethod::get, zonesTarget);
        scene.load(Reload::ifStale);
        scene.load(Reload::always);  // one at a time
        scene.setToken(u"new"_s);
        scene.state->setTrackedIds({u"2"_s});
        scene.http.release(HttpMethod::get, zonesTarget);
        ManualClock::settle();
        QCOMPARE(scene.shown(), u"shop.a=shop docs.a=docs docs.b=docs||0"_s);
        QCOMPARE(order.join(u' '), u"loading cards error time loading"_s);
        QCOMPARE(scene.http.requests().size(), 4);
        for (const auto& request : scene.http.requests())
            QCOMPARE(request.headers.first().second, "Bearer tok");
    }

    void freshCardsAreKept() {
        Scene scene;
        const auto loadsAfter = [&](std::chrono::milliseconds time, Reload reload) {
            const auto before = scene.http.requests().size();
            scene.clock.advance(time);
            scene.load(reload);
            return scene.http.requests().size() > before;
        };
        QVERIFY(loadsAfter(0s, Reload::ifStale));
        QVERIFY(!loadsAfter(299'999ms, Reload::ifStale));
        QVERIFY(loadsAfter(1ms, Reload::ifStale));
        QVERIFY(loadsAfter(1s, Reload::always));
        scene.clock.setNow(scene.clock.now() - 1h);
        QVERIFY(loadsAfter(0s, Reload::ifStale));
    }

    void failuresKeepTheCardsThereAre() {
        Scene scene;
        scene.setToken({});
        scene.load(Reload::ifStale);
        QCOMPARE(scene.shown(), u"|No Cloudflare token.|never"_s);
        QVERIFY(scene.http.requests().isEmpty());

        scene.setToken(u"tok"_s);
        scene.failing = 2;
        scene.load(Reload::ifStale);
        QCOMPARE(scene.shown(), u"shop.a=shop docs.b=docs||0"_s);
        scene.answerZones(httpAnswer(403));
        scene.clock.advance(400s);
        scene.load(Reload::ifStale);
        QCOMPARE(scene.shown(), u"shop.a=shop docs.b=docs|Cloudflare rejected the token.|400"_s);
        scene.answerZones(httpAnswer(200, R"({"result":[]})"));
        scene.load(Reload::ifStale);
        QCOMPARE(scene.shown(), u"||0"_s);
        scene.answerZones(tl::unexpected(TransportError::offline));
        scene.load(Reload::always);
        QCOMPARE(scene.shown(), u"|%1|never"_s.arg(description(TransportError::offline)));
    }

    void aStoppedLoadEnds() {
        Scene scene;
        for (const auto& [method, target, shown] :
             {std::tuple(HttpMethod::get, zonesTarget, u"|The request was cancelled.|never"_s),
              std::tuple(HttpMethod::post, trafficTarget, u"||0"_s)}) {
            scene.http.hold(method, target);
            TaskHandle task = scene.load(Reload::ifStale);
            QVERIFY(scene.state->isLoadingAnalytics());
            QCOMPARE(scene.http.pendingCount(), 1);
            task.requestStop();
            ManualClock::settle();
            QCOMPARE(scene.shown(), shown);
            QVERIFY(!scene.state->isLoadingAnalytics());
            scene.http.release(method, target);
        }
        // The state may go first.
        scene.http.hold(HttpMethod::get, zonesTarget);
        scene.load(Reload::always);
        scene.state.reset();
    }

    void theSandboxIsLoaded() {
        Scene scene;
        const auto now = scene.clock.now().time_since_epoch().count();
        sandbox::Sandbox service({.speed = 0, .now = [now] { return now; }});
        QVERIFY(service.start());
        NetworkHttpClient http({.insecureLoopback = NetworkHttpClient::InsecureLoopback::allowed});
        const AnalyticsLoader loader(*scene.state, http, scene.clock, service.baseUrl());
        const auto load = [&] { QCoro::waitFor(loader.load(Reload::always, {})); };
        scene.state->setAllProjects(
            {{u"1"_s, u"docs"_s}, {u"2"_s, u"recipes"_s}, {u"3"_s, u"booking-widget"_s}});
        load();
        QCOMPARE(scene.shown(), u"|Cloudflare rejected the token.|never"_s);

        scene.setToken(service.cloudflareToken());
        load();  // the booking widget's zone fails
        QCOMPARE(scene.shown(), u"docs.example=docs docs.test=docs||0"_s);
        for (const auto& card : scene.state->analyticsCards()) {
            // At 23:13 in Berlin: the eighth day is that of UTC in which the week began.
            QCOMPARE(card.days.size(), 8);
            QCOMPARE(card.days.first().date, u"2023-11-07"_s);
            for (const auto& day : card.days)
                QVERIFY(day.uniques <= day.pageViews && day.pageViews < day.requests && day.bytes > 0);
        }
    }
};

TIDEMARK_TEST(AnalyticsLoaderTest)
#include "AnalyticsLoaderTest.moc"

#include <limits>

#include "popover/AnalyticsCard.h"
#include "tests/TestProgram.h"
#include "tests/popover/Person.h"

using namespace tidemark;

namespace {

DayStats day(const QString& date, qint64 views) {
    return {.date = date, .pageViews = views, .uniques = 1, .requests = 2, .threats = 0, .bytes = 1024};
}

ZoneAnalytics card(const QString& id, const QList<DayStats>& days) {
    return {.zone = {.id = id, .name = id + u".example"_s}, .projectName = id, .days = days};
}

/// The heights of the bars in sight, in order.
QList<qreal> barHeights(const Person& person) {
    QList<qreal> heights;
    for (QQuickItem* item : visibleItems(person.view->rootObject()))
        if (const QVariant day = item->property("day"); day.canConvert<DayBar>())
            heights.append(day.value<DayBar>().height);
    return heights;
}

}  // namespace

class AnalyticsPanelTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(u"^(?!This plugin does not support)"_s)); }

    void showsOneOfFourContents() {
        Person person;
        person.show();
        person.click(u"Analytics"_s);
        const QString nothing = u"No matching Cloudflare zones found.\nCheck your token in Preferences."_s;
        const auto seen = [&person, &nothing] {
            QStringList contents;
            for (const QString& name : {u"Loading analytics…"_s, nothing, u"Refused"_s, u"shop, "_s})
                if (person.see(name))
                    contents.append(name);
            return contents;
        };
        QCOMPARE(seen(), QStringList{nothing});
        person.state.setAnalyticsError(u"Refused"_s);
        person.rest();
        QCOMPARE(seen(), QStringList{u"Refused"_s});
        person.state.setIsLoadingAnalytics(true);
        person.rest();
        QCOMPARE(seen(), QStringList{u"Loading analytics…"_s});
        // Cards stay while they are loaded again, and whatever came of that.
        person.state.setAnalyticsCards({card(u"shop"_s, {day(u"2025-03-09"_s, 1)})});
        person.rest();
        QCOMPARE(seen(), QStringList{u"shop, "_s});
        person.state.setIsLoadingAnalytics(false);
        person.rest();
        QCOMPARE(seen(), QStringList{u"shop, "_s});
        QCOMPARE(person.view->width(), 268);
    }

    void expandedCardShowsItsWeek() {
        Person person;
        const qint64 most = std::numeric_limits<qint64>::max();
        person.state.setAnalyticsCards(
            {card(u"shop"_s, {day(u"2025-03-09"_s, 100), day(u"2025-03-10"_s, 50), day(u"today"_s, 0)}),
             card(u"idle"_s, QList<DayStats>(7, day(u"2025-03-09"_s, 0))),
             card(u"huge"_s, {day(u"2025-03-09"_s, most), day(u"2025-03-10"_s, most)}), card(u"idle"_s, {})});
        person.show();
        person.click(u"Analytics"_s);
        QVERIFY(person.see(u"shop, shop.example, 150 views, 3 visitors"_s));
        person.toggleRow(u"shop"_s);
        QCOMPARE(barHeights(person), (QList<qreal>{36, 18, 3}));
        for (const QString& name : {u"2025-03-10: 50 views"_s, u"today: 0 views"_s, u"Requests: 6"_s,
                                    u"Bandwidth: 3.0 KB"_s, u"Threats: 0"_s})
            QVERIFY2(person.see(name), qPrintable(name));
        person.toggleRow(u"shop"_s);
        person.toggleRow(u"idle"_s);
        QCOMPARE(barHeights(person), QList<qreal>(7, 3));
        // What is left and entered again begins folded.
        person.click(u"Deployments"_s);
        person.click(u"Analytics"_s);
        QVERIFY(barHeights(person).isEmpty());
        QVERIFY(person.see(u"huge, huge.example, %1 views"_s.arg(most)));
    }

    void loadsWhileItIsShown() {
        Person person;
        person.show();
        QVERIFY(person.loads.isEmpty());
        person.click(u"Analytics"_s);
        using Reload = AnalyticsReload;
        QCOMPARE(person.loads, QList{Reload::ifStale});
        QVERIFY(!person.latestLoad.stop_requested());
        const std::stop_token shown = person.latestLoad;
        person.click(u"Refresh"_s);
        QCOMPARE(person.loads, (QList{Reload::ifStale, Reload::always}));
        person.click(u"Deployments"_s);
        QVERIFY(shown.stop_requested());
        QVERIFY(!person.latestLoad.stop_requested());
        person.click(u"Analytics"_s);
        person.click(u"Cloudflare dashboard"_s);
        QCOMPARE(person.analyticsDashboardOpened, 1);
        person.view->close();
        QVERIFY(person.latestLoad.stop_requested());
        QCOMPARE(person.loads.size(), 3);
    }
};

TIDEMARK_TEST_MAIN(AnalyticsPanelTest, runViewTest<AnalyticsPanelTest>)

#include "AnalyticsPanelTest.moc"

#include <QDateTime>
#include <QTest>

#include "vercel/Deployment.h"

using namespace tidemark;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

// 2023-11-15 12:00:00 in Berlin, the tests' time zone.
constexpr Clock::TimePoint noon{1700046000000ms};

Deployment createdBefore(std::chrono::milliseconds age) {
    return {.created = (noon - age).time_since_epoch().count()};
}

Deployment built(const QString& state, qint64 created, std::optional<qint64> ready) {
    return {.created = created, .ready = ready, .state = state};
}

}  // namespace

class DeploymentTextsTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void agesAreShort_data() {
        QTest::addColumn<qint64>("age");
        QTest::addColumn<QString>("text");
        QTest::newRow("future") << qint64{-2500} << u"-2s ago"_s;
        QTest::newRow("now") << qint64{999} << u"0s ago"_s;
        QTest::newRow("seconds") << qint64{59'999} << u"59s ago"_s;
        QTest::newRow("minute") << qint64{60'000} << u"1m ago"_s;
        QTest::newRow("minutes") << qint64{3'599'999} << u"59m ago"_s;
        QTest::newRow("hour") << qint64{3'600'000} << u"1h ago"_s;
        QTest::newRow("hours") << qint64{86'399'999} << u"23h ago"_s;
        QTest::newRow("day") << qint64{86'400'000} << u"1d ago"_s;
    }

    void agesAreShort() {
        QFETCH(const qint64, age);
        QTEST(createdBefore(std::chrono::milliseconds(age)).relativeAge(noon), "text");
    }

    void pushTimesAreWords_data() {
        QTest::addColumn<qint64>("age");
        QTest::addColumn<QString>("text");
        QTest::newRow("future") << -qint64{7'200'000} << u"just now"_s;
        QTest::newRow("just now") << qint64{59'999} << u"just now"_s;
        QTest::newRow("a minute") << qint64{119'000} << u"1 minute ago"_s;
        QTest::newRow("minutes") << qint64{300'000} << u"5 minutes ago"_s;
        QTest::newRow("since midnight") << qint64{43'200'000} << u"12 hours ago"_s;
        QTest::newRow("older") << qint64{259'200'000} << u"nov 12, 2023 at 12:00 PM"_s;
    }

    void pushTimesAreWords() {
        QFETCH(const qint64, age);
        QFETCH(QString, text);
        QString actual = createdBefore(std::chrono::milliseconds(age)).pushedAtDescription(noon);
        // How date and time are joined, and the space before PM, differ between versions of the locale data.
        const auto normalised = [](QString phrase) {
            return phrase.replace(u'\u202f', u' ').replace(u", 1"_s, u" at 1"_s);
        };
        QCOMPARE(normalised(actual), normalised(text));
    }

    void yesterdayHasAWord() {
        const QDateTime pushed(QDate::currentDate().addDays(-1), QTime(19, 25));
        const Deployment deployment{.created = pushed.toMSecsSinceEpoch()};
        const QString phrase = deployment.pushedAtDescription(SystemClock().now());
        QVERIFY2(phrase.startsWith("yesterday"_L1), qPrintable(phrase));
        QVERIFY2(phrase.contains("7:25"_L1), qPrintable(phrase));
    }

    void buildDurationsOfReadyDeploymentsOnly_data() {
        QTest::addColumn<QString>("state");
        QTest::addColumn<qint64>("duration");
        QTest::addColumn<QString>("text");
        QTest::newRow("seconds") << u"READY"_s << qint64{59'999} << u"Built in 59s"_s;
        QTest::newRow("instant") << u"READY"_s << qint64{1} << u"Built in 0s"_s;
        QTest::newRow("minute") << u"READY"_s << qint64{60'000} << u"Built in 1m"_s;
        QTest::newRow("both") << u"READY"_s << qint64{61'500} << u"Built in 1m 1s"_s;
        QTest::newRow("hour") << u"READY"_s << qint64{3'600'000} << u"Built in 60m"_s;
        QTest::newRow("equal times") << u"READY"_s << qint64{0} << QString();
        QTest::newRow("backwards") << u"READY"_s << qint64{-5} << QString();
        QTest::newRow("failed") << u"ERROR"_s << qint64{60'000} << QString();
        QTest::newRow("mixed case") << u"Ready"_s << qint64{60'000} << QString();
    }

    void buildDurationsOfReadyDeploymentsOnly() {
        QFETCH(const QString, state);
        QFETCH(const qint64, duration);
        QTEST(
            built(state, 1'700'000'000'000, 1'700'000'000'000 + duration).buildDuration().value_or(QString()),
            "text");
    }

    void hostileTimesGiveTexts() {
        const auto lowest = std::numeric_limits<qint64>::min();
        const auto highest = std::numeric_limits<qint64>::max();
        QVERIFY(!built(u"READY"_s, 5, std::nullopt).buildDuration());
        QCOMPARE(built(u"READY"_s, lowest, highest).buildDuration(), u"Built in 307445734561825m 51s"_s);
        for (const qint64 created : {lowest, highest, qint64{0}}) {
            const Deployment deployment{.created = created};
            QVERIFY(!deployment.relativeAge(noon).isEmpty());
            QVERIFY(!deployment.pushedAtDescription(noon).isEmpty());
        }
    }

    void theHostShownIsACustomOneIfThereIsOne() {
        const auto domain = [](const QList<QString>& alias) {
            return Deployment{.alias = alias}.productionDomain();
        };
        QCOMPARE(domain({u"a.vercel.app"_s, u"b.vercel.app.example.org"_s, u"c.example.org"_s}),
                 u"c.example.org"_s);
        QCOMPARE(domain({u"a.vercel.app"_s, u"b.vercel.app"_s}), u"a.vercel.app"_s);
        QVERIFY(!domain({}));
        QVERIFY(!Deployment().productionDomain());
    }

    void statesHaveTextsAndColours() {
        const auto roundTrips = [](DeploymentState state) {
            return deploymentStateFromRawText(rawText(state)) == state;
        };
        for (int i = 0; i <= static_cast<int>(DeploymentState::unknown); ++i)
            QVERIFY(roundTrips(static_cast<DeploymentState>(i)));
        for (const auto& text : {u"Ready"_s, u"ready"_s, u"DELETED"_s, u"UNKNOWN"_s, u" READY"_s, QString()})
            QVERIFY(!deploymentStateFromRawText(text));
        QCOMPARE(displayLabel(DeploymentState::canceled), u"🚫 Canceled"_s);
        QCOMPARE(displayLabel(DeploymentState::error), u"❌ Failed"_s);
        QCOMPARE(color(DeploymentState::queued), color(DeploymentState::building));
        QCOMPARE(color(DeploymentState::canceled), QColor(64, 64, 64));
        QCOMPARE(Deployment{.state = u"Canceled"_s}.deploymentState(), DeploymentState::unknown);
    }
};

QTEST_GUILESS_MAIN(DeploymentTextsTest)
#include "DeploymentTextsTest.moc"

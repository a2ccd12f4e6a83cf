#include <QDateTime>
#include <QRegularExpression>
#include <QTemporaryDir>

#include "presentation/DateFormat.h"
#include "presentation/DeploymentTexts.h"
#include "presentation/StatePresentation.h"
#include "tests/TestProgram.h"

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
    void datesAreThoseOfTheZoneThatTheUserIsIn() {
        const auto shown = [] { return DateFormat::exact(noon); };
        const QString inBerlin = shown();
        qputenv("TZ", "Asia/Tokyo");
        const QString inTokyo = shown();
        qputenv("TZ", "Europe/Berlin");
        QVERIFY2(inBerlin.contains(u"12:00:00"_s), qPrintable(inBerlin));
        QVERIFY2(inTokyo.contains(u"8:00:00"_s), qPrintable(inTokyo));
        QCOMPARE(shown(), inBerlin);
    }

    void agesAreShort() {
        const auto age = [](auto time) { return relativeAge(createdBefore(time), noon); };
        QCOMPARE(age(-2500ms), u"-2s ago"_s);
        QCOMPARE(age(59'999ms), u"59s ago"_s);
        QCOMPARE(age(1min), u"1m ago"_s);
        QCOMPARE(age(3'599'999ms), u"59m ago"_s);
        QCOMPARE(age(86'399'999ms), u"23h ago"_s);
        QCOMPARE(age(24h), u"1d ago"_s);
    }

    void pushTimesAreWords() {
        const auto pushed = [](auto time) { return pushedAtDescription(createdBefore(time), noon); };
        QCOMPARE(pushed(-2h), u"just now"_s);
        QCOMPARE(pushed(59'999ms), u"just now"_s);
        QCOMPARE(pushed(119s), u"1 minute ago"_s);
        QCOMPARE(pushed(12h), u"12 hours ago"_s);  // since midnight
        // How date and time are joined, and the space before PM, differ between versions of the locale data.
        const QRegularExpression older(u"^nov 12, 2023(,| at) 12:00[ \u202f]PM$"_s);
        QVERIFY2(older.match(pushed(72h)).hasMatch(), qPrintable(pushed(72h)));
    }

    void yesterdayHasAWord() {
        const QDateTime pushed(QDate::currentDate().addDays(-1), QTime(19, 25));
        const Deployment deployment{.created = pushed.toMSecsSinceEpoch()};
        const QString phrase = pushedAtDescription(deployment, SystemClock().now());
        QVERIFY2(phrase.startsWith("yesterday"_L1), qPrintable(phrase));
        QVERIFY2(phrase.contains("7:25"_L1), qPrintable(phrase));
    }

    void buildDurationsOfReadyDeploymentsOnly() {
        const auto duration = [](std::chrono::milliseconds time, const QString& state = u"READY"_s) {
            return buildDuration(built(state, 1'700'000'000'000, 1'700'000'000'000 + time.count()));
        };
        QCOMPARE(duration(59'999ms), u"Built in 59s"_s);
        QCOMPARE(duration(1min), u"Built in 1m"_s);
        QCOMPARE(duration(61'500ms), u"Built in 1m 1s"_s);
        QCOMPARE(duration(1h), u"Built in 60m"_s);
        QVERIFY(!duration(0ms));
        QVERIFY(!duration(1min, u"Ready"_s));
    }

    void hostileTimesGiveTexts() {
        const auto lowest = std::numeric_limits<qint64>::min();
        const auto highest = std::numeric_limits<qint64>::max();
        QVERIFY(!buildDuration(built(u"READY"_s, 5, std::nullopt)));
        QCOMPARE(buildDuration(built(u"READY"_s, lowest, highest)), u"Built in 307445734561825m 51s"_s);
        for (const qint64 created : {lowest, highest, qint64{0}}) {
            const Deployment deployment{.created = created};
            QVERIFY(!relativeAge(deployment, noon).isEmpty());
            QVERIFY(!pushedAtDescription(deployment, noon).isEmpty());
        }
    }

    void stalenessIsTold() {
        const QTemporaryDir folder;
        UserDefaults defaults(folder.filePath(u"defaults.ini"_s));
        AppState state(defaults);
        QCOMPARE(stalenessDescription(state, u"p"_s, noon),
                 u"Not successfully checked since Tidemark started."_s);
        const auto checkedBefore = [&state](std::chrono::seconds age) {
            state.setLastCheckedAt(u"p"_s, noon - age);
            return stalenessDescription(state, u"p"_s, noon);
        };
        const QString text = u"Showing the status from the last successful check, %1 ago."_s;
        QCOMPARE(checkedBefore(-5s), text.arg(u"-5s"_s));
        QCOMPARE(checkedBefore(59s), text.arg(u"59s"_s));
        QCOMPARE(checkedBefore(60s), text.arg(u"1m"_s));
        QCOMPARE(checkedBefore(3599s), text.arg(u"59m"_s));
        QCOMPARE(checkedBefore(200'000s), text.arg(u"55h"_s));
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
        for (int i = 0; i <= static_cast<int>(DeploymentState::unknown); ++i) {
            const auto state = static_cast<DeploymentState>(i);
            QCOMPARE(deploymentStateFromRawText(rawText(state)), state);
        }
        for (const auto& text : {u"Ready"_s, u"UNKNOWN"_s, u" READY"_s, QString()})
            QVERIFY(!deploymentStateFromRawText(text));
        QCOMPARE(displayLabel(DeploymentState::canceled), u"🚫 Canceled"_s);
        QCOMPARE(displayLabel(DeploymentState::error), u"❌ Failed"_s);
        QCOMPARE(color(DeploymentState::queued), QColor(230, 126, 0));
        QCOMPARE(color(DeploymentState::canceled), QColor(64, 64, 64));
        QCOMPARE(Deployment{.state = u"Canceled"_s}.deploymentState(), DeploymentState::unknown);
    }
};

TIDEMARK_TEST(DeploymentTextsTest)
#include "DeploymentTextsTest.moc"

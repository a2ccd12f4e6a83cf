#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include "state/AppState.h"
#include "tests/fakes/ManualClock.h"

using namespace tidemark;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

Deployment inState(const QString& state) {
    return {.id = u"d"_s, .created = 1, .state = state};
}

QStringList names(const QList<VercelProject>& projects) {
    QStringList result;
    for (const auto& project : projects)
        result << project.name;
    return result;
}

}  // namespace

class AppStateTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        m_folder = std::make_unique<QTemporaryDir>();
        restart();
    }

    void cleanup() {
        m_state.reset();
        m_defaults.reset();
    }

    void overallStateAndCounts_data() {
        QTest::addColumn<QStringList>("states");
        QTest::addColumn<DeploymentState>("overall");
        QTest::addColumn<QList<int>>("counts");  // live, building, error
        QTest::newRow("none polled") << QStringList{} << DeploymentState::unknown << QList{0, 0, 0};
        QTest::newRow("error first") << QStringList{u"READY"_s, u"BUILDING"_s, u"ERROR"_s, u"CANCELED"_s}
                                     << DeploymentState::error << QList{1, 1, 1};
        QTest::newRow("then canceled") << QStringList{u"READY"_s, u"CANCELED"_s, u"QUEUED"_s}
                                       << DeploymentState::canceled << QList{1, 1, 0};
        QTest::newRow("queued is building")
            << QStringList{u"READY"_s, u"QUEUED"_s} << DeploymentState::building << QList{1, 1, 0};
        QTest::newRow("initializing is building")
            << QStringList{u"INITIALIZING"_s, u"nonsense"_s} << DeploymentState::building << QList{0, 1, 0};
        QTest::newRow("all ready") << QStringList{u"READY"_s, u"READY"_s} << DeploymentState::ready
                                   << QList{2, 0, 0};
        QTest::newRow("one unknown") << QStringList{u"READY"_s, u"Ready"_s} << DeploymentState::unknown
                                     << QList{1, 0, 0};
    }

    void overallStateAndCounts() {
        QFETCH(const QStringList, states);
        QList<VercelProject> projects{{u"unpolled"_s, u"x"_s, u"a"_s}, {u"untracked"_s, u"y"_s, u"a"_s}};
        for (int i = 0; i < states.size(); ++i)
            projects.append({u"p%1"_s.arg(i), u"n"_s, u"a"_s});
        m_state->integrateProjects(projects, u"a"_s);
        m_state->setTracked(u"untracked"_s, false);
        m_state->setDeployment(u"untracked"_s, inState(u"ERROR"_s));
        m_state->setDeployment(u"vanished"_s, inState(u"ERROR"_s));
        for (int i = 0; i < states.size(); ++i)
            m_state->setDeployment(u"p%1"_s.arg(i), inState(states.at(i)));
        QTEST(m_state->overallState(), "overall");
        QTEST((QList{m_state->liveCount(), m_state->buildingCount(), m_state->errorCount()}), "counts");
    }

    void stalenessIsTold_data() {
        QTest::addColumn<int>("age");
        QTest::addColumn<QString>("ago");
        QTest::newRow("future") << -5 << u"-5s ago"_s;
        QTest::newRow("59 s") << 59 << u"59s ago"_s;
        QTest::newRow("60 s") << 60 << u"1m ago"_s;
        QTest::newRow("3599 s") << 3599 << u"59m ago"_s;
        QTest::newRow("an hour") << 3600 << u"1h ago"_s;
        QTest::newRow("days") << 200'000 << u"55h ago"_s;
    }

    void stalenessIsTold() {
        QFETCH(const int, age);
        QFETCH(const QString, ago);
        QCOMPARE(m_state->stalenessDescription(u"p"_s),
                 u"Not successfully checked since Tidemark started."_s);
        m_state->setLastCheckedAt(u"p"_s, m_clock.now() - std::chrono::seconds(age));
        QCOMPARE(m_state->stalenessDescription(u"p"_s),
                 u"Showing the status from the last successful check, %1."_s.arg(ago));
        QCOMPARE(m_state->stalenessDescription(u"q"_s),
                 u"Not successfully checked since Tidemark started."_s);
    }

    void projectsAreSortedByCharacterCode() {
        // U+FF21 comes before the emoji, although the emoji's UTF-16 units are smaller.
        const QStringList ordered{u"B"_s, u"a"_s, u"a-b"_s, u"ab"_s, u"é"_s, u"\uff21"_s, u"\U0001F680"_s};
        QList<VercelProject> projects;
        for (const auto& name :
             {ordered[6], ordered[3], ordered[5], ordered[0], ordered[4], ordered[2], ordered[1]})
            projects.append({name, name, u"a"_s});
        m_state->integrateProjects(projects, u"a"_s);
        QCOMPARE(names(m_state->allProjects()), ordered);
        QCOMPARE(names(m_state->trackedProjects()), ordered);
    }

    void integratingReplacesOneAccountAndTracksWhatIsNew() {
        m_state->integrateProjects({{u"1"_s, u"same"_s, u"A"_s}, {u"2"_s, u"two"_s, u"A"_s}}, u"A"_s);
        m_state->integrateProjects({{u"3"_s, u"same"_s, u"B"_s}}, u"B"_s);
        m_state->setTracked(u"2"_s, false);
        QSignalSpy trackedChanges(m_state.get(), &AppState::trackedIdsChanged);
        QSignalSpy listChanges(m_state.get(), &AppState::allProjectsChanged);

        // 1 moves from A to B; 2 stays untracked; nothing is new.
        m_state->integrateProjects({{u"3"_s, u"same"_s, u"B"_s}, {u"1"_s, u"same"_s, u"B"_s}}, u"B"_s);
        m_state->integrateProjects({{u"2"_s, u"two"_s, u"A"_s}}, u"A"_s);
        QCOMPARE(m_state->allProjects(),
                 (QList<VercelProject>{
                     {u"3"_s, u"same"_s, u"B"_s}, {u"1"_s, u"same"_s, u"B"_s}, {u"2"_s, u"two"_s, u"A"_s}}));
        QCOMPARE(m_state->trackedIds(), (QSet{u"1"_s, u"3"_s}));
        QCOMPARE(listChanges.count(), 2);
        QCOMPARE(trackedChanges.count(), 0);

        // An empty list clears the account.
        m_state->integrateProjects({}, u"B"_s);
        QCOMPARE(names(m_state->allProjects()), QStringList{u"two"_s});
        QCOMPARE(m_state->trackedIds(), (QSet{u"1"_s, u"3"_s}));  // remembered, and ignored
    }

    void choicesSurviveARestart() {
        m_state->integrateProjects({{u"1"_s, u"one"_s, u"A"_s}, {u"2"_s, u"two"_s, u"A"_s}}, u"A"_s);
        m_state->setTracked(u"1"_s, false);
        m_state->setIndividual(u"2"_s, true);
        m_state->setProductionOnly(true);
        m_state->setProductionDomain(u"2"_s, u"two.example"_s);
        restart();
        QCOMPARE(names(m_state->allProjects()), (QStringList{u"one"_s, u"two"_s}));
        QCOMPARE(m_state->trackedIds(), QSet{u"2"_s});
        QCOMPARE(m_state->individualIds(), QSet{u"2"_s});
        QVERIFY(m_state->productionOnly());
        QCOMPARE(m_state->productionDomains(), (QHash<QString, QString>{{u"2"_s, u"two.example"_s}}));
        QVERIFY(m_state->domainsCheckedThisSession().isEmpty());
        m_state->integrateProjects({{u"1"_s, u"one"_s, u"A"_s}}, u"A"_s);
        QCOMPARE(m_state->trackedIds(), QSet{u"2"_s});  // seen in the earlier run
    }

    void brokenDefaultsStartEmpty() {
        cleanup();
        {
            QSettings settings(path(), QSettings::IniFormat);
            settings.setValue(u"cachedProjects"_s, QByteArray("{broken"));
            settings.setValue(u"productionDomains"_s,
                              QVariantMap{{u"1"_s, u"a"_s}, {u"2"_s, QVariantList{1}}});
            settings.setValue(u"trackedIds"_s, QStringList{u"1"_s});
        }
        restart();
        QVERIFY(m_state->allProjects().isEmpty());
        QVERIFY(m_state->productionDomains().isEmpty());
        QCOMPARE(m_state->trackedIds(), QSet{u"1"_s});
        QVERIFY(!m_state->config());
        QCOMPARE(m_state->vercelPlatformStatus(), VercelStatusLevel::unknown);
    }

    void pinningTracksAndUntrackingUnpins() {
        m_state->setIndividual(u"p"_s, true);
        QCOMPARE(m_state->trackedIds(), QSet{u"p"_s});
        m_state->setIndividual(u"p"_s, false);
        QCOMPARE(m_state->trackedIds(), QSet{u"p"_s});
        m_state->setIndividual(u"p"_s, true);
        m_state->setTracked(u"p"_s, false);
        QVERIFY(m_state->individualIds().isEmpty());
    }

    void observersHearOfEachFieldByItsRule() {
        AppState& state = *m_state;
        const auto changes = [&state](auto signal, auto&& change) {
            QSignalSpy spy(&state, signal);
            change();
            return spy.count();
        };
        using Ids = AppState::ProjectIds;
        using Texts = AppState::ByProject<QString>;

        // Whole values: told when they differ.
        const auto assignsTwice = [&changes](auto signal, auto&& change) {
            const auto first = changes(signal, change);
            return first == 1 && changes(signal, change) == 0;
        };
        QVERIFY(assignsTwice(&AppState::vercelPlatformStatusChanged,
                             [&] { state.setVercelPlatformStatus(VercelStatusLevel::minor); }));
        QVERIFY(assignsTwice(&AppState::analyticsErrorChanged, [&] { state.setAnalyticsError(u"e"_s); }));
        QVERIFY(
            assignsTwice(&AppState::isLoadingAnalyticsChanged, [&] { state.setIsLoadingAnalytics(true); }));
        QVERIFY(assignsTwice(&AppState::analyticsFetchedAtChanged,
                             [&] { state.setAnalyticsFetchedAt(m_clock.now()); }));
        QVERIFY(assignsTwice(&AppState::productionOnlyChanged, [&] { state.setProductionOnly(true); }));
        QVERIFY(assignsTwice(&AppState::productionDomainsChanged, [&] {
            state.setProductionDomains(Texts{{u"p"_s, u"d"_s}});
        }));
        QVERIFY(assignsTwice(&AppState::domainsCheckedThisSessionChanged,
                             [&] { state.setDomainsCheckedThisSession(Ids{u"p"_s}); }));
        QVERIFY(assignsTwice(&AppState::errorsChanged, [&] { state.setErrors(Texts{{u"p"_s, u"e"_s}}); }));
        QVERIFY(assignsTwice(&AppState::lastCheckedAtChanged, [&] {
            state.setLastCheckedAt({{u"p"_s, m_clock.now()}});
        }));
        QVERIFY(
            assignsTwice(&AppState::emptyProjectIdsChanged, [&] { state.setEmptyProjectIds(Ids{u"p"_s}); }));
        QVERIFY(assignsTwice(&AppState::isLoadingProjectsChanged, [&] { state.setIsLoadingProjects(true); }));
        QVERIFY(assignsTwice(&AppState::trackedIdsChanged, [&] { state.setTrackedIds(Ids{u"p"_s}); }));
        QVERIFY(assignsTwice(&AppState::individualIdsChanged, [&] { state.setIndividualIds(Ids{u"p"_s}); }));

        // Entries and the rest: always told.
        const auto tellsTwice = [&changes](auto signal, auto&& change) {
            const auto first = changes(signal, change);
            return first == 1 && changes(signal, change) == 1;
        };
        QVERIFY(tellsTwice(&AppState::allProjectsChanged, [&] { state.setAllProjects({}); }));
        QVERIFY(tellsTwice(&AppState::deploymentsChanged,
                           [&] { state.setDeployment(u"p"_s, inState(u"READY"_s)); }));
        QVERIFY(
            tellsTwice(&AppState::recentDeploymentsChanged, [&] { state.setRecentDeployments(u"p"_s, {}); }));
        QVERIFY(tellsTwice(&AppState::deploymentsChanged, [&] { state.setDeployments({}); }));
        QVERIFY(tellsTwice(&AppState::recentDeploymentsChanged, [&] { state.setRecentDeployments({}); }));
        QVERIFY(tellsTwice(&AppState::analyticsCardsChanged, [&] { state.setAnalyticsCards({}); }));
        QVERIFY(tellsTwice(&AppState::configChanged, [&] { state.setConfig(AppConfiguration()); }));
        QVERIFY(tellsTwice(&AppState::redeployHandlerChanged, [&] { state.setRedeployHandler({}); }));
        QVERIFY(tellsTwice(&AppState::productionDomainsChanged,
                           [&] { state.setProductionDomain(u"p"_s, u"d"_s); }));
        QVERIFY(tellsTwice(&AppState::domainsCheckedThisSessionChanged,
                           [&] { state.insertDomainChecked(u"p"_s); }));
        QVERIFY(tellsTwice(&AppState::errorsChanged, [&] { state.setError(u"p"_s, u"e"_s); }));
        QVERIFY(tellsTwice(&AppState::errorsChanged, [&] { state.removeError(u"none"_s); }));
        QVERIFY(tellsTwice(&AppState::lastCheckedAtChanged,
                           [&] { state.setLastCheckedAt(u"p"_s, m_clock.now()); }));
        QVERIFY(tellsTwice(&AppState::emptyProjectIdsChanged, [&] { state.insertEmptyProject(u"p"_s); }));
        QVERIFY(tellsTwice(&AppState::emptyProjectIdsChanged, [&] { state.removeEmptyProject(u"p"_s); }));
        QVERIFY(tellsTwice(&AppState::trackedIdsChanged, [&] { state.setTracked(u"p"_s, true); }));
        QVERIFY(tellsTwice(&AppState::individualIdsChanged, [&] { state.setIndividual(u"p"_s, false); }));
    }

    void equalAssignmentsAreStillPersisted() {
        m_state->setProductionOnly(true);
        m_state->setTrackedIds({u"p"_s});
        m_defaults->waitForWrites();
        QVERIFY(QFile::remove(path()));
        m_state->setProductionOnly(true);
        m_state->setTrackedIds({u"p"_s});
        restart();
        QVERIFY(m_state->productionOnly());
        QCOMPARE(m_state->trackedIds(), QSet{u"p"_s});
    }

private:
    [[nodiscard]] QString path() const { return m_folder->filePath(u"defaults.ini"_s); }

    void restart() {
        cleanup();
        m_defaults = std::make_unique<UserDefaults>(path());
        m_state = std::make_unique<AppState>(*m_defaults, m_clock);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    ManualClock m_clock;
    std::unique_ptr<UserDefaults> m_defaults;
    std::unique_ptr<AppState> m_state;
};

QTEST_GUILESS_MAIN(AppStateTest)
#include "AppStateTest.moc"

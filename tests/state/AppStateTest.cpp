#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <functional>

#include "state/AppState.h"
#include "tests/TestProgram.h"

using namespace tidemark;
using namespace Qt::StringLiterals;

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

    void overallStateAndCounts() {
        using enum DeploymentState;
        // The counts of live, building and failed ones.
        const QList<std::tuple<QStringList, DeploymentState, QList<int>>> rows{
            {{}, unknown, {0, 0, 0}},
            {{u"READY"_s, u"BUILDING"_s, u"ERROR"_s, u"CANCELED"_s}, error, {1, 1, 1}},
            {{u"READY"_s, u"CANCELED"_s, u"QUEUED"_s}, canceled, {1, 1, 0}},
            {{u"READY"_s, u"QUEUED"_s}, building, {1, 1, 0}},
            {{u"INITIALIZING"_s, u"nonsense"_s}, building, {0, 1, 0}},
            {{u"READY"_s, u"READY"_s}, ready, {2, 0, 0}},
            {{u"READY"_s, u"Ready"_s}, unknown, {1, 0, 0}}};
        for (const auto& [states, overall, counts] : rows) {
            restart();
            QList<VercelProject> projects{{u"unpolled"_s, u"x"_s, u"a"_s}, {u"untracked"_s, u"y"_s, u"a"_s}};
            for (int i = 0; i < states.size(); ++i)
                projects.append({u"p%1"_s.arg(i), u"n"_s, u"a"_s});
            m_state->integrateProjects(projects, u"a"_s);
            m_state->setTracked(u"untracked"_s, false);
            for (const auto& id : {u"untracked"_s, u"vanished"_s})
                m_state->setDeployment(id, inState(u"ERROR"_s));
            for (int i = 0; i < states.size(); ++i)
                m_state->setDeployment(u"p%1"_s.arg(i), inState(states.at(i)));
            QCOMPARE(m_state->overallState(), overall);
            QCOMPARE((QList{m_state->liveCount(), m_state->buildingCount(), m_state->errorCount()}), counts);
        }
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
        m_state->integrateProjects({{u"1"_s, u"one\n\U0001F680"_s, u"A"_s}, {u"2"_s, u"two"_s, u"A"_s}},
                                   u"A"_s);
        m_state->setTracked(u"1"_s, false);
        m_state->setIndividual(u"2"_s, true);
        m_state->setProductionOnly(true);
        m_state->setProductionDomain(u"2"_s, u"two.example"_s);
        const auto projects = m_state->allProjects();
        restart();
        QCOMPARE(m_state->allProjects(), projects);
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

    void equalValuesAreSilentAndEntriesAreNot() {
        const QString p = u"p"_s;
        const auto timesTold = [this](auto signal, const std::function<void()>& change) {
            QSignalSpy spy(m_state.get(), signal);
            change();
            change();
            return spy.count();
        };
        QCOMPARE(timesTold(&AppState::errorsChanged, [&] { m_state->setErrors({{p, p}}); }), 1);
        QCOMPARE(timesTold(&AppState::trackedIdsChanged, [&] { m_state->setTrackedIds({p}); }), 1);
        QCOMPARE(timesTold(&AppState::vercelPlatformStatusChanged,
                           [this] { m_state->setVercelPlatformStatus(VercelStatusLevel::minor); }),
                 1);
        QCOMPARE(timesTold(&AppState::errorsChanged, [&] { m_state->setError(p, p); }), 2);
        QCOMPARE(timesTold(&AppState::errorsChanged, [this] { m_state->removeError(u"none"_s); }), 2);
        QCOMPARE(timesTold(&AppState::trackedIdsChanged, [&] { m_state->setTracked(p, true); }), 2);
        QCOMPARE(timesTold(&AppState::deploymentsChanged, [this] { m_state->setDeployments({}); }), 2);
        QCOMPARE(timesTold(&AppState::configChanged, [this] { m_state->setConfig(std::nullopt); }), 2);
    }

    void equalAssignmentsAreStillPersisted() {
        const auto isWritten = [this](const std::function<void()>& assign) {
            assign();
            m_defaults->waitForWrites();
            return QFile::remove(path());
        };
        for (int round = 0; round < 2; ++round) {
            QVERIFY(isWritten([this] { m_state->setProductionOnly(true); }));
            QVERIFY(isWritten([this] { m_state->setTrackedIds({u"p"_s}); }));
            QVERIFY(isWritten([this] { m_state->setIndividualIds({u"p"_s}); }));
            QVERIFY(isWritten([this] { m_state->setProductionDomains({{u"p"_s, u"d"_s}}); }));
        }
    }

private:
    [[nodiscard]] QString path() const { return m_folder->filePath(u"defaults.ini"_s); }

    void restart() {
        cleanup();
        m_defaults = std::make_unique<UserDefaults>(path());
        m_state = std::make_unique<AppState>(*m_defaults);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<UserDefaults> m_defaults;
    std::unique_ptr<AppState> m_state;
};

TIDEMARK_TEST(AppStateTest)
#include "AppStateTest.moc"

#include <QAbstractItemModelTester>
#include <QMetaProperty>
#include <QProcess>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <tuple>
#include <utility>

#include "popover/DS.h"
#include "popover/RowEntries.h"
#include "tests/TestProgram.h"
#include "tests/popover/Scene.h"

namespace tidemark {

namespace {

/// What a project list says, line by line.
QStringList lines(const QAbstractItemModel& model) {
    const auto roles = model.roleNames();
    QStringList all;
    for (int i = 0; i < model.rowCount(); ++i) {
        const QModelIndex index = model.index(i, 0);
        all.append(index.data(roles.key("section")).toString() + u'/' +
                   index.data(roles.key("rowId")).toString());
    }
    return all;
}

}  // namespace

class PopoverModelsTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void summary() {
        const QString live = u"#4ade80"_s;
        const QString faint = u"#808080"_s;
        // The states of one project each; without a deployment when empty.
        const QList<std::tuple<QStringList, QString, QString>> rows{
            {{}, u"Loading…"_s, faint},
            {{u"READY"_s}, u"All Vercellent ✦"_s, live},
            {{u"READY"_s, u"READY"_s}, u"All Vercellent ✦"_s, live},
            {{u"READY"_s, QString()}, u"1 live"_s, live},
            {{u"READY"_s, u"QUEUED"_s, u"INITIALIZING"_s}, u"2 building"_s, u"#fbbf24"_s},
            {{u"ERROR"_s, u"BUILDING"_s}, u"1 error"_s, u"#f88787"_s},
            {{u"ERROR"_s, u"ERROR"_s}, u"2 errors"_s, u"#f88787"_s},
            {{u"CANCELED"_s, u"READY"_s}, u"Loading…"_s, faint}};
        for (const auto& [states, badge, color] : rows) {
            Scene scene;
            for (qsizetype i = 0; i < states.size(); ++i) {
                scene.track({QString::number(i)});
                if (!states.at(i).isEmpty())
                    scene.poll(QString::number(i), {scene.deployment(states.at(i), 1min)});
            }
            // What is not tracked does not count.
            scene.track({u"ignored"_s});
            scene.poll(u"ignored"_s, {scene.deployment(u"ERROR"_s, 1min)});
            scene.state.setTracked(u"ignored"_s, false);
            for (const bool isLoading : {false, true}) {
                scene.state.setIsLoadingProjects(isLoading);
                const PanelSummary summary = PanelSummary::of(scene.state);
                QCOMPARE(
                    summary.countText,
                    u"%1 project%2 tracked"_s.arg(states.size()).arg(states.size() == 1 ? u""_s : u"s"_s));
                QCOMPARE((QStringList{summary.badgeText, hex(summary.badgeColor)}),
                         (QStringList{badge, color}));
                QCOMPARE(summary.isLoading, isLoading);
                QCOMPARE(summary.isNothingTracked, states.isEmpty() && !isLoading);
            }
        }
    }

    void connectionWarning() {
        const QStringList none;
        const QStringList both{u"a"_s, u"b"_s};
        const QList<std::tuple<QStringList, QStringList, bool>> cases{
            {none, {u"gone"_s}, false},
            {both, none, false},
            {both, {u"a"_s}, false},
            {both, {u"a"_s, u"gone"_s}, false},
            {both, {u"a"_s, u"b"_s, u"gone"_s}, true}};
        for (const auto& [tracked, failed, isShown] : cases) {
            Scene scene;
            scene.track(tracked);
            for (const QString& id : failed)
                scene.state.setError(id, u"No network"_s);
            const PanelSummary summary = PanelSummary::of(scene.state);
            QVERIFY2(summary.showsConnectionWarning == isShown, qPrintable(failed.join(u' ')));
            QCOMPARE(summary.connectionError, failed.isEmpty() ? QString() : u"No network"_s);
        }
    }

    void unknownVersionIsADevelopersOne() {
        Scene scene;
        const PopoverModel unknown(scene.state, scene.clock, scene.workspace, {}, {});
        QCOMPARE(unknown.versionText(), u"vdev"_s);
        QCOMPARE(scene.model.versionText(), u"v1.4.2"_s);
    }

    void filterFindsPartsOfNames() {
        QVERIFY(matchesFilter(QString(), QString()));
        QVERIFY(matchesFilter(u"My-API-Server"_s, u"api"_s));
        QVERIFY(matchesFilter(u"my-api-server"_s, u"API"_s));
        QVERIFY(matchesFilter(u"my api"_s, u" "_s));
        QVERIFY(!matchesFilter(u"my-api"_s, u" "_s));
        QVERIFY(!matchesFilter(u"my-api"_s, u"api "_s));  // blanks are not trimmed
        QVERIFY(!matchesFilter(u"my-api"_s, u".*"_s));
        QVERIFY(matchesFilter(u"ΟΔΟΣ"_s, u"οδος"_s));
        QVERIFY(matchesFilter(u"Cafe\u0301"_s, u"CAFÉ"_s));
        QVERIFY(!matchesFilter(u"Café"_s, u"cafe"_s));
    }

    void filterFollowsTheLanguage() {
        const bool isTurkish = qEnvironmentVariable("LC_ALL").startsWith(u"tr"_s);
        QCOMPARE(matchesFilter(u"İstanbul"_s, u"istanbul"_s), isTurkish);
        QCOMPARE(matchesFilter(u"IŞIK"_s, u"ışık"_s), isTurkish);
        if (isTurkish)
            return;
        // The language of a process is settled once.
        QProcess turkish;
        auto environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"LC_ALL"_s, u"tr_TR.UTF-8"_s);
        turkish.setProcessEnvironment(environment);
        turkish.setProcessChannelMode(QProcess::MergedChannels);
        turkish.start(QCoreApplication::applicationFilePath(),
                      {u"PopoverModelsTest"_s, u"filterFollowsTheLanguage"_s});
        QVERIFY(turkish.waitForFinished(hangLimit));
        QVERIFY2(turkish.exitCode() == 0, turkish.readAll().constData());
    }

    void listChangesByDifference() {
        RowListModel model;
        const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        const QSignalSpy reset(&model, &QAbstractItemModel::modelReset);
        QRandomGenerator random(1);
        QStringList shown;
        for (int round = 0; round < 300; ++round) {
            QStringList wanted;
            for (int i = 0; i < 12; ++i)
                if (random.bounded(3) > 0)
                    wanted.insert(random.bounded(wanted.size() + 1), u"/%1"_s.arg(i));
            QMap<QString, QPersistentModelIndex> kept;
            for (int i = 0; i < shown.size(); ++i)
                if (wanted.contains(shown.at(i)))
                    kept.insert(shown.at(i), model.index(i));
            QList<RowListModel::Entry> entries;
            for (const QString& line : wanted)
                entries.append({.rowId = line.sliced(1), .section = {}});
            model.setEntries(entries);
            QCOMPARE(lines(model), wanted);
            for (auto entry = kept.cbegin(); entry != kept.cend(); ++entry) {
                QVERIFY(entry->isValid());
                QCOMPARE(entry->row(), wanted.indexOf(entry.key()));
            }
            shown = wanted;
        }
        QCOMPARE(reset.count(), 0);
    }

    void projectNamedTwiceIsShownOnce() {
        Scene scene;
        scene.track({u"site"_s, u"site"_s, u"other"_s});
        Scene::settle();
        QCOMPARE(lines(*scene.model.trackedProjects()), (QStringList{u"/other"_s, u"/site"_s}));
        QCOMPARE(scene.model.managedProjects()->rowCount(), 2);
    }

    void inactiveModelLiesStill() {
        Scene scene;
        QSignalSpy refreshed(&scene.model, &PopoverModel::refreshed);
        scene.track({u"site"_s});
        // Also what was begun before.
        scene.model.setActive(false);
        scene.track({u"other"_s});
        Scene::settle();
        QCOMPARE(refreshed.count(), 0);
        QCOMPARE(scene.model.trackedProjects()->rowCount(), 0);

        scene.model.setActive(true);
        QCOMPARE(scene.model.trackedProjects()->rowCount(), 2);
        QCOMPARE(scene.model.summary().countText, u"2 projects tracked"_s);
        refreshed.clear();
        scene.state.setIsLoadingProjects(true);
        Scene::settle();
        QCOMPARE(refreshed.count(), 1);
        QVERIFY(scene.model.summary().isLoading);
    }

    void manyChangesMakeOneRefresh() {
        Scene scene;
        QSignalSpy refreshed(&scene.model, &PopoverModel::refreshed);
        scene.track({u"site"_s});
        for (int i = 0; i < 100; ++i)
            scene.poll(u"site"_s, {scene.deployment(u"READY"_s, i * 1s)});
        QCOMPARE(refreshed.count(), 0);
        Scene::settle();
        QCOMPARE(refreshed.count(), 1);
        QCOMPARE(scene.model.summary().badgeText, u"All Vercellent ✦"_s);
    }

    void vanishedProjectDoesNoHarm() {
        Scene scene;
        scene.track({u"site"_s, u"other"_s});
        scene.poll(u"site"_s, {scene.deployment(u"READY"_s, 1min)});
        Scene::settle();
        RowModel row(scene.model, u"site"_s);
        row.toggleExpanded();
        scene.state.setAllProjects({{.id = u"other"_s, .name = u"other"_s}});
        scene.state.setDeployments({});
        Scene::settle();
        QCOMPARE(lines(*scene.model.trackedProjects()), QStringList{u"/other"_s});
        QCOMPARE(row.row().word, u"—"_s);
        row.redeploy();
        row.toggleExpanded();
        Scene::settle();
        QVERIFY(!row.isRedeploying());
    }
};

}  // namespace tidemark

TIDEMARK_GUI_TEST(tidemark::PopoverModelsTest)
#include "PopoverModelsTest.moc"

#include <QSignalSpy>
#include <limits>
#include <utility>

#include "popover/ProjectRowModel.h"
#include "tests/TestProgram.h"
#include "tests/popover/Scene.h"

namespace tidemark {

class ProjectRowTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void states() {
        const QStringList unknown{u"—"_s, u"#999999"_s, u"#808080"_s};
        const QList<std::pair<QString, QStringList>> rows{
            {u"READY"_s, {u"Live"_s, u"#4ade80"_s, u"#22c55e"_s}},
            {u"BUILDING"_s, {u"Building"_s, u"#fbbf24"_s, u"#f59e0b"_s}},
            {u"INITIALIZING"_s, {u"Starting"_s, u"#fbbf24"_s, u"#f59e0b"_s}},
            {u"QUEUED"_s, {u"Queued"_s, u"#fbbf24"_s, u"#f59e0b"_s}},
            {u"ERROR"_s, {u"Error"_s, u"#f88787"_s, u"#ef4444"_s}},
            {u"CANCELED"_s, {u"Canceled"_s, u"#999999"_s, u"#808080"_s}},
            {u"ready"_s, unknown},
            {QString(), unknown}};
        for (const auto& [state, expected] : rows) {
            Scene scene;
            scene.track({u"site"_s});
            if (!state.isEmpty())
                scene.poll(u"site"_s, {scene.deployment(state, 1min)});
            const ProjectRow row = scene.projectRow();
            QCOMPARE((QStringList{row.word, hex(row.wordColor), hex(row.dotColor)}), expected);
        }
    }

    void domainLine() {
        Scene scene;
        scene.track({u"site"_s});
        RowModel row(scene.model, u"site"_s);
        const auto says = [&](const QString& placeholder) {
            Scene::settle();
            QCOMPARE(row.row().domain, QString());
            QCOMPARE(row.row().placeholder, placeholder);
            QVERIFY(!row.canCopy());
            QCOMPARE(row.copyToolTip(), u"No URL available"_s);
        };
        const auto shows = [&](const QString& domain) {
            Scene::settle();
            QCOMPARE(row.row().domain, domain);
            QCOMPARE(row.row().placeholder, QString());
            QCOMPARE(row.row().domainUrl, u"https://"_s + domain);
            QVERIFY(row.canCopy());
            QCOMPARE(row.copyToolTip(), u"Copy https://"_s + domain);
        };
        says(u"Fetching…"_s);
        scene.state.setError(u"site"_s, u"No network"_s);
        says(u"Last check failed"_s);
        scene.state.insertEmptyProject(u"site"_s);
        says(u"No deployments yet"_s);
        auto deployment = scene.deployment(u"READY"_s, 1min);
        scene.state.setDeployment(u"site"_s, deployment);
        scene.state.removeEmptyProject(u"site"_s);
        says({});
        deployment.alias = {u"site-git.vercel.app"_s, u"own.example"_s};
        scene.poll(u"site"_s, {deployment});
        shows(u"own.example"_s);
        scene.state.setProductionDomain(u"site"_s, u"resolved.example"_s);
        shows(u"resolved.example"_s);
        scene.state.setDeployments({});
        scene.state.setError(u"site"_s, u"No network"_s);
        shows(u"resolved.example"_s);
    }

    void details() {
        Scene scene;
        scene.track({u"site"_s});
        auto deployment = scene.deployment(u"READY"_s, 5min);
        deployment.meta->githubCommitMessage = QString(51, u'x');
        scene.poll(u"site"_s, {deployment});
        const ProjectRow row = scene.projectRow();
        QCOMPARE(row.branch, u"main"_s);
        QCOMPARE(row.commitMessage, QString(50, u'x') + u'…');
        QCOMPARE(row.buildDuration, u"Built in 1m 23s"_s);
        QCOMPARE(row.pushedAt, u"5 minutes ago"_s);
        QVERIFY2(row.pushedToolTip.startsWith(u"Pushed "_s) && row.pushedToolTip.contains(u"2023"_s),
                 qPrintable(row.pushedToolTip));
        QCOMPARE(row.inspectorUrl, u"https://vercel.example/inspect"_s);
        QCOMPARE(row.deploymentUrl, u"https://build-1.vercel.app"_s);
        QCOMPARE(row.error, QString());
        QCOMPARE(row.staleness, QString());
    }

    void history() {
        const QStringList refs{u"production"_s, u"—"_s, u"main"_s, u"main"_s};
        for (const auto& [recent, lines] : {std::pair(0, 0), {1, 0}, {2, 1}, {7, 4}}) {
            Scene scene;
            scene.track({u"site"_s});
            QList<Deployment> deployments;
            for (int i = 0; i < recent; ++i)
                deployments.append(scene.deployment(u"ERROR"_s, i * 1h));
            if (recent > 1)
                deployments[1].meta = std::nullopt;
            if (recent > 2) {
                deployments[2].meta = DeploymentMeta{};
                deployments[2].target = std::nullopt;
            }
            scene.state.setRecentDeployments(u"site"_s, deployments);
            const auto history = scene.projectRow().history;
            QCOMPARE(history.size(), lines);
            for (qsizetype i = 0; i < lines; ++i) {
                QCOMPARE(history.at(i).ref, refs.at(i));
                QCOMPARE(history.at(i).age, u"%1h ago"_s.arg(i + 1));
                QCOMPARE(hex(history.at(i).dotColor), u"#ef4444"_s);
            }
        }
    }

    void failedCheck() {
        Scene scene;
        scene.track({u"site"_s});
        scene.poll(u"site"_s, {scene.deployment(u"READY"_s, 1h)});
        scene.clock.setNow(scene.clock.now() + 3min);
        scene.state.setError(u"site"_s, u"Server error (500)"_s);
        const ProjectRow row = scene.projectRow();
        const QString age = u"Showing the status from the last successful check, 3m ago."_s;
        QCOMPARE(row.error, u"Server error (500)"_s);
        QCOMPARE(row.staleness, age);
        QCOMPARE(row.errorToolTip, u"Last check failed: Server error (500)\n"_s + age);
        QCOMPARE(row.word, u"Live"_s);
        QCOMPARE(hex(row.wordColor), u"#734ade80"_s);
        QCOMPARE(hex(row.dotColor), u"#22c55e"_s);
    }

    void addressesThatCannotBeOpened() {
        // Of the inspector, and a host.
        const QList<std::pair<QString, QString>> rows{{u"javascript:alert(1)"_s, u"a b"_s},
                                                      {u"file:///etc/passwd"_s, u"a\nb"_s},
                                                      {u"https://"_s, QString()},
                                                      {u"/inspect"_s, u"/etc/passwd"_s},
                                                      {QString(), u"\u202Emoc.elpmaxe"_s}};
        for (const auto& [inspector, host] : rows) {
            Scene scene;
            scene.track({u"site"_s});
            auto deployment = scene.deployment(u"READY"_s, 1min);
            deployment.inspectorUrl = inspector;
            deployment.url = host;
            deployment.alias = QList<QString>{host};
            scene.poll(u"site"_s, {deployment});
            const ProjectRow row = scene.projectRow();
            QCOMPARE(row.inspectorUrl + row.deploymentUrl + row.domainUrl, QString());
            for (const QString& address : {inspector, u"https://"_s + host, QString()})
                scene.model.open(address);
            QVERIFY(scene.workspace.urls.isEmpty());
        }
    }

    void hostileTextsAreHarmless() {
        Scene scene;
        for (const QString& text : {u"a\nrm -rf ~\u2028b\u202Ec\u2066d"_s, QString(1 << 20, u'W')}) {
            scene.state.integrateProjects({{.id = u"site"_s, .name = text}}, {});
            auto deployment = scene.deployment(text, 1min);
            deployment.created =
                text.size() > 100 ? std::numeric_limits<qint64>::max() : std::numeric_limits<qint64>::min();
            deployment.alias = QList<QString>{text};
            deployment.target = text;
            deployment.meta = DeploymentMeta{text, text, text};
            scene.poll(u"site"_s, {deployment, deployment});
            scene.state.setError(u"site"_s, text);
            const ProjectRow row = scene.projectRow();
            for (const QString& shown :
                 {row.name, row.domain, row.domainUrl, row.branch, row.history.at(0).ref}) {
                QVERIFY2(shown.size() < 320, qPrintable(shown.left(400)));
                for (const char16_t unwanted : {u'\n', u'\u2028', u'\u202E', u'\u2066'})
                    QVERIFY2(!shown.contains(unwanted), qPrintable(shown));
            }
            // These may have several lines.
            for (const QString& shown : {row.commitMessage, row.error, row.errorToolTip})
                QVERIFY(shown.size() < 700);
        }
    }

    void rowTellsItsAgeAnew() {
        Scene scene;
        scene.track({u"site"_s});
        scene.poll(u"site"_s, {scene.deployment(u"READY"_s, 1min)});
        RowModel row(scene.model, u"site"_s);
        QCOMPARE(row.row().pushedAt, u"1 minute ago"_s);
        scene.clock.setNow(scene.clock.now() + 1min);
        scene.model.refreshAges();
        QCOMPARE(row.row().pushedAt, u"2 minutes ago"_s);
    }

    void rowIsUsedForAnotherProject() {
        Scene scene;
        scene.track({u"site"_s, u"other"_s});
        scene.poll(u"site"_s, {scene.deployment(u"READY"_s, 1min), scene.deployment(u"READY"_s, 1h)});
        scene.state.setProductionDomain(u"site"_s, u"site.example"_s);
        RowModel row(scene.model, u"site"_s);
        row.copyUrl();
        row.toggleExpanded();
        QSignalSpy changed(&row, &ProjectRowModel::changed);
        row.setRowId(u"other"_s);
        QVERIFY(changed.count() > 0);
        QCOMPARE(row.row().name, u"other"_s);
        QCOMPARE(row.row().domain, QString());
        QVERIFY(row.row().history.isEmpty());
        QVERIFY(!row.isCopied());
        QVERIFY(!row.isExpanded());
    }

    void copyIsToldForAMoment() {
        Scene scene;
        scene.track({u"site"_s});
        scene.state.setProductionDomain(u"site"_s, u"site.example"_s);
        RowModel row(scene.model, u"site"_s);
        QElapsedTimer watch;
        watch.start();
        row.copyUrl();
        QVERIFY(row.isCopied());
        QCOMPARE(row.copyToolTip(), u"Copied!"_s);
        QTRY_VERIFY(!row.isCopied());
        QVERIFY2(watch.elapsed() >= 1400, qPrintable(QString::number(watch.elapsed())));
        QCOMPARE(row.copyToolTip(), u"Copy https://site.example"_s);
    }
};

}  // namespace tidemark

TIDEMARK_GUI_TEST(tidemark::ProjectRowTest)
#include "ProjectRowTest.moc"

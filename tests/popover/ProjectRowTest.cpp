#include <QClipboard>
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

    void domainLine_data() {
        QTest::addColumn<bool>("isPolled");
        QTest::addColumn<QStringList>("alias");
        QTest::addColumn<QString>("resolved");
        QTest::addColumn<bool>("isEmpty");
        QTest::addColumn<bool>("hasFailed");
        QTest::addColumn<QString>("domain");
        QTest::addColumn<QString>("placeholder");
        const QStringList none;
        const QStringList alias{u"site-git.vercel.app"_s, u"own.example"_s};
        QTest::newRow("new") << false << none << QString() << false << false << QString() << u"Fetching…"_s;
        QTest::newRow("failed") << false << none << QString() << false << true << QString()
                                << u"Last check failed"_s;
        QTest::newRow("empty") << false << none << QString() << true << true << QString()
                               << u"No deployments yet"_s;
        QTest::newRow("no domain") << true << none << QString() << false << true << QString() << QString();
        QTest::newRow("alias") << true << alias << QString() << false << false << u"own.example"_s
                               << QString();
        QTest::newRow("resolved first")
            << true << alias << u"resolved.example"_s << false << false << u"resolved.example"_s << QString();
        QTest::newRow("only resolved")
            << false << none << u"resolved.example"_s << true << true << u"resolved.example"_s << QString();
    }

    void domainLine() {
        QFETCH(bool, isPolled);
        QFETCH(QStringList, alias);
        QFETCH(QString, resolved);
        QFETCH(bool, isEmpty);
        QFETCH(bool, hasFailed);
        QFETCH(QString, domain);
        Scene scene;
        scene.track({u"site"_s});
        if (isPolled) {
            auto deployment = scene.deployment(u"READY"_s, 1min);
            deployment.alias = alias;
            scene.poll(u"site"_s, {deployment});
        }
        if (!resolved.isEmpty())
            scene.state.setProductionDomain(u"site"_s, resolved);
        if (isEmpty)
            scene.state.insertEmptyProject(u"site"_s);
        if (hasFailed)
            scene.state.setError(u"site"_s, u"No network"_s);

        RowModel row(scene.model, u"site"_s);
        QCOMPARE(row.row().domain, domain);
        QTEST(row.row().placeholder, "placeholder");
        QCOMPARE(row.canCopy(), !domain.isEmpty());
        if (domain.isEmpty()) {
            QCOMPARE(row.copyToolTip(), u"No URL available"_s);
            return;
        }
        QCOMPARE(row.row().domainUrl, u"https://"_s + domain);
        QCOMPARE(row.copyToolTip(), u"Copy https://"_s + domain);
        row.copyUrl();
        QCOMPARE(QGuiApplication::clipboard()->text(), u"https://"_s + domain);
    }

    void details() {
        Scene scene;
        scene.track({u"site"_s});
        scene.poll(u"site"_s, {scene.deployment(u"READY"_s, 5min)});
        const ProjectRow row = scene.projectRow();
        QCOMPARE(row.branch, u"main"_s);
        QCOMPARE(row.commitMessage, u"Round the corners of the invoice table"_s);
        QCOMPARE(row.buildDuration, u"Built in 1m 23s"_s);
        QCOMPARE(row.pushedAt, u"5 minutes ago"_s);
        QVERIFY2(row.pushedToolTip.startsWith(u"Pushed "_s) && row.pushedToolTip.contains(u"2023"_s),
                 qPrintable(row.pushedToolTip));
        QCOMPARE(row.inspectorUrl, u"https://vercel.example/inspect"_s);
        QCOMPARE(row.deploymentUrl, u"https://build-1.vercel.app"_s);
        QCOMPARE(row.error, QString());
        QCOMPARE(row.staleness, QString());
    }

    void history_data() {
        QTest::addColumn<int>("recent");
        QTest::addColumn<int>("lines");
        QTest::newRow("none") << 0 << 0;
        QTest::newRow("one") << 1 << 0;
        QTest::newRow("two") << 2 << 1;
        QTest::newRow("seven") << 7 << 4;
    }

    void history() {
        QFETCH(int, recent);
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
        QTEST(static_cast<int>(history.size()), "lines");
        const QStringList refs{u"production"_s, u"—"_s, u"main"_s, u"main"_s};
        for (qsizetype i = 0; i < history.size(); ++i) {
            QCOMPARE(history.at(i).ref, refs.at(i));
            QCOMPARE(history.at(i).age, u"%1h ago"_s.arg(i + 1));
            QCOMPARE(hex(history.at(i).dotColor), u"#ef4444"_s);
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

    void addressesThatCannotBeOpened_data() {
        QTest::addColumn<QString>("inspector");
        QTest::addColumn<QString>("host");
        QTest::newRow("script") << u"javascript:alert(1)"_s << u"a b"_s;
        QTest::newRow("file") << u"file:///etc/passwd"_s << u"a\nb"_s;
        QTest::newRow("no host") << u"https://"_s << QString();
        QTest::newRow("relative") << u"/inspect"_s << u"/etc/passwd"_s;
        QTest::newRow("reversed") << QString() << u"\u202Emoc.elpmaxe"_s;
        QTest::newRow("huge") << u"https://"_s + QString(1 << 20, u'a') << QString(1 << 20, u'a');
    }

    void addressesThatCannotBeOpened() {
        QFETCH(QString, inspector);
        QFETCH(QString, host);
        Scene scene;
        scene.track({u"site"_s});
        auto deployment = scene.deployment(u"READY"_s, 1min);
        deployment.inspectorUrl = inspector;
        deployment.url = host;
        deployment.alias = QList<QString>{host};
        scene.poll(u"site"_s, {deployment});
        const ProjectRow row = scene.projectRow();
        QCOMPARE(row.inspectorUrl, QString());
        QCOMPARE(row.deploymentUrl, QString());
        QCOMPARE(row.domainUrl, QString());
        for (const QString& address : {inspector, u"https://"_s + host, QString()})
            scene.model.open(address);
        QVERIFY(scene.workspace.urls.isEmpty());
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

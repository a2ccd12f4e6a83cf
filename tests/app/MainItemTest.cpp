#include <QImage>

#include "app/items/VercelLogoShape.h"
#include "presentation/StatePresentation.h"
#include "tests/TestProgram.h"
#include "tests/app/Rig.h"

using namespace tidemark;

class MainItemTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void theTitleTellsTheOverallState_data() {
        QTest::addColumn<QStringList>("states");  // of one project each; "-": never polled
        QTest::addColumn<DeploymentState>("dot");
        QTest::addColumn<QString>("summary");
        using State = DeploymentState;
        QTest::newRow("nothing tracked") << QStringList() << State::unknown << QString();
        QTest::newRow("none polled") << QStringList{u"-"_s, u"-"_s} << State::unknown << QString();
        QTest::newRow("all ready") << QStringList{u"READY"_s, u"READY"_s, u"READY"_s} << State::ready
                                   << u"3 live"_s;
        QTest::newRow("one error") << QStringList{u"READY"_s, u"ERROR"_s, u"READY"_s} << State::error
                                   << u"1 error"_s;
        QTest::newRow("two errors") << QStringList{u"ERROR"_s, u"ERROR"_s} << State::error << u"2 errors"_s;
        QTest::newRow("building") << QStringList{u"BUILDING"_s, u"READY"_s} << State::building
                                  << u"1 building"_s;
        QTest::newRow("queued counts as building")
            << QStringList{u"QUEUED"_s, u"INITIALIZING"_s} << State::building << u"2 building"_s;
        QTest::newRow("canceled") << QStringList{u"CANCELED"_s, u"READY"_s} << State::canceled << QString();
        QTest::newRow("unknown") << QStringList{u"READY"_s, u"SHINY"_s} << State::unknown << QString();
    }

    void theTitleTellsTheOverallState() {
        QFETCH(const QStringList, states);
        QFETCH(const DeploymentState, dot);
        QFETCH(const QString, summary);
        Rig rig;
        rig.store({.accounts = {Rig::account(u"A"_s)}});
        QStringList names;
        for (qsizetype i = 0; i < states.size(); ++i)
            names << u"p%1"_s.arg(i);
        rig.listProjects(u"A"_s, names);
        for (qsizetype i = 0; i < states.size(); ++i) {
            rig.answerDeployments(names.at(i), states.at(i) == "-"_L1
                                                   ? httpAnswer(404)
                                                   : HttpResult(tl::unexpected(TransportError::other)));
            if (states.at(i) != "-"_L1)
                rig.answerDeployments(names.at(i), QStringList{states.at(i)});
        }
        rig.launch();
        rig.clock.advance(20s);
        QCOMPARE(rig.statusBar.items.value(u"tidemark"_s).dot, color(dot));
        QCOMPARE(rig.statusBar.items.value(u"tidemark"_s).label, summary);
        QCOMPARE(rig.statusBar.items.value(u"tidemark"_s).toolTip,
                 states.contains(u"-"_s) ? u"Tidemark — not checked yet: HTTP error 404"_s : QString());
    }

    void theToolTipTellsWhenTheStateIsNotCurrent() {
        Rig rig;
        rig.store({.accounts = {Rig::account(u"A"_s), Rig::account(u"without"_s, {})}});
        rig.listProjects(u"A"_s, {u"api"_s, u"docs"_s, u"web"_s});
        rig.launch();
        const auto toolTip = [&rig] {
            rig.settle();
            return rig.statusBar.items.value(u"tidemark"_s).toolTip;
        };
        // A project that nobody can ask for is not waited for.
        rig.state().integrateProjects({{.id = u"cached"_s, .name = u"cached"_s}}, u"without"_s);
        QCOMPARE(toolTip(), u"Tidemark — 1 live, 1 of 3 checked"_s);
        rig.clock.advance(2s);
        QCOMPARE(toolTip(), u"Tidemark — 2 live, 2 of 3 checked"_s);
        rig.clock.advance(2s);
        QCOMPARE(toolTip(), QString());
        const auto answerAll = [&rig](const HttpResult& result) {
            for (const auto& name : {u"api"_s, u"docs"_s, u"web"_s})
                rig.answerDeployments(name, result);
        };
        answerAll(httpAnswer(401));
        rig.state().setTracked(u"cached"_s, false);
        rig.clock.advance(31s);
        QCOMPARE(toolTip(), u"Tidemark — 3 live, not checked for 1 minute: Invalid API token (401)"_s);
        rig.clock.advance(12min);
        QCOMPARE(toolTip(), u"Tidemark — 3 live, not checked for 12 minutes: Invalid API token (401)"_s);
        rig.clock.advance(50h);
        QCOMPARE(toolTip(), u"Tidemark — 3 live, not checked for 2 days: Invalid API token (401)"_s);
        rig.answerDeployments(u"docs"_s, QStringList{u"READY"_s});
        rig.clock.advance(31s);
        QCOMPARE(toolTip(), QString());
    }

    void untrackingShowsAtOnce() {
        Rig rig;
        rig.store({.accounts = {Rig::account(u"A"_s)}});
        rig.listProjects(u"A"_s, {u"broken"_s, u"fine"_s});
        rig.answerDeployments(u"broken"_s, QStringList{u"ERROR"_s});
        rig.launch();
        rig.clock.advance(2s);
        const auto shown = [&rig] {
            rig.settle();
            const auto item = rig.statusBar.items.value(u"tidemark"_s);
            return std::pair(item.dot, item.label);
        };
        QCOMPARE(shown(), std::pair(color(DeploymentState::error), u"1 error"_s));
        rig.state().setTracked(u"broken"_s, false);
        QCOMPARE(shown(), std::pair(color(DeploymentState::ready), u"1 live"_s));
        rig.state().setTracked(u"fine"_s, false);
        QCOMPARE(shown(), std::pair(color(DeploymentState::unknown), QString()));
        rig.state().setTracked(u"broken"_s, true);
        QCOMPARE(shown(), std::pair(color(DeploymentState::error), u"1 error"_s));
    }

    void thePlatformStatusLeavesTheTitleAlone() {
        Rig rig;
        rig.launch();
        const int count = rig.statusBar.items.value(u"tidemark"_s).labelCount;
        rig.state().setVercelPlatformStatus(VercelStatusLevel::critical);
        QCOMPARE(rig.statusBar.items.value(u"tidemark"_s).labelCount, count);
    }

    void theLogoIsATriangleInItsSquare_data() {
        QTest::addColumn<int>("size");
        QTest::newRow("as in the panel") << 16;
        QTest::newRow("large") << 448;
    }

    void theLogoIsATriangleInItsSquare() {
        QFETCH(const int, size);
        const StatusImage image = VercelLogoShape::image(size);
        QVERIFY(image.isTemplate);
        QCOMPARE(image.size, QSizeF(size, size));
        QImage canvas(size, size, QImage::Format_ARGB32_Premultiplied);
        canvas.fill(Qt::transparent);
        QPainter painter(&canvas);
        image.draw(painter);
        painter.end();
        const auto alpha = [&canvas, size](double x, double y) {
            return qAlpha(canvas.pixel(static_cast<int>(x * size), static_cast<int>(y * size)));
        };
        const double top = (1 - 800.0 / 896) / 2;  // above and below the shape, as a part of the side
        QVERIFY(alpha(0.5, top / 2) < 10);
        QVERIFY(alpha(0.5, 1 - top / 3) < 60);  // a sixth of a row at the small size
        QCOMPARE(alpha(0.5, 0.5), 255);
        QVERIFY(alpha(0.5, top + 0.07) > 0);
        QCOMPARE(alpha(0.1, 0.3), 0);
        QCOMPARE(alpha(0.9, 0.3), 0);
        QVERIFY(alpha(0.07, 1 - top - 0.05) > 100);
        QVERIFY(alpha(0.93, 1 - top - 0.05) > 100);
    }
};

TIDEMARK_GUI_TEST(MainItemTest)
#include "MainItemTest.moc"

#include <QImage>

#include "app/items/VercelLogoShape.h"
#include "tests/TestProgram.h"
#include "tests/app/Rig.h"

using namespace tidemark;

class MainItemTest final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void theToolTipTellsWhenTheStateIsNotCurrent() {
        Rig rig;
        rig.store({.accounts = {Rig::account(u"A"_s), Rig::account(u"without"_s, {})}});
        rig.listProjects(u"A"_s, {u"api"_s, u"docs"_s, u"web"_s});
        rig.answerDeployments(u"api"_s, httpAnswer(404));
        rig.launch();
        const auto toolTip = [&rig] {
            rig.settle();
            return rig.statusBar.items.value(u"tidemark"_s).toolTip;
        };
        // A project that nobody can ask for is not waited for.
        rig.state().integrateProjects({{.id = u"cached"_s, .name = u"cached"_s}}, u"without"_s);
        QCOMPARE(toolTip(), u"Tidemark — 1 of 3 checked"_s);
        rig.state().setTracked(u"docs"_s, false);
        rig.state().setTracked(u"web"_s, false);
        QCOMPARE(toolTip(), u"Tidemark — not checked yet: HTTP error 404"_s);
        rig.answerDeployments(u"api"_s, QStringList{u"READY"_s});
        rig.state().setTracked(u"docs"_s, true);
        rig.state().setTracked(u"web"_s, true);
        rig.clock.advance(40s);
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

    void theTitleFollowsWhatIsTracked() {
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
        const std::pair oneError(QColor(235, 64, 52), u"1 error"_s);
        QCOMPARE(shown(), oneError);
        rig.state().setTracked(u"broken"_s, false);
        QCOMPARE(shown(), std::pair(QColor(40, 167, 69), u"1 live"_s));
        rig.state().setTracked(u"fine"_s, false);
        QCOMPARE(shown(), std::pair(QColor(142, 142, 147), QString()));
        rig.state().setTracked(u"broken"_s, true);
        QCOMPARE(shown(), oneError);
    }

    void theLogoIsATriangleInItsSquare() {
        constexpr int size = 448;
        const StatusImage image = VercelLogoShape::image(size);
        QVERIFY(image.isTemplate);
        QCOMPARE(image.size, QSizeF(size, size));
        QImage canvas(size, size, QImage::Format_ARGB32_Premultiplied);
        canvas.fill(Qt::transparent);
        QPainter painter(&canvas);
        image.draw(painter);
        painter.end();
        const auto alpha = [&canvas](double x, double y) {
            return qAlpha(canvas.pixel(static_cast<int>(x * size), static_cast<int>(y * size)));
        };
        const double top = (1 - 800.0 / 896) / 2;  // above and below the shape, as a part of the side
        QVERIFY(alpha(0.5, top / 2) < 10);
        QVERIFY(alpha(0.5, 1 - top / 2) < 10);
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

#include <QAccessible>
#include <QClipboard>
#include <QCoroFuture>
#include <QPromise>
#include <QQuickItem>
#include <QRegularExpression>
#include <ctime>

#include "popover/DS.h"
#include "tests/TestProgram.h"
#include "tests/popover/Person.h"

namespace tidemark {

class PopoverViewTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(u"^(?!This plugin does not support)"_s)); }

    void sizeFollowsTheContent() {
        Person person;
        person.show();
        const auto height = [&person] {
            person.rest();
            return person.view->height();
        };
        const int nothing = height();
        QVERIFY(nothing > 100);
        person.state.setIsLoadingProjects(true);
        const int loading = height();
        QVERIFY(loading < nothing);
        person.state.setIsLoadingProjects(false);

        person.fillWith(1);
        const int one = height();
        person.fillWith(4);
        const int four = height();
        QVERIFY(four > one);
        person.state.setTracked(u"p0003"_s, false);
        person.state.setTracked(u"p0002"_s, false);
        person.state.setTracked(u"p0001"_s, false);
        QCOMPARE(height(), one);

        person.fillWith(40);
        const int forty = height();
        QCOMPARE(person.mainList()->height(), 360);
        person.fillWith(80);
        QCOMPARE(height(), forty);
        person.openManage();
        height();
        QCOMPARE(person.manageList()->height(), 300);
        QCOMPARE(person.view->width(), 268);
        QVERIFY(height() < forty);
        person.type(u"p0079"_s);
        QVERIFY(height() < one + 40);
        QCOMPARE(person.view->width(), 268);
    }

    void smallScreenLimitsTheHeight() {
        Viewer person(40);
        person.view->rootObject()->setProperty("maximumHeight", 300);
        person.rest();
        QVERIFY2(person.view->height() <= 300, qPrintable(QString::number(person.view->height())));
        person.openManage();
        person.rest();
        QVERIFY2(person.view->height() <= 300, qPrintable(QString::number(person.view->height())));
    }

    void clickExpandsAndCollapsesARow() {
        Viewer person;
        const int collapsed = person.view->height();
        person.toggleRow(u"docs"_s);
        for (const QString& detail : {u"Branch: main"_s, u"Commit: Round"_s, u"Build time: Built in 1m 23s"_s,
                                      u"Copy URL"_s, u"Redeploy"_s, u"Vercel"_s, u"main, Error, 2h ago"_s})
            QVERIFY2(person.see(detail), qPrintable(detail));
        QVERIFY(!person.see(u"Last check failed"_s));
        // All of it, also when it has grown meanwhile.
        QQuickItem* last = person.see(u"main, Error, 2h ago"_s);
        QTRY_VERIFY(person.isInSight(last, person.mainList()));
        person.state.setError(u"docs"_s, u"No network"_s);
        person.rest();
        QVERIFY(person.see(u"Last check failed: No network"_s));
        person.clickRow(u"docs"_s);
        QVERIFY(!person.isExpanded(u"docs"_s));
        QTRY_COMPARE(person.view->height(), collapsed);
        QVERIFY(!person.see(u"Copy URL"_s));
    }

    void hoveredRowLooksDifferent() {
        Viewer person;
        QQuickItem* head = person.row(u"docs"_s);
        const auto edge = [&] {
            person.rest();
            return QColor(person.view->grabWindow().pixel(head->mapToScene({4, 4}).toPoint()));
        };
        QCOMPARE(edge(), QColor(DS::panelBg().rgb()));
        const QPoint domain = person.see(u"docs.example"_s)->mapToScene({20, 5}).toPoint();
        QTest::mouseMove(person.view.get(), domain);
        QVERIFY(edge().lightness() > DS::panelBg().lightness());
        QTest::mouseMove(person.view.get(), {100, 5});
        QCOMPARE(edge(), QColor(DS::panelBg().rgb()));
    }

    void linksOpenTheirPages() {
        Viewer person;
        person.toggleRow(u"docs"_s);
        for (const auto& [link, page] : {std::pair(u"docs.example"_s, u"https://docs.example"_s),
                                         {u"Vercel"_s, u"https://vercel.example/inspect"_s},
                                         {u"Deployment"_s, u"https://build-1.vercel.app"_s}}) {
            person.workspace.urls.clear();
            person.click(person.see(link, QAccessible::Link));
            QCOMPARE(person.workspace.urls, QList{QUrl(page)});
            // The row below does not take the click for its own.
            QVERIFY(person.isExpanded(u"docs"_s));
            person.press(Qt::Key_Return);
            QCOMPARE(person.workspace.urls, (QList{QUrl(page), QUrl(page)}));
            QVERIFY(person.isExpanded(u"docs"_s));
        }
    }

    void copyPutsTheAddressOnTheClipboard() {
        Viewer person;
        QGuiApplication::clipboard()->clear();
        person.toggleRow(u"docs"_s);
        person.click(u"Copy URL"_s);
        QCOMPARE(QGuiApplication::clipboard()->text(), u"https://docs.example"_s);
        person.toggleRow(u"docs"_s);
        QGuiApplication::clipboard()->setText(u"mine"_s);
        person.toggleRow(u"empty"_s);
        QVERIFY(!person.see(u"Copy URL"_s)->isEnabled());
        person.click(u"Copy URL"_s);
        QCOMPARE(QGuiApplication::clipboard()->text(), u"mine"_s);
    }

    void redeployIsBusyUntilItIsDone() {
        QStringList asked;
        const auto wait = [](QFuture<void> done) -> QCoro::Task<> { co_await done; };
        Viewer person;
        QPromise<void> promise;
        promise.start();
        person.state.setRedeployHandler([&](const QString& projectId) {
            asked.append(projectId);
            return wait(promise.future());
        });
        person.toggleRow(u"shop"_s);
        person.click(u"Redeploy"_s);
        QQuickItem* button = person.see(u"Deploying…"_s);
        person.click(button);
        person.press(Qt::Key_Return);
        QCOMPARE(asked, QStringList{u"shop"_s});
        QCOMPARE(person.view->activeFocusItem(), button);
        QVERIFY(person.isExpanded(u"shop"_s));
        // The other rows are free, and a new handler does not disturb what runs.
        person.toggleRow(u"docs"_s);
        person.click(u"Redeploy"_s);
        QCOMPARE(asked, (QStringList{u"shop"_s, u"docs"_s}));
        QVERIFY(!person.see(u"Redeploy"_s));
        person.state.setRedeployHandler({});
        promise.finish();
        QTRY_VERIFY(!person.see(u"Deploying…"_s));
        person.toggleRow(u"docs"_s);
        QCOMPARE(person.see(u"Redeploy"_s), button);
        // Without a handler there is nothing to wait for.
        person.click(button);
        QCOMPARE(person.see(u"Redeploy"_s), button);
    }

    void productionFilterIsStored() {
        Viewer person;
        for (const bool isOn : {true, false, true}) {
            person.click(u"Production only"_s);
            QCOMPARE(person.state.productionOnly(), isOn);
            QCOMPARE(person.defaults.boolean(u"productionOnly"_s), isOn);
            QCOMPARE(bool(person.stateOf(u"Production only"_s).checked), isOn);
        }
    }

    void buttonsDoWhatTheySay() {
        for (const auto& [button, counts] : {std::pair(u"Preferences"_s, QList{1, 0, 0}),
                                             {u"Open dashboard"_s, {0, 1, 0}},
                                             {u"Quit Tidemark"_s, {0, 0, 1}},
                                             {u"Deployments"_s, {0, 0, 0}}}) {
            Viewer person;
            const auto did = [&person] {
                return QList{person.preferencesOpened, person.dashboardOpened, person.quits};
            };
            person.click(button);
            QCOMPARE(did(), counts);
            QVERIFY(person.row(u"docs"_s));
            person.press(Qt::Key_Space);
            QCOMPARE(did(), (QList{2 * counts[0], 2 * counts[1], 2 * counts[2]}));
        }
    }

    void manageScreenFiltersWhatIsTyped() {
        Person person;
        person.fill();
        person.state.setTracked(u"shop"_s, false);
        person.show();
        person.openManage();
        QVERIFY(person.see(u"Ignored / Archived"_s));
        person.type(u"DO"_s);
        QVERIFY(person.see(u"Track docs"_s));
        QVERIFY(!person.see(u"Track shop"_s));
        QVERIFY(!person.see(u"Ignored / Archived"_s));
        // From elsewhere in the screen, as well.
        person.press(Qt::Key_Down);
        QCOMPARE(person.focused(), u"Track docs"_s);
        person.type(u"x"_s);
        QCOMPARE(person.model.filter(), u"DOx"_s);
        QVERIFY(!person.see(u"Track "_s));
        person.press(Qt::Key_Backspace);
        QCOMPARE(person.model.filter(), u"DO"_s);
        person.press(Qt::Key_Tab);
        person.press(Qt::Key_F, Qt::ControlModifier);
        person.type(u"shop"_s);
        QCOMPARE(person.model.filter(), u"shop"_s);
        QVERIFY(person.see(u"Track shop"_s));
        QVERIFY(!person.see(u"Tracked"_s));
        person.press(Qt::Key_Escape);
        QVERIFY(person.see(u"Track docs"_s) && person.see(u"Track shop"_s));
    }

    void leavingTheManageScreenForgetsTheFilter() {
        for (const QString& button : {u"Back"_s, u"Done"_s}) {
            Viewer person;
            const int height = person.view->height();
            person.openManage();
            person.type(u"nowhere"_s);
            QVERIFY(!person.see(u"Track "_s));
            person.click(button);
            QVERIFY(person.row(u"docs"_s));
            QVERIFY(!person.see(button));
            QCOMPARE(person.view->height(), height);
            // The keyboard has come along.
            person.press(Qt::Key_Down);
            QVERIFY(person.focused().startsWith(u"docs, "_s));
            person.openManage();
            QVERIFY(person.see(u"Track docs"_s));
            person.type(u"shop"_s);
            QCOMPARE(person.model.filter(), u"shop"_s);
        }
    }

    void switchMovesAProject() {
        Viewer person;
        person.openManage();
        QVERIFY(!person.see(u"Ignored / Archived"_s));
        person.click(u"Track docs"_s);
        QVERIFY(!person.state.trackedIds().contains(u"docs"_s));
        QVERIFY(!person.stateOf(u"Track docs"_s).checked);
        QVERIFY(person.see(u"Track docs"_s)->mapToScene({}).y() >
                person.see(u"Ignored / Archived"_s)->mapToScene({}).y());
        person.click(u"Track docs"_s);
        QVERIFY(person.state.trackedIds().contains(u"docs"_s));
        QVERIFY(person.stateOf(u"Track docs"_s).checked);
        QVERIFY(!person.see(u"Ignored / Archived"_s));
    }

    void doubleClickOnASwitchMeansOneProject() {
        Viewer person(20);
        person.openManage();
        QQuickItem* toggle = person.see(u"Track p0000"_s);
        const QPoint place = toggle->mapToScene({toggle->width() / 2, toggle->height() / 2}).toPoint();
        QTest::mouseDClick(person.view.get(), Qt::LeftButton, {}, place);
        person.rest();
        QCOMPARE(person.state.trackedIds().size(), 19);
    }

    void rowsStayWithinTheList() {
        Viewer person(40);
        const auto footer = [&person] {
            const QImage image = person.view->grabWindow();
            return image.copy(0, image.height() - 29, image.width(), 29);
        };
        person.scrollTo(0);
        const QImage expected = footer();
        for (const qreal y : {18.0, 30.0, 41.0}) {
            person.scrollTo(y);
            QCOMPARE(footer(), expected);
        }
        person.toggleRow(u"p0002"_s);
        QCOMPARE(footer(), expected);
    }

    void pinIsForTrackedProjects() {
        Person person;
        person.fill();
        person.state.setTracked(u"shop"_s, false);
        person.show();
        person.openManage();
        QVERIFY(!person.see(u"Pin shop"_s));
        const auto toolTip = [&person] {
            return QAccessible::queryAccessibleInterface(person.see(u"Pin docs"_s))
                ->text(QAccessible::Description);
        };
        QCOMPARE(toolTip(), u"Pin as individual menu bar icon"_s);
        person.click(u"Pin docs"_s);
        QCOMPARE(person.state.individualIds(), QSet<QString>{u"docs"_s});
        QCOMPARE(toolTip(), u"Remove from menu bar"_s);
        QVERIFY(person.stateOf(u"Pin docs"_s).checked);
        person.click(u"Pin docs"_s);
        QVERIFY(person.state.individualIds().isEmpty());
    }

    void showingAgainStartsAnew() {
        Viewer person(40);
        const int height = person.view->height();
        person.toggleRow(u"p0000"_s);
        person.scrollTo(300);
        person.toggleRow(u"p0008"_s);
        person.openManage();
        person.type(u"p0008"_s);
        person.view->hide();
        person.rest();
        person.fillWith(45);
        person.view->show();
        person.rest();
        QCOMPARE(person.view->height(), height);
        QVERIFY(person.isInSight(person.row(u"p0000"_s), person.mainList()));
        QVERIFY(!person.isExpanded(u"p0000"_s));
        QVERIFY(!person.see(u"Copy"_s));
        QCOMPARE(person.model.filter(), QString());
        person.press(Qt::Key_Down);
        QCOMPARE(person.focused(), u"p0000, Live"_s);
    }

    void hostileTextsAreDrawnInTime() {
        Person person;
        const QString huge = QString(1 << 20, u'W') + u"\n<b>bold</b>\u202E"_s;
        person.state.integrateProjects({{.id = u"site"_s, .name = huge}}, u"account"_s);
        auto deployment = person.deployment(u"READY"_s, 12min);
        deployment.url = huge;
        deployment.target = huge;
        deployment.alias = QList<QString>{huge};
        deployment.meta = DeploymentMeta{huge, huge, huge};
        person.poll(u"site"_s, {deployment, deployment});
        person.state.setError(u"site"_s, huge);
        const std::clock_t start = std::clock();
        person.show();
        person.press(Qt::Key_Down);
        person.press(Qt::Key_Return);
        person.view->grabWindow();
        person.openManage();
        person.view->grabWindow();
        const double seconds = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
        QVERIFY2(seconds < 3, qPrintable(QString::number(seconds)));
        QCOMPARE(person.view->width(), 268);
    }
};

}  // namespace tidemark

TIDEMARK_TEST_MAIN(tidemark::PopoverViewTest, tidemark::runViewTest<tidemark::PopoverViewTest>)

#include "PopoverViewTest.moc"

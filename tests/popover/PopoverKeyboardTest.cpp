#include <QAccessible>
#include <QQuickItem>
#include <QRegularExpression>
#include <algorithm>
#include <functional>
#include <utility>

#include "tests/TestProgram.h"
#include "tests/popover/Person.h"

namespace tidemark {

class PopoverKeyboardTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { QTest::failOnWarning(QRegularExpression(u"^(?!This plugin does not support)"_s)); }

    void escapeCloses() {
        Viewer person;
        person.press(Qt::Key_Down);
        person.press(Qt::Key_Escape);
        QVERIFY(!person.view->isVisible());
        person.view->show();
        person.rest();
        person.openManage();
        person.type(u"d"_s);
        person.press(Qt::Key_Escape);
        QVERIFY(person.view->isVisible());
        QCOMPARE(person.model.filter(), QString());
        person.press(Qt::Key_Escape);
        QVERIFY(!person.view->isVisible());
    }

    void keyboardKeepsItsPlaceWhenAProjectMoves() {
        Viewer person(30);
        person.openManage();
        person.press(Qt::Key_Down);
        person.press(Qt::Key_Down);
        QCOMPARE(person.focused(), u"Track p0001"_s);
        person.press(Qt::Key_Space);
        QCOMPARE(person.state.trackedIds().size(), 29);
        // On a switch that can be seen: a held key must not go through the list, nor a lost focus end the
        // way.
        QQuickItem* focus = person.view->activeFocusItem();
        QVERIFY2(person.focused().startsWith(u"Track p"_s), qPrintable(person.focused()));
        QVERIFY(focus->isVisible() && person.isInSight(focus, person.manageList()));
        const int before = person.focused().last(4).toInt();
        person.press(Qt::Key_Down);
        QCOMPARE(person.focused(), u"Track "_s + idAt(before + 1));
    }

    void tabReachesEveryControl_data() {
        QTest::addColumn<bool>("isManage");
        QTest::addColumn<QStringList>("expected");
        QTest::newRow("deployments") << false << QStringList{u"Preferences"_s,     u"Quit Tidemark"_s,
                                                             u"Deployments"_s,     u"Analytics"_s,
                                                             u"docs, Live"_s,      u"docs.example"_s,
                                                             u"Copy URL"_s,        u"Redeploy"_s,
                                                             u"Vercel"_s,          u"Deployment"_s,
                                                             u"Manage projects"_s, u"Production only"_s,
                                                             u"Open dashboard"_s};
        QTest::newRow("manage") << true
                                << QStringList{u"Back"_s, u"Filter projects..."_s, u"Pin docs"_s,
                                               u"Track docs"_s, u"Done"_s};
    }

    void tabReachesEveryControl() {
        QFETCH(bool, isManage);
        QFETCH(QStringList, expected);
        Viewer person;
        person.toggleRow(u"docs"_s);
        if (isManage)
            person.openManage();
        person.see(expected.first())->forceActiveFocus();
        const auto reached = [&](Qt::Key key) {
            QStringList names;
            for (qsizetype i = 0; i <= expected.size(); ++i) {
                names.append(person.focused());
                if (!person.view->activeFocusItem()->isVisible())
                    names.append(u"invisible"_s);
                person.press(key);
            }
            return names;
        };
        QStringList round = expected;
        round.append(expected.first());
        QCOMPARE(reached(Qt::Key_Tab), round);
        person.see(expected.first())->forceActiveFocus();
        std::ranges::reverse(round);
        QCOMPARE(reached(Qt::Key_Backtab), round);
    }

    void tabBringsTheRowIntoSight() {
        Viewer person(40);
        person.scrollTo(900);
        QVERIFY(!person.isInSight(person.row(u"p0020"_s), person.mainList()) || !person.row(u"p0000"_s) ||
                !person.isInSight(person.row(u"p0000"_s), person.mainList()));
        person.see(u"Analytics"_s)->forceActiveFocus();
        person.press(Qt::Key_Tab);
        QQuickItem* focus = person.view->activeFocusItem();
        QVERIFY2(person.focused().startsWith(u"p0"_s), qPrintable(person.focused()));
        QVERIFY2(person.isInSight(focus, person.mainList()), qPrintable(person.focused()));
    }

    void arrowsGoThroughTheRows() {
        Viewer person(40);
        const auto steps = QList<std::pair<Qt::Key, QString>>{
            {Qt::Key_Down, u"p0000"_s}, {Qt::Key_Down, u"p0001"_s},  {Qt::Key_Up, u"p0000"_s},
            {Qt::Key_End, u"p0039"_s},  {Qt::Key_Down, u"p0039"_s},  {Qt::Key_Up, u"p0038"_s},
            {Qt::Key_Home, u"p0000"_s}, {Qt::Key_PageUp, u"p0000"_s}};
        for (const auto& [key, id] : steps) {
            person.press(key);
            QCOMPARE(person.focused(), id + u", Live"_s);
            QVERIFY(person.isInSight(person.view->activeFocusItem(), person.mainList()));
        }
        person.press(Qt::Key_Up);
        QCOMPARE(person.focused(), u"Deployments"_s);
        person.press(Qt::Key_Down);
        person.press(Qt::Key_PageDown);
        const QString paged = person.focused().left(5);
        QVERIFY(paged > u"p0003"_s && paged < u"p0010"_s);
        person.press(Qt::Key_Return);
        QVERIFY(person.isExpanded(paged));
        QCOMPARE(person.focused(), paged + u", Live"_s);
        person.press(Qt::Key_Space);
        QVERIFY(!person.isExpanded(paged));
    }

    void arrowsDoNothingWithoutAList() {
        Viewer person;
        person.state.setIsLoadingProjects(true);
        person.rest();
        person.press(Qt::Key_Down);
        person.press(Qt::Key_Return);
        person.state.setIsLoadingProjects(false);
        person.rest();
        QVERIFY(!person.isExpanded(u"docs"_s));
    }

    void pollKeepsPlaceAndFocus() {
        Viewer person(40);
        person.scrollTo(300);
        person.toggleRow(u"p0008"_s);
        const qreal place = person.contentY();
        QVERIFY(place >= 200);
        QQuickItem* focus = person.view->activeFocusItem();
        for (int round = 0; round < 3; ++round) {
            for (const QString& id : ids(40))
                person.poll(id, {person.deployment(round % 2 == 0 ? u"ERROR"_s : u"QUEUED"_s, 1min)});
            person.state.integrateProjects(person.state.allProjects(), u"account"_s);
            person.rest();
            QCOMPARE(person.contentY(), place);
            QVERIFY(person.isExpanded(u"p0008"_s));
            QCOMPARE(person.view->activeFocusItem(), focus);
        }
        QCOMPARE(person.focused(), u"p0008, Error"_s);
    }

    void failingCheckDoesNotScroll() {
        Viewer person(40);
        person.toggleRow(u"p0000"_s);
        person.scrollTo(60);
        const qreal place = person.contentY();
        person.state.setError(u"p0000"_s, u"Server error (500)"_s);
        person.rest();
        QCOMPARE(person.contentY(), place);
    }

    void projectsAddedAboveKeepPlaceAndFocus() {
        Viewer person(40);
        person.scrollTo(300);
        person.toggleRow(u"p0008"_s);
        const qreal y = person.row(u"p0008"_s)->mapToScene({}).y();
        person.track({u"a"_s, u"b"_s, u"c"_s});
        person.rest();
        QCOMPARE(person.row(u"p0008"_s)->mapToScene({}).y(), y);
        QCOMPARE(person.focused(), u"p0008, Live"_s);
        QVERIFY(person.isExpanded(u"p0008"_s));
        person.press(Qt::Key_Down);
        QCOMPARE(person.focused(), u"p0009, Live"_s);
        person.press(Qt::Key_Home);
        QCOMPARE(person.focused(), u"a, state unknown"_s);
        QVERIFY(person.isInSight(person.view->activeFocusItem(), person.mainList()));
    }

    void onlyRowsInSightExist() {
        Viewer person(2000);
        QVERIFY(person.delegates(person.mainList()) < 30);
        person.press(Qt::Key_Down);
        person.press(Qt::Key_End);
        QCOMPARE(person.focused(), u"p1999, Live"_s);
        QVERIFY(person.delegates(person.mainList()) < 30);
        for (int i = 0; i < 15; ++i)
            person.scrollTo(i * 6000);
        QVERIFY2(person.delegates(person.mainList()) < 30,
                 qPrintable(QString::number(person.delegates(person.mainList()))));
        person.openManage();
        QVERIFY(person.delegates(person.manageList()) < 30);
    }

    void controlsCanBeToldAndPressedByTools_data() {
        QTest::addColumn<bool>("isManage");
        QTest::newRow("deployments") << false;
        QTest::newRow("manage") << true;
    }

    void controlsCanBeToldAndPressedByTools() {
        QFETCH(bool, isManage);
        Viewer person;
        const auto press = [&person](const QString& name) {
            auto* action = QAccessible::queryAccessibleInterface(person.see(name))->actionInterface();
            action->doAction(QAccessibleActionInterface::pressAction());
            person.rest();
        };
        press(isManage ? u"Manage projects"_s : u"docs, Live"_s);
        QTRY_VERIFY(person.see(isManage ? u"Track docs"_s : u"Copy URL"_s));

        // What a tool finds on its way down from the window.
        QSet<QObject*> told;
        const std::function<void(QAccessibleInterface*)> tell = [&](QAccessibleInterface* interface) {
            told.insert(interface->object());
            for (int i = 0; i < interface->childCount(); ++i)
                tell(interface->child(i));
        };
        tell(QAccessible::queryAccessibleInterface(person.view.get()));
        int controls = 0;
        for (QQuickItem* item : visibleItems(person.view->rootObject())) {
            QAccessibleInterface* interface = QAccessible::queryAccessibleInterface(item);
            if (interface)
                QVERIFY2(interface->role() != QAccessible::NoRole, item->metaObject()->className());
            if (!item->activeFocusOnTab())
                continue;
            ++controls;
            QVERIFY2(interface && !nameOf(item).isEmpty(), item->metaObject()->className());
            QVERIFY2(interface->state().focusable, qPrintable(nameOf(item)));
            QVERIFY2(told.contains(item), qPrintable(nameOf(item)));
        }
        QVERIFY(controls >= 5);
    }
};

}  // namespace tidemark

TIDEMARK_TEST_MAIN(tidemark::PopoverKeyboardTest, tidemark::runViewTest<tidemark::PopoverKeyboardTest>)

#include "PopoverKeyboardTest.moc"

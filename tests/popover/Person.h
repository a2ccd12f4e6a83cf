#pragma once

#include <QAccessible>

#include "tests/popover/Scene.h"

namespace tidemark {

inline QString nameOf(QQuickItem* item) {
    QAccessibleInterface* interface = item ? QAccessible::queryAccessibleInterface(item) : nullptr;
    return interface ? interface->text(QAccessible::Name) : QString();
}

/// Everything on the screen below an item, in order.
inline QList<QQuickItem*> visibleItems(QQuickItem* item) {
    QList<QQuickItem*> items;
    if (!item->isVisible())
        return items;
    items.append(item);
    for (QQuickItem* child : item->childItems())
        items += visibleItems(child);
    return items;
}

inline QString idAt(int place) {
    return u"p%1"_s.arg(place, 4, 10, QChar(u'0'));
}

inline QStringList ids(int count) {
    QStringList names;
    for (int i = 0; i < count; ++i)
        names.append(idAt(i));
    return names;
}

/// Somebody in front of the popover, who knows controls by their accessible names.
class Person : public ShownScene {
public:
    /// The first visible item whose name begins so; null when there is none.
    [[nodiscard]] QQuickItem* see(const QString& name) const {
        for (QQuickItem* item : visibleItems(view->rootObject())) {
            if (nameOf(item).startsWith(name))
                return item;
        }
        return nullptr;
    }

    [[nodiscard]] QQuickItem* row(const QString& projectId) const { return see(projectId + u", "_s); }
    [[nodiscard]] QQuickItem* mainList() const { return see(u"Deployments"_s, QAccessible::List); }
    [[nodiscard]] QQuickItem* manageList() const { return see(u"Projects"_s, QAccessible::List); }

    [[nodiscard]] QQuickItem* see(const QString& name, QAccessible::Role role) const {
        for (QQuickItem* item : visibleItems(view->rootObject())) {
            if (nameOf(item) == name && QAccessible::queryAccessibleInterface(item)->role() == role)
                return item;
        }
        return nullptr;
    }

    [[nodiscard]] QAccessible::State stateOf(const QString& name) const {
        return QAccessible::queryAccessibleInterface(see(name))->state();
    }

    [[nodiscard]] QString focused() const { return nameOf(view->activeFocusItem()); }

    [[nodiscard]] bool isExpanded(const QString& projectId) const {
        return QAccessible::queryAccessibleInterface(row(projectId))
            ->text(QAccessible::Description)
            .startsWith(u"Expanded"_s);
    }

    void click(const QString& name) const { click(see(name)); }
    void click(QQuickItem* item) const {
        QVERIFY(item);
        click(item, {item->width() / 2, item->height() / 2});
    }
    void click(QQuickItem* item, QPointF place) const {
        QVERIFY(item);
        QTest::mouseClick(view.get(), Qt::LeftButton, {}, item->mapToScene(place).toPoint());
        rest();
    }
    /// Waits for the row to be unfolded, or folded.
    void toggleRow(const QString& projectId) const {
        const bool wasExpanded = isExpanded(projectId);
        clickRow(projectId);
        QTRY_COMPARE(row(projectId)->parentItem()->parentItem()->property("reveal").toReal(),
                     wasExpanded ? 0.0 : 1.0);
        rest();
    }
    /// Draws until the size has come to rest.
    void rest() const {
        for (int height = -1; height != view->height();) {
            height = view->height();
            settle();
            view->grabWindow();
            settle();
        }
    }
    /// At the word for the state, beside the links.
    void clickRow(const QString& projectId) const {
        QQuickItem* head = row(projectId);
        QVERIFY(head);
        click(head, {head->width() - 30, head->height() / 2});
    }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) const {
        QTest::keyClick(view.get(), key, modifiers);
        rest();
    }
    void type(const QString& text) const {
        for (const QChar letter : text)
            QTest::sendKeyEvent(QTest::Click, view.get(), Qt::Key_unknown, letter, Qt::NoModifier);
        rest();
    }
    void openManage() const {
        click(u"Manage projects"_s);
        QVERIFY(manageList() || see(u"Filter projects"_s));
    }

    [[nodiscard]] qreal contentY() const { return mainList()->property("contentY").toReal(); }
    void scrollTo(qreal y) const {
        mainList()->setProperty("contentY", y);
        rest();
    }
    [[nodiscard]] static qsizetype delegates(QQuickItem* list) {
        return list->property("contentItem").value<QQuickItem*>()->childItems().size();
    }
    /// Whether nothing of an item is scrolled out of a list.
    [[nodiscard]] static bool isInSight(QQuickItem* item, QQuickItem* list) {
        const QRectF place = item->mapRectToItem(list, QRectF(0, 0, item->width(), item->height()));
        return QRectF(0, 0, list->width(), list->height()).contains(place);
    }

    /// A project with everything that a row can show, and one with nothing.
    void fill() {
        track({u"docs"_s, u"empty"_s, u"shop"_s});
        auto ready = deployment(u"READY"_s, 12min);
        ready.alias = QList<QString>{u"docs.example"_s};
        poll(u"docs"_s, {ready, deployment(u"ERROR"_s, 2h)});
        poll(u"empty"_s, {});
        poll(u"shop"_s, {deployment(u"BUILDING"_s, 20s)});
    }

    void fillWith(int count) {
        state.setAllProjects({});
        track(ids(count));
        for (const QString& id : ids(count))
            poll(id, {deployment(u"READY"_s, 12min)});
        settle();
    }
};

/// Runs a test of the views, as they are when an assistive tool is there.
template <typename Test>
int runViewTest(int argc, char** argv) {
    PopoverView::prepareApplication();
    const QGuiApplication application(argc, argv);
    QAccessible::setActive(true);
    Test test;
    return QTest::qExec(&test, argc, argv);
}

}  // namespace tidemark

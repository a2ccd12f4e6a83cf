#pragma once

#include "tests/TestProgram.h"
#include "tests/fakes/ViewUser.h"
#include "tests/popover/Scene.h"

namespace tidemark {

inline QString idAt(int place) {
    return u"p%1"_s.arg(place, 4, 10, QChar(u'0'));
}

inline QStringList ids(int count) {
    QStringList names;
    for (int i = 0; i < count; ++i)
        names.append(idAt(i));
    return names;
}

/// Somebody in front of the popover.
class Person : public ShownScene, public ViewUser {
public:
    [[nodiscard]] QQuickView& screen() const override { return *view; }

    using ViewUser::settle;

    [[nodiscard]] QQuickItem* row(const QString& projectId) const { return see(projectId + u", "_s); }
    [[nodiscard]] QQuickItem* mainList() const { return see(u"Deployments"_s, QAccessible::List); }
    [[nodiscard]] QQuickItem* manageList() const { return see(u"Projects"_s, QAccessible::List); }

    [[nodiscard]] bool isExpanded(const QString& projectId) const {
        return QAccessible::queryAccessibleInterface(row(projectId))
            ->text(QAccessible::Description)
            .startsWith(u"Expanded"_s);
    }

    /// Waits for the row to be unfolded, or folded.
    void toggleRow(const QString& projectId) const {
        const bool wasExpanded = isExpanded(projectId);
        clickRow(projectId);
        QTRY_COMPARE(row(projectId)->parentItem()->parentItem()->property("reveal").toReal(),
                     wasExpanded ? 0.0 : 1.0);
        rest();
    }
    /// At the word for the state, beside the links.
    void clickRow(const QString& projectId) const {
        QQuickItem* head = row(projectId);
        QVERIFY(head);
        click(head, {head->width() - 30, head->height() / 2});
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

/// Somebody in front of a popover that is on the screen, with the projects of `fill` or so many of
/// `fillWith`.
class Viewer final : public Person {
public:
    Viewer() {
        fill();
        show();
    }
    explicit Viewer(int count) {
        fillWith(count);
        show();
    }
};

}  // namespace tidemark

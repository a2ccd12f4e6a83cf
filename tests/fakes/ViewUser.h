#pragma once

#include <QAccessible>
#include <QGuiApplication>
#include <QQuickItem>
#include <QQuickView>
#include <QTest>

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

/// Somebody in front of a window, who knows its controls by their accessible names.
class ViewUser {
public:
    ViewUser() = default;
    ViewUser(const ViewUser&) = delete;
    ViewUser& operator=(const ViewUser&) = delete;
    virtual ~ViewUser() = default;

    /// The window that is on the screen.
    [[nodiscard]] virtual QQuickView& screen() const = 0;

    /// The first visible item whose name begins so; null when there is none.
    [[nodiscard]] QQuickItem* see(const QString& name) const {
        for (QQuickItem* item : visibleItems(screen().rootObject()))
            if (nameOf(item).startsWith(name))
                return item;
        return nullptr;
    }
    /// The first one of exactly that name and role.
    [[nodiscard]] QQuickItem* see(const QString& name, QAccessible::Role role) const {
        for (QQuickItem* item : visibleItems(screen().rootObject()))
            if (nameOf(item) == name && QAccessible::queryAccessibleInterface(item)->role() == role)
                return item;
        return nullptr;
    }
    [[nodiscard]] QAccessible::State stateOf(const QString& name) const {
        return QAccessible::queryAccessibleInterface(see(name))->state();
    }
    [[nodiscard]] QString focused() const { return nameOf(screen().activeFocusItem()); }

    void click(const QString& name) const { click(see(name)); }
    void click(QQuickItem* item) const {
        QVERIFY(item);
        click(item, {item->width() / 2, item->height() / 2});
    }
    void click(QQuickItem* item, QPointF place) const {
        QVERIFY(item);
        QTest::mouseClick(&screen(), Qt::LeftButton, {}, item->mapToScene(place).toPoint());
        rest();
    }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) const {
        QTest::keyClick(&screen(), key, modifiers);
        rest();
    }
    void type(const QString& text) const {
        for (const QChar letter : text)
            QTest::sendKeyEvent(QTest::Click, &screen(), Qt::Key_unknown, letter, Qt::NoModifier);
        rest();
    }
    /// Draws until the size has come to rest. The window may go meanwhile.
    void rest() const {
        for (int height = -1; height != screen().height();) {
            height = screen().height();
            settle();
            if (screen().isVisible())
                screen().grabWindow();
            settle();
        }
    }
    static void settle() {
        QCoreApplication::processEvents();
        QCoreApplication::processEvents();
    }
};

/// Runs a test of the views, as they are when an assistive tool is there.
template <typename Test>
int runViewTest(int argc, char** argv) {
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    const QGuiApplication application(argc, argv);
    QAccessible::setActive(true);
    Test test;
    return QTest::qExec(&test, argc, argv);
}

}  // namespace tidemark

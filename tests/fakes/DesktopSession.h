#pragma once

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusReply>
#include <QDBusVariant>
#include <QProcess>
#include <QRect>
#include <QRegularExpression>
#include <QStringList>
#include <QVariant>
#include <memory>

#include "sandbox/Sandbox.h"
#include "tests/TestProgram.h"

/// What tests of whole programs do and see in a desktop session.
namespace tidemark::desktopsession {

using namespace Qt::StringLiterals;

inline const QString watcherName = u"org.kde.StatusNotifierWatcher"_s;

inline bool isOnTheBus(const QString& name) {
    return QDBusConnection::sessionBus().interface()->isServiceRegistered(name);
}

/// A property of an object on the session bus; invalid when it cannot be had.
inline QVariant busProperty(const QString& service, const QString& path, const QString& interface,
                            const QString& property) {
    QDBusMessage get =
        QDBusMessage::createMethodCall(service, path, u"org.freedesktop.DBus.Properties"_s, u"Get"_s);
    get << interface << property;
    const QDBusReply<QDBusVariant> reply = QDBusConnection::sessionBus().call(get, QDBus::Block, hangLimit);
    return reply.isValid() ? reply.value().variant() : QVariant();
}

/// A property of one of the items that the panel knows, as any panel reads it; invalid when there is none.
inline QVariant itemProperty(const QString& property, const QString& id = u"tidemark"_s) {
    const QStringList items =
        busProperty(watcherName, u"/StatusNotifierWatcher"_s, watcherName, u"RegisteredStatusNotifierItems"_s)
            .toStringList();
    for (const auto& item : items) {
        const auto slash = item.indexOf(u'/');
        const auto read = [&item, slash](const QString& name) {
            return busProperty(item.first(slash), item.sliced(slash), u"org.kde.StatusNotifierItem"_s, name);
        };
        if (read(u"Id"_s) == id)
            return property.isEmpty() ? QVariant(item.first(slash)) : read(property);
    }
    return {};
}

/// Runs a program and gives what it printed.
inline QString output(const QString& program, const QStringList& arguments) {
    QProcess process;
    process.start(program, arguments);
    process.waitForFinished(hangLimit);
    return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
}

/// Where the popover is on the screen; empty while it is closed.
inline QRect popover() {
    const QString geometry = output(u"xdotool"_s, {u"search"_s, u"--onlyvisible"_s, u"--name"_s,
                                                   u"^Tidemark$"_s, u"getwindowgeometry"_s, u"--shell"_s});
    const auto number = [&geometry](const QString& name) {
        const QRegularExpression line(u"^%1=(-?\\d+)$"_s.arg(name), QRegularExpression::MultilineOption);
        return line.match(geometry).captured(1).toInt();
    };
    return {number(u"X"_s), number(u"Y"_s), number(u"WIDTH"_s), number(u"HEIGHT"_s)};
}

inline bool isPreferencesShown() {
    return !output(u"xdotool"_s, {u"search"_s, u"--onlyvisible"_s, u"--name"_s, u"^Tidemark Preferences$"_s})
                .isEmpty();
}

/// The title of the window that has the focus according to the window manager.
inline QString activeTitle() {
    return output(u"xdotool"_s, {u"getactivewindow"_s, u"getwindowname"_s});
}

/// Ends a program as the desktop does at the end of a session.
inline void quit(QProcess& process) {
    process.terminate();
    if (!process.waitForFinished(hangLimit))
        process.kill();
    process.waitForFinished(hangLimit);
}

/// A frozen world of three projects to watch, and a window manager to show windows.
inline void startSurroundings(std::unique_ptr<sandbox::Sandbox>& world, QProcess& windowManager) {
    world = std::make_unique<sandbox::Sandbox>(sandbox::SandboxOptions{.seed = 3, .projects = 3, .speed = 0});
    QVERIFY(world->start());
    windowManager.start(u"openbox"_s, QStringList());
    QVERIFY(windowManager.waitForStarted(hangLimit));
}

/// Starts a panel, and waits for its tray.
inline void launchPanel(QProcess& process, const QString& program, const QStringList& arguments = {}) {
    process.start(program, arguments);
    QVERIFY(process.waitForStarted(hangLimit));
    QTRY_VERIFY(isOnTheBus(watcherName));
}

/// Gives it no chance to say good-bye, and waits until its name is gone from the bus.
inline void killAndWait(QProcess& process, const QString& name) {
    process.kill();
    process.waitForFinished(hangLimit);
    QTRY_VERIFY(!isOnTheBus(name));
}

}  // namespace tidemark::desktopsession

#include <QDBusConnection>
#include <QDBusMessage>
#include <QGuiApplication>

/// As little as it takes to have an item: a window system, a bus and the one call.
int main(int argc, char** argv) {
    const QGuiApplication application(argc, argv);
    const QString watcher = QStringLiteral("org.kde.StatusNotifierWatcher");
    QDBusMessage registration =
        QDBusMessage::createMethodCall(watcher, QStringLiteral("/StatusNotifierWatcher"), watcher,
                                       QStringLiteral("RegisterStatusNotifierItem"));
    registration << QDBusConnection::sessionBus().baseService();
    QDBusConnection::sessionBus().send(registration);
    return QGuiApplication::exec();
}

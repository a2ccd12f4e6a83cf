#include <QDBusConnection>
#include <QDBusMessage>
#include <QGuiApplication>

using namespace Qt::StringLiterals;

/// As little as it takes to have an item: a window system, a bus and the one call.
int main(int argc, char** argv) {
    const QGuiApplication application(argc, argv);
    const QString watcher = u"org.kde.StatusNotifierWatcher"_s;
    QDBusMessage registration = QDBusMessage::createMethodCall(watcher, u"/StatusNotifierWatcher"_s, watcher,
                                                               u"RegisterStatusNotifierItem"_s);
    registration << QDBusConnection::sessionBus().baseService();
    QDBusConnection::sessionBus().send(registration);
    return QGuiApplication::exec();
}

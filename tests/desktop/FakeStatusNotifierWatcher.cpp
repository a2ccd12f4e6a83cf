#include "FakeStatusNotifierWatcher.h"

#include <QDBusConnectionInterface>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusPendingCall>

namespace tidemark {
namespace {

QString uniqueName() {
    static int count = 0;
    return QStringLiteral("watcher-%1").arg(++count);
}

}  // namespace

FakeStatusNotifierWatcher::FakeStatusNotifierWatcher()
    : m_connection(QDBusConnection::connectToBus(QDBusConnection::SessionBus, uniqueName())) {
    m_connection.registerObject(QStringLiteral("/StatusNotifierWatcher"), this,
                                QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllProperties);
}

FakeStatusNotifierWatcher::~FakeStatusNotifierWatcher() {
    QDBusConnection::disconnectFromBus(m_connection.name());
}

void FakeStatusNotifierWatcher::appear() {
    m_connection.interface()->registerService(QStringLiteral("org.kde.StatusNotifierWatcher"),
                                              QDBusConnectionInterface::ReplaceExistingService,
                                              QDBusConnectionInterface::AllowReplacement);
}

QStringList FakeStatusNotifierWatcher::items() {
    ++listReads;
    return m_items;
}

void FakeStatusNotifierWatcher::RegisterStatusNotifierItem(const QString& service) {
    ++registrations;
    if (refusals > 0) {
        --refusals;
        sendErrorReply(QDBusError::Failed, QStringLiteral("not yet"));
    } else if (lapses > 0) {
        --lapses;
    } else {
        m_items.append(service + QStringLiteral("/StatusNotifierItem"));
        // As panels do.
        QDBusMessage read = QDBusMessage::createMethodCall(service, QStringLiteral("/StatusNotifierItem"),
                                                           QStringLiteral("org.freedesktop.DBus.Properties"),
                                                           QStringLiteral("GetAll"));
        read << QStringLiteral("org.kde.StatusNotifierItem");
        m_connection.asyncCall(read);
    }
}

}  // namespace tidemark

#include "tests/platform/tray/FakeStatusNotifierWatcher.h"

#include <QDBusConnectionInterface>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusPendingCall>

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

QString uniqueName() {
    static int count = 0;
    return u"watcher-%1"_s.arg(++count);
}

}  // namespace

FakeStatusNotifierWatcher::FakeStatusNotifierWatcher()
    : m_connection(QDBusConnection::connectToBus(QDBusConnection::SessionBus, uniqueName())) {
    m_connection.registerObject(u"/StatusNotifierWatcher"_s, this,
                                QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllProperties);
}

FakeStatusNotifierWatcher::~FakeStatusNotifierWatcher() {
    QDBusConnection::disconnectFromBus(m_connection.name());
}

void FakeStatusNotifierWatcher::appear() {
    m_connection.interface()->registerService(u"org.kde.StatusNotifierWatcher"_s,
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
        sendErrorReply(QDBusError::Failed, u"not yet"_s);
    } else if (lapses > 0) {
        --lapses;
    } else {
        m_items.append(service + u"/StatusNotifierItem"_s);
        // Panels read a new item at once.
        QDBusMessage read = QDBusMessage::createMethodCall(service, u"/StatusNotifierItem"_s,
                                                           u"org.freedesktop.DBus.Properties"_s, u"GetAll"_s);
        read << u"org.kde.StatusNotifierItem"_s;
        m_connection.asyncCall(read);
    }
}

}  // namespace tidemark

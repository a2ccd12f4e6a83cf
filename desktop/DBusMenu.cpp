#include "desktop/DBusMenu.h"

#include <QDBusError>
#include <QDBusMetaType>

namespace tidemark {
namespace {

constexpr int rootId = 0;
constexpr uint revision = 1;

}  // namespace

QDBusArgument& operator<<(QDBusArgument& argument, const DBusMenuLayout& layout) {
    argument.beginStructure();
    argument << layout.id << layout.properties << layout.children;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, DBusMenuLayout& layout) {
    argument.beginStructure();
    argument >> layout.id >> layout.properties >> layout.children;
    argument.endStructure();
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const DBusMenuProperties& properties) {
    argument.beginStructure();
    argument << properties.id << properties.properties;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, DBusMenuProperties& properties) {
    argument.beginStructure();
    argument >> properties.id >> properties.properties;
    argument.endStructure();
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const DBusMenuEvent& event) {
    argument.beginStructure();
    argument << event.id << event.eventId << event.data << event.timestamp;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, DBusMenuEvent& event) {
    argument.beginStructure();
    argument >> event.id >> event.eventId >> event.data >> event.timestamp;
    argument.endStructure();
    return argument;
}

DBusMenu::DBusMenu() {
    qDBusRegisterMetaType<DBusMenuLayout>();
    qDBusRegisterMetaType<DBusMenuProperties>();
    qDBusRegisterMetaType<QList<DBusMenuProperties>>();
    qDBusRegisterMetaType<DBusMenuEvent>();
    qDBusRegisterMetaType<QList<DBusMenuEvent>>();
}

uint DBusMenu::GetLayout(int parentId, int /*recursionDepth*/, const QStringList& /*propertyNames*/,
                         DBusMenuLayout& layout) {
    if (parentId != rootId) {
        refuse(QStringLiteral("no such entry"));
    }
    layout = {};
    return revision;
}

QList<DBusMenuProperties> DBusMenu::GetGroupProperties(const QList<int>& ids,
                                                       const QStringList& /*propertyNames*/) {
    // No ids means all entries. Unknown ones are left out of the answer.
    if (ids.isEmpty() || ids.contains(rootId)) {
        return {{rootId, {}}};
    }
    return {};
}

QDBusVariant DBusMenu::GetProperty(int /*id*/, const QString& /*name*/) {
    refuse(QStringLiteral("no such property"));
    return QDBusVariant(QString());
}

void DBusMenu::Event(int /*id*/, const QString& /*eventId*/, const QDBusVariant& /*data*/,
                     uint /*timestamp*/) {}

QList<int> DBusMenu::EventGroup(const QList<DBusMenuEvent>& events) {
    QList<int> unknown;
    for (const DBusMenuEvent& event : events) {
        if (event.id != rootId) {
            unknown.append(event.id);
        }
    }
    return unknown;
}

bool DBusMenu::AboutToShow(int /*id*/) {
    return false;
}

QList<int> DBusMenu::AboutToShowGroup(const QList<int>& ids, QList<int>& idErrors) {
    idErrors = ids;
    idErrors.removeAll(rootId);
    return {};
}

void DBusMenu::refuse(const QString& message) {
    if (calledFromDBus()) {
        sendErrorReply(QDBusError::InvalidArgs, message);
    }
}

}  // namespace tidemark

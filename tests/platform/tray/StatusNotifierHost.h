#pragma once

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QStringList>
#include <utility>

#include "platform/tray/StatusNotifierItem.h"

namespace tidemark {

/// A panel that reads one item and its menu over a bus connection of its own.
class StatusNotifierHost final : public QObject {
    Q_OBJECT

public:
    explicit StatusNotifierHost(QString service)
        : m_bus(QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("host"))),
          m_service(std::move(service)) {
        for (const QString& interface : {m_itemInterface, m_menuInterface})
            m_bus.connect(m_service, {}, interface, {}, this, SLOT(note(QDBusMessage)));
    }
    ~StatusNotifierHost() override { QDBusConnection::disconnectFromBus(m_bus.name()); }

    [[nodiscard]] QDBusMessage callItem(const QString& method, const QVariantList& arguments = {}) const {
        return call(m_itemPath, m_itemInterface, method, arguments);
    }
    [[nodiscard]] QDBusMessage callMenu(const QString& method, const QVariantList& arguments = {}) const {
        return call(QStringLiteral("/MenuBar"), m_menuInterface, method, arguments);
    }
    [[nodiscard]] QDBusMessage allProperties() const {
        return call(m_itemPath, m_propertiesInterface, QStringLiteral("GetAll"), {m_itemInterface});
    }
    [[nodiscard]] QVariant property(const QString& name) const {
        const QDBusMessage reply =
            call(m_itemPath, m_propertiesInterface, QStringLiteral("Get"), {m_itemInterface, name});
        return reply.arguments().value(0).value<QDBusVariant>().variant();
    }
    [[nodiscard]] QString toolTipTitle() const {
        return qdbus_cast<StatusToolTip>(property(QStringLiteral("ToolTip"))).title;
    }
    /// Waits for all signals that were sent, and gives the names of those since the last call, in order.
    QStringList takeSignals() {
        QCoreApplication::processEvents();
        static_cast<void>(property(QStringLiteral("Id")));
        QCoreApplication::processEvents();
        return std::exchange(m_signals, {});
    }

private Q_SLOTS:
    void note(const QDBusMessage& signal) { m_signals.append(signal.member()); }

private:
    [[nodiscard]] QDBusMessage call(const QString& path, const QString& interface, const QString& method,
                                    const QVariantList& arguments) const {
        QDBusMessage message = QDBusMessage::createMethodCall(m_service, path, interface, method);
        message.setArguments(arguments);
        return m_bus.call(message, QDBus::BlockWithGui);
    }

    const QString m_itemPath = QStringLiteral("/StatusNotifierItem");
    const QString m_itemInterface = QStringLiteral("org.kde.StatusNotifierItem");
    const QString m_menuInterface = QStringLiteral("com.canonical.dbusmenu");
    const QString m_propertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");
    QDBusConnection m_bus;
    QString m_service;
    QStringList m_signals;
};

}  // namespace tidemark

#pragma once

#include <QDBusConnection>
#include <QDBusVirtualObject>
#include <QList>
#include <QStringList>
#include <QVariantMap>

namespace tidemark {

/// A desktop's org.freedesktop.Notifications on a bus connection of its own, well behaved or not.
class FakeNotificationService final : public QDBusVirtualObject {
public:
    struct Notification {
        QString applicationName;
        uint replacesId = 0;
        QString icon;
        QString title;
        QString body;
        QStringList actions;
        QVariantMap hints;
        int expiry = 0;
    };

    FakeNotificationService();
    ~FakeNotificationService() override;

    /// Takes the service's name, from another service if need be.
    void appear();

    /// What it answers when asked for its capabilities; without a value, an error.
    QVariant capabilities = QStringList{QStringLiteral("body"), QStringLiteral("actions")};
    /// What it answers to the next notification instead of a number.
    QVariant wrongAnswer;
    bool isSilent = false;
    /// Signals, each with its arguments, that it sends before it answers the next notification.
    QList<std::pair<QString, QVariantList>> early;
    uint nextId = 1;

    QList<Notification> notifications;
    int callCount = 0;

    /// Tells every program.
    void emitSignal(const QString& name, const QVariantList& arguments) const;

    [[nodiscard]] QString introspect(const QString& path) const override;
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

private:
    [[nodiscard]] QDBusMessage answerTo(const QDBusMessage& message);

    QDBusConnection m_connection;
};

}  // namespace tidemark

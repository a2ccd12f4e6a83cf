#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QList>
#include <QObject>
#include <optional>
#include <stop_token>

#include "platform/base/TaskScope.h"
#include "platform/session/NotificationCenter.h"

namespace tidemark {

/// The desktop's notification service (Desktop Notifications protocol 1.2). Calls never block, and a
/// notification that the service does not accept is dropped. The service may be missing, be started by the
/// first notification, be replaced by another one, or never answer.
class DBusNotificationCenter final : public QObject, public NotificationCenter {
    Q_OBJECT

public:
    /// `desktopEntry` is the name of the program's desktop file without its suffix. Without a connection,
    /// `bus` behaves as if there were no service.
    DBusNotificationCenter(QString applicationName, QString desktopEntry, QDBusConnection bus);
    ~DBusNotificationCenter() override;

    /// Does nothing: the user allows notifications in the desktop's own settings.
    void requestAuthorization() override {}
    void add(const NotificationRequest& request, std::function<void()> onDropped = {}) override;
    void setResponseHandler(ResponseHandler handler) override { m_handler = std::move(handler); }

private Q_SLOTS:
    void onSignal(const QDBusMessage& signal);

private:
    /// A notification that is shown. Ids of different services may coincide, so an id counts only together
    /// with the unique bus name of its service, which no other process ever gets.
    struct Shown {
        QString service;
        uint id = 0;
        UserInfo userInfo;
        /// Those that were offered; nothing when the notification cannot be clicked.
        QStringList actions;
    };

    QCoro::Task<> post(NotificationRequest request, std::function<void()> onDropped, std::stop_token stop);
    /// Hands the notification to the service; nothing when the service does not show it.
    QCoro::Task<std::optional<Shown>> show(NotificationRequest request, std::stop_token stop);
    /// The Notify call for a service with these capabilities.
    [[nodiscard]] QDBusMessage notifyCall(const QString& service, const NotificationRequest& request,
                                          const QStringList& capabilities) const;
    void remember(Shown notification);
    /// Handles a signal about one of our notifications; false when it is about none that we know.
    bool handle(const QDBusMessage& signal);

    QString m_applicationName;
    QString m_desktopEntry;
    QDBusConnection m_bus;
    ResponseHandler m_handler;
    /// How many notifications are on their way to the service.
    int m_posts = 0;
    /// Those that can be clicked, oldest first.
    QList<Shown> m_clickable;
    /// Signals that came while an answer was pending which may tell that they are about our notifications.
    QList<QDBusMessage> m_early;
    /// Last: its tasks use the members above.
    TaskScope m_tasks;
};

}  // namespace tidemark

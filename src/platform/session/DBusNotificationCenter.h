#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QList>
#include <QObject>
#include <memory>
#include <vector>

#include "platform/session/NotificationCenter.h"

namespace tidemark {

/// The desktop's notification service, after the Desktop Notifications protocol 1.2. Every call is
/// asynchronous; what the service cannot take is dropped. The service may be missing, start with the first
/// notification, be replaced, or never answer.
class DBusNotificationCenter final : public QObject, public NotificationCenter {
    Q_OBJECT

public:
    /// `desktopEntry` is the name of the program's desktop file without its suffix. A `bus` that is not
    /// connected is the same as no service.
    DBusNotificationCenter(QString applicationName, QString desktopEntry, QDBusConnection bus);
    ~DBusNotificationCenter() override;

    /// Nothing to do: the desktop's own settings decide without asking.
    void requestAuthorization() override {}
    void add(const NotificationRequest& request, std::function<void()> onDropped = {}) override;
    void setResponseHandler(ResponseHandler handler) override { m_handler = std::move(handler); }

private Q_SLOTS:
    void onSignal(const QDBusMessage& signal);

private:
    struct Post;
    /// A notification that can be clicked. The number is one service's own, so it counts only together with
    /// that service's unique bus name, which no other process ever gets.
    struct Shown {
        QString service;
        uint id = 0;
        UserInfo userInfo;
    };
    using Handler = void (DBusNotificationCenter::*)(Post& post, const QDBusMessage& reply);

    void call(Post& post, const QDBusMessage& message, Handler handler);
    void onStarted(Post& post, const QDBusMessage& reply);
    void onOwner(Post& post, const QDBusMessage& reply);
    void onCapabilities(Post& post, const QDBusMessage& reply);
    void onNotified(Post& post, const QDBusMessage& reply);
    /// It is shown, or cannot be.
    void finish(Post& post);
    void drop(Post& post);
    void remember(Shown shown);
    /// Does what a signal about one of our notifications says; false when it is about none that we know.
    bool handle(const QDBusMessage& signal);

    QString m_applicationName;
    QString m_desktopEntry;
    QDBusConnection m_bus;
    ResponseHandler m_handler;
    /// Under way, oldest first.
    std::vector<std::unique_ptr<Post>> m_posts;
    /// Oldest first.
    QList<Shown> m_shown;
    /// Signals of the time in which an answer is outstanding that may tell us that they are ours.
    QList<QDBusMessage> m_early;
};

}  // namespace tidemark

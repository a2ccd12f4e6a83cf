#pragma once

#include <QHash>
#include <QList>
#include <QString>
#include <functional>

namespace tidemark {

struct NotificationRequest;

/// The desktop's notifications. Nothing here blocks or fails: a notification that no service shows is
/// dropped.
class NotificationCenter {
public:
    using UserInfo = QHash<QString, QString>;
    /// Takes the user info of a notification and the identifier of the action that its user chose.
    using ResponseHandler = std::function<void(const UserInfo& userInfo, const QString& action)>;

    NotificationCenter() = default;
    NotificationCenter(const NotificationCenter&) = delete;
    NotificationCenter& operator=(const NotificationCenter&) = delete;
    virtual ~NotificationCenter() = default;

    /// Asks for the permission to show notifications, on desktops that require one.
    virtual void requestAuthorization() = 0;
    /// Shows a notification. `onDropped` is called, from the event loop, when no service shows it.
    virtual void add(const NotificationRequest& request, std::function<void()> onDropped = {}) = 0;
    /// Sets the function that is called, from the event loop, when the user clicks a notification or one of
    /// its buttons.
    virtual void setResponseHandler(ResponseHandler handler) = 0;
};

/// What the user can do with a notification.
struct NotificationAction {
    /// The click on the notification itself. It has no title, because XFCE's service shows a button for it
    /// otherwise. That service ignores the click itself, so there should be a button beside it.
    static NotificationAction click() { return {.identifier = QStringLiteral("default"), .title = {}}; }

    QString identifier;
    QString title;

    bool operator==(const NotificationAction&) const = default;
};

/// A notification with the default sound.
struct NotificationRequest {
    /// Unique, so that no notification replaces another one.
    QString identifier;
    QString title;
    /// Plain text.
    QString body;
    /// Passed to the response handler.
    NotificationCenter::UserInfo userInfo;
    /// Offered where the service shows any. Without them the notification cannot be clicked.
    QList<NotificationAction> actions{};

    bool operator==(const NotificationRequest&) const = default;
};

}  // namespace tidemark

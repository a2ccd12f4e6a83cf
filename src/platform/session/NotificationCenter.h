#pragma once

#include <QHash>
#include <QString>
#include <functional>

namespace tidemark {

struct NotificationRequest;

/// The desktop's notifications. Nothing here blocks or fails: a notification that no service shows is
/// dropped.
class NotificationCenter {
public:
    using UserInfo = QHash<QString, QString>;
    using ResponseHandler = std::function<void(const UserInfo& userInfo)>;

    NotificationCenter() = default;
    NotificationCenter(const NotificationCenter&) = delete;
    NotificationCenter& operator=(const NotificationCenter&) = delete;
    virtual ~NotificationCenter() = default;

    /// Asks for the permission to show notifications, on desktops that require one.
    virtual void requestAuthorization() = 0;
    /// Shows a notification. `onDropped` is called, from the event loop, when no service shows it.
    virtual void add(const NotificationRequest& request, std::function<void()> onDropped = {}) = 0;
    /// Sets the function that is called, from the event loop, with the user info of each notification that is
    /// clicked.
    virtual void setResponseHandler(ResponseHandler handler) = 0;
};

/// A notification with the default sound.
struct NotificationRequest {
    /// Unique, so that no notification replaces another one.
    QString identifier;
    QString title;
    /// Plain text.
    QString body;
    /// Passed to the response handler on a click. When empty, the notification cannot be clicked.
    NotificationCenter::UserInfo userInfo;

    bool operator==(const NotificationRequest&) const = default;
};

}  // namespace tidemark

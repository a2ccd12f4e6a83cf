#pragma once

#include <QHash>
#include <QString>
#include <functional>

namespace tidemark {

struct NotificationRequest;

/// The desktop's notifications. Nothing here waits or fails: without a service to show it, a notification is
/// dropped.
class NotificationCenter {
public:
    using UserInfo = QHash<QString, QString>;
    using ResponseHandler = std::function<void(const UserInfo& userInfo)>;

    NotificationCenter() = default;
    NotificationCenter(const NotificationCenter&) = delete;
    NotificationCenter& operator=(const NotificationCenter&) = delete;
    virtual ~NotificationCenter() = default;

    /// Asks for the permission to show notifications, where the desktop has such a thing.
    virtual void requestAuthorization() = 0;
    /// `onDropped` is called, from the event loop, when nothing could show it.
    virtual void add(const NotificationRequest& request, std::function<void()> onDropped = {}) = 0;
    /// Is called, from the event loop, with the user info of each notification that the user clicks.
    virtual void setResponseHandler(ResponseHandler handler) = 0;
};

/// A notification to be shown at once, with the default sound.
struct NotificationRequest {
    /// Distinct from every other one's: no notification takes the place of another.
    QString identifier;
    QString title;
    /// Plain text.
    QString body;
    /// Comes back when the user clicks the notification. When empty, there is nothing to click.
    NotificationCenter::UserInfo userInfo;

    bool operator==(const NotificationRequest&) const = default;
};

}  // namespace tidemark

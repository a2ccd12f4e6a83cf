#pragma once

#include <QList>
#include <QTimer>
#include <algorithm>
#include <utility>

#include "platform/session/NotificationCenter.h"

namespace tidemark {

/// A notification service that only remembers what it was given.
class FakeNotificationCenter final : public NotificationCenter {
public:
    QList<NotificationRequest> requests;
    /// Whether there is a service to show anything.
    bool isAvailable = true;
    int authorizations = 0;
    ResponseHandler handler;

    void requestAuthorization() override { ++authorizations; }
    void add(const NotificationRequest& request, std::function<void()> onDropped = {}) override {
        if (isAvailable)
            requests.append(request);
        else if (onDropped)
            QTimer::singleShot(0, std::move(onDropped));
    }
    void setResponseHandler(ResponseHandler newHandler) override { handler = std::move(newHandler); }

    /// The user clicks the request at `index`, or one of its buttons, if it can be clicked there.
    void click(qsizetype index, const QString& action = NotificationAction::click().identifier) const {
        const NotificationRequest& request = requests.at(index);
        if (handler && std::ranges::find(request.actions, action, &NotificationAction::identifier) !=
                           request.actions.cend())
            handler(request.userInfo, action);
    }
};

}  // namespace tidemark

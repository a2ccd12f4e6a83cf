#include "platform/session/DBusNotificationCenter.h"

#include <QDBusError>
#include <QVariantMap>
#include <algorithm>
#include <array>
#include <utility>

#include "platform/base/ActivationToken.h"
#include "platform/base/BusCall.h"
#include "platform/base/Characters.h"

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

// Limits for a service that never answers or never reports that a notification was closed.
constexpr int maximumPosts = 500;
constexpr qsizetype maximumShown = 500;
constexpr qsizetype maximumEarlySignals = 64;

QString serviceName() {
    return u"org.freedesktop.Notifications"_s;
}

QString servicePath() {
    return u"/org/freedesktop/Notifications"_s;
}

QDBusMessage serviceCall(const QString& service, const QString& method) {
    return QDBusMessage::createMethodCall(service, servicePath(), serviceName(), method);
}

/// Whether the error comes from the bus or a timeout in the service's place. An error that the service itself
/// sends is an answer.
bool isUnanswered(const QDBusMessage& reply) {
    constexpr std::array errors{QDBusError::Disconnected,   QDBusError::NoReply,  QDBusError::NoServer,
                                QDBusError::ServiceUnknown, QDBusError::TimedOut, QDBusError::Timeout};
    const QDBusError error(reply);
    return std::ranges::find(errors, error.type()) != errors.end() ||
           error.name() == "org.freedesktop.DBus.Error.NameHasNoOwner"_L1;
}

}  // namespace

DBusNotificationCenter::DBusNotificationCenter(QString applicationName, QString desktopEntry,
                                               QDBusConnection bus)
    : m_applicationName(std::move(applicationName)),
      m_desktopEntry(std::move(desktopEntry)),
      m_bus(std::move(bus)) {
    // From any sender, because Qt would block to ask the bus who owns a name given here.
    m_bus.connect({}, servicePath(), serviceName(), {}, this, SLOT(onSignal(QDBusMessage)));
}

DBusNotificationCenter::~DBusNotificationCenter() = default;

void DBusNotificationCenter::add(const NotificationRequest& request, std::function<void()> onDropped) {
    if (!m_bus.isConnected() || m_posts >= maximumPosts) {
        if (onDropped)
            QMetaObject::invokeMethod(this, std::move(onDropped), Qt::QueuedConnection);
        return;
    }
    m_tasks.start([this, request, onDropped = std::move(onDropped)](std::stop_token stop) {
        return post(request, onDropped, std::move(stop));
    });
}

QCoro::Task<> DBusNotificationCenter::post(NotificationRequest request, std::function<void()> onDropped,
                                           std::stop_token stop) {
    ++m_posts;
    const std::optional<Shown> shown = co_await show(std::move(request), stop);
    if (stop.stop_requested())
        co_return;
    --m_posts;
    if (shown && !shown->actions.isEmpty())
        remember(*shown);
    // In the order in which they came. Those about other programs' notifications are dropped when no answer
    // is pending.
    for (const QDBusMessage& signal : std::exchange(m_early, {}))
        onSignal(signal);
    // Queued, because the caller may destroy this object, which must not happen inside its own task.
    if (!shown && onDropped)
        QMetaObject::invokeMethod(this, std::move(onDropped), Qt::QueuedConnection);
}

/// All four calls are made for each notification, because another service may have taken over since the last
/// one. The capabilities, the notification and its id thus always belong to the same service.
QCoro::Task<std::optional<DBusNotificationCenter::Shown>> DBusNotificationCenter::show(
    NotificationRequest request, std::stop_token stop) {
    constexpr uint noFlags = 0;
    const QDBusMessage start = busCall(u"StartServiceByName"_s, {serviceName(), noFlags});
    // A service that cannot be started this way may be running all the same, so the answer does not matter.
    co_await answerTo(start, m_bus, stop);

    // Qt 6.8 does not tell who sent an answer, so the bus is asked for the unique name.
    const QDBusMessage getOwner = busCall(u"GetNameOwner"_s, {serviceName()});
    const QDBusMessage owner = co_await answerTo(getOwner, m_bus, stop);
    if (owner.type() != QDBusMessage::ReplyMessage)
        co_return std::nullopt;
    const QString service = owner.arguments().value(0).toString();

    const QDBusMessage getCapabilities = serviceCall(service, u"GetCapabilities"_s);
    const QDBusMessage known = co_await answerTo(getCapabilities, m_bus, stop);
    if (stop.stop_requested() || isUnanswered(known))
        co_return std::nullopt;
    const QStringList capabilities = known.arguments().value(0).toStringList();
    if (!capabilities.contains("actions"_L1))
        request.actions.clear();

    const QDBusMessage notify = notifyCall(service, request, capabilities);
    const QDBusMessage answer = co_await answerTo(notify, m_bus, stop);
    const QVariant id = answer.arguments().value(0);
    if (answer.type() != QDBusMessage::ReplyMessage || id.userType() != QMetaType::UInt)
        co_return std::nullopt;
    QStringList actions;
    for (const auto& action : request.actions)
        actions.append(action.identifier);
    co_return Shown{service, id.toUInt(), request.userInfo, actions};
}

QDBusMessage DBusNotificationCenter::notifyCall(const QString& service, const NotificationRequest& request,
                                                const QStringList& capabilities) const {
    QStringList actions;
    for (const auto& action : request.actions)
        actions << action.identifier << action.title;
    const bool hasMarkup = capabilities.contains("body-markup"_L1);
    const QString body = hasMarkup ? request.body.toHtmlEscaped() : request.body;
    constexpr uchar normalUrgency = 1;
    const QVariantMap hints{{u"desktop-entry"_s, m_desktopEntry},
                            {u"sound-name"_s, u"message-new-instant"_s},
                            {u"urgency"_s, QVariant::fromValue(normalUrgency)}};
    constexpr uint replacesNone = 0;
    constexpr int defaultExpiry = -1;
    // No icon name: services show the icon of the installed desktop entry, and without one some of them would
    // show a broken picture for a name that they do not find.
    QDBusMessage notify = serviceCall(service, u"Notify"_s);
    notify << m_applicationName << replacesNone << QString() << singleLine(request.title) << body << actions
           << hints << defaultExpiry;
    return notify;
}

void DBusNotificationCenter::remember(Shown notification) {
    const auto isGone = [&notification](const Shown& other) {
        return other.service != notification.service || other.id == notification.id;
    };
    m_clickable.removeIf(isGone);
    if (m_clickable.size() >= maximumShown)
        m_clickable.removeFirst();
    m_clickable.append(std::move(notification));
}

void DBusNotificationCenter::onSignal(const QDBusMessage& signal) {
    if (handle(signal) || m_posts == 0)
        return;
    // The signal may have overtaken the answer with the id of its notification.
    if (m_early.size() >= maximumEarlySignals)
        m_early.removeFirst();
    m_early.append(signal);
}

bool DBusNotificationCenter::handle(const QDBusMessage& signal) {
    // Services send the signals about all programs' notifications to all programs.
    const QVariant id = signal.arguments().value(0);
    const auto shown = std::ranges::find_if(m_clickable, [&](const Shown& candidate) {
        return id.userType() == QMetaType::UInt && candidate.id == id.toUInt() &&
               candidate.service == signal.service();
    });
    if (shown == m_clickable.end())
        return false;
    const QString argument = signal.arguments().value(1).toString();
    if (signal.member() == "NotificationClosed"_L1) {
        m_clickable.erase(shown);
    } else if (signal.member() == "ActivationToken"_L1) {
        // For the window or program that is opened by the click, whose signal comes next.
        offerActivationToken(argument);
    } else if (signal.member() == "ActionInvoked"_L1 && shown->actions.contains(argument) && m_handler) {
        const ResponseHandler handler = m_handler;
        const UserInfo userInfo = shown->userInfo;
        handler(userInfo, argument);
        withdrawActivationToken();
    }
    return true;
}

}  // namespace tidemark

#include "platform/session/DBusNotificationCenter.h"

#include <QDBusError>
#include <QDBusPendingCallWatcher>
#include <QVariantMap>
#include <algorithm>
#include <array>
#include <utility>

#include "platform/base/ActivationToken.h"
#include "platform/base/Characters.h"

namespace tidemark {

using namespace Qt::StringLiterals;

namespace {

// A service that never answers, or never says that a notification is closed, costs us no more than this.
constexpr std::size_t maximumPosts = 500;
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

QDBusMessage busCall(const QString& method) {
    QDBusMessage call = QDBusMessage::createMethodCall(u"org.freedesktop.DBus"_s, u"/org/freedesktop/DBus"_s,
                                                       u"org.freedesktop.DBus"_s, method);
    call << serviceName();
    return call;
}

/// Whether nobody answered, so that the bus or a timeout did in the service's place. An error that the
/// service itself answers with is an answer.
bool isUnanswered(const QDBusMessage& reply) {
    constexpr std::array errors{QDBusError::Disconnected,   QDBusError::NoReply,  QDBusError::NoServer,
                                QDBusError::ServiceUnknown, QDBusError::TimedOut, QDBusError::Timeout};
    const QDBusError error(reply);
    return std::ranges::find(errors, error.type()) != errors.end() ||
           error.name() == "org.freedesktop.DBus.Error.NameHasNoOwner"_L1;
}

}  // namespace

/// A notification on its way: the service is started, its unique name asked for, then its capabilities, and
/// then it gets the notification. Each does so anew, because the service may be another one since the last
/// time: what it can do, what is sent to it and the number that it gives always belong together.
struct DBusNotificationCenter::Post {
    NotificationRequest request;
    /// The unique name. Answers do not tell it: Qt 6.8 leaves out who sent them.
    QString service;
    std::function<void()> onDropped;
    bool isClickable = false;
    std::unique_ptr<QDBusPendingCallWatcher> watcher;
};

DBusNotificationCenter::DBusNotificationCenter(QString applicationName, QString desktopEntry,
                                               QDBusConnection bus)
    : m_applicationName(std::move(applicationName)),
      m_desktopEntry(std::move(desktopEntry)),
      m_bus(std::move(bus)) {
    // From any sender: with a service's name given here, Qt waits for the bus to say who that is.
    m_bus.connect({}, servicePath(), serviceName(), {}, this, SLOT(onSignal(QDBusMessage)));
}

DBusNotificationCenter::~DBusNotificationCenter() = default;

void DBusNotificationCenter::add(const NotificationRequest& request, std::function<void()> onDropped) {
    if (!m_bus.isConnected() || m_posts.size() >= maximumPosts) {
        if (onDropped)
            QMetaObject::invokeMethod(this, std::move(onDropped), Qt::QueuedConnection);
        return;
    }
    auto& post = *m_posts.emplace_back(std::make_unique<Post>());
    post.request = request;
    post.onDropped = std::move(onDropped);
    QDBusMessage start = busCall(u"StartServiceByName"_s);
    constexpr uint noFlags = 0;
    start << noFlags;
    call(post, start, &DBusNotificationCenter::onStarted);
}

void DBusNotificationCenter::call(Post& post, const QDBusMessage& message, Handler handler) {
    post.watcher = std::make_unique<QDBusPendingCallWatcher>(m_bus.asyncCall(message));
    connect(post.watcher.get(), &QDBusPendingCallWatcher::finished, this,
            [this, &post, handler](QDBusPendingCallWatcher* finished) {
                post.watcher.release()->deleteLater();
                (this->*handler)(post, finished->reply());
            });
}

void DBusNotificationCenter::onStarted(Post& post, const QDBusMessage& /*reply*/) {
    // One that cannot be started may be there all the same.
    call(post, busCall(u"GetNameOwner"_s), &DBusNotificationCenter::onOwner);
}

void DBusNotificationCenter::onOwner(Post& post, const QDBusMessage& reply) {
    if (reply.type() != QDBusMessage::ReplyMessage) {
        drop(post);
        return;
    }
    post.service = reply.arguments().value(0).toString();
    call(post, serviceCall(post.service, u"GetCapabilities"_s), &DBusNotificationCenter::onCapabilities);
}

void DBusNotificationCenter::onCapabilities(Post& post, const QDBusMessage& reply) {
    if (isUnanswered(reply)) {
        drop(post);
        return;
    }
    const QStringList capabilities = reply.arguments().value(0).toStringList();
    const NotificationRequest& request = post.request;
    post.isClickable = !request.userInfo.isEmpty() && capabilities.contains("actions"_L1);
    const QStringList actions = post.isClickable ? QStringList{u"default"_s, u"Open"_s} : QStringList();
    const bool hasMarkup = capabilities.contains("body-markup"_L1);
    const QString body = hasMarkup ? request.body.toHtmlEscaped() : request.body;
    constexpr uchar normalUrgency = 1;
    const QVariantMap hints{{u"desktop-entry"_s, m_desktopEntry},
                            {u"sound-name"_s, u"message-new-instant"_s},
                            {u"urgency"_s, QVariant::fromValue(normalUrgency)}};
    constexpr uint replacesNone = 0;
    constexpr int defaultExpiry = -1;
    // No icon name: where the desktop entry is installed its icon is shown, and elsewhere some services
    // would show a broken picture.
    QDBusMessage notify = serviceCall(post.service, u"Notify"_s);
    notify << m_applicationName << replacesNone << QString() << singleLine(request.title) << body << actions
           << hints << defaultExpiry;
    call(post, notify, &DBusNotificationCenter::onNotified);
}

void DBusNotificationCenter::onNotified(Post& post, const QDBusMessage& reply) {
    const QVariant id = reply.arguments().value(0);
    const bool isShown = reply.type() == QDBusMessage::ReplyMessage && id.userType() == QMetaType::UInt;
    if (!isShown) {
        drop(post);
        return;
    }
    if (post.isClickable)
        remember({post.service, id.toUInt(), post.request.userInfo});
    finish(post);
}

void DBusNotificationCenter::drop(Post& post) {
    const auto onDropped = std::move(post.onDropped);
    finish(post);
    if (onDropped)
        onDropped();
}

void DBusNotificationCenter::finish(Post& post) {
    std::erase_if(m_posts, [&post](const auto& candidate) { return candidate.get() == &post; });
    // In the order in which they came; those of other programs go once nothing is outstanding.
    for (const QDBusMessage& signal : std::exchange(m_early, {}))
        onSignal(signal);
}

void DBusNotificationCenter::remember(Shown shown) {
    const auto isGone = [&shown](const Shown& other) {
        return other.service != shown.service || other.id == shown.id;
    };
    m_shown.removeIf(isGone);
    if (m_shown.size() >= maximumShown)
        m_shown.removeFirst();
    m_shown.append(std::move(shown));
}

void DBusNotificationCenter::onSignal(const QDBusMessage& signal) {
    if (handle(signal) || m_posts.empty())
        return;
    // It may have overtaken the answer that tells us its number.
    if (m_early.size() >= maximumEarlySignals)
        m_early.removeFirst();
    m_early.append(signal);
}

bool DBusNotificationCenter::handle(const QDBusMessage& signal) {
    // Every program gets the signals about everybody's notifications.
    const QVariant id = signal.arguments().value(0);
    const auto shown = std::ranges::find_if(m_shown, [&](const Shown& candidate) {
        return id.userType() == QMetaType::UInt && candidate.id == id.toUInt() &&
               candidate.service == signal.service();
    });
    if (shown == m_shown.end())
        return false;
    const QString argument = signal.arguments().value(1).toString();
    if (signal.member() == "NotificationClosed"_L1) {
        m_shown.erase(shown);
    } else if (signal.member() == "ActivationToken"_L1) {
        // For whoever opens a window or starts a program in answer to the click, which comes next.
        offerActivationToken(argument);
    } else if (signal.member() == "ActionInvoked"_L1 && argument == "default"_L1 && m_handler) {
        const ResponseHandler handler = m_handler;
        const UserInfo userInfo = shown->userInfo;
        handler(userInfo);
        withdrawActivationToken();
    }
    return true;
}

}  // namespace tidemark

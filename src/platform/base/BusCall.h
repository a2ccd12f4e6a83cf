#pragma once

#include <QCoroTask>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QString>
#include <QVariantList>
#include <stop_token>

namespace tidemark {

/// A call of one of the bus's own methods (org.freedesktop.DBus).
[[nodiscard]] QDBusMessage busCall(const QString& method, const QVariantList& arguments);

/// A call that asks the bus for a well-known name and does not queue for a name that is taken. The answer is
/// 1 when the caller owns the name.
[[nodiscard]] QDBusMessage nameRequest(const QString& name);

/// Sends the call and waits for the answer, which may be an error message. Where `bus` is not connected, or
/// `stop` has been triggered already, it sends nothing and gives an error at once. When `stop` is triggered
/// during the wait, the coroutine is resumed inside the request (see StoppableWait) with a message that is no
/// reply.
///
/// QCoro's own awaiter cannot be stopped: a service that never answers would hold up the end of the program
/// for 25 seconds.
[[nodiscard]] QCoro::Task<QDBusMessage> answerTo(QDBusMessage call, QDBusConnection bus,
                                                 std::stop_token stop);

}  // namespace tidemark

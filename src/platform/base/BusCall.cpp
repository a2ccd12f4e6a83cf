#include "platform/base/BusCall.h"

#include <QDBusError>
#include <QDBusPendingCallWatcher>
#include <memory>
#include <utility>

#include "platform/base/StoppableWait.h"

namespace tidemark {

using namespace Qt::StringLiterals;

QDBusMessage busCall(const QString& method, const QVariantList& arguments) {
    const QString bus = u"org.freedesktop.DBus"_s;
    QDBusMessage call = QDBusMessage::createMethodCall(bus, u"/org/freedesktop/DBus"_s, bus, method);
    call.setArguments(arguments);
    return call;
}

QDBusMessage nameRequest(const QString& name) {
    constexpr uint doNotQueue = 4;
    return busCall(u"RequestName"_s, {name, doNotQueue});
}

QCoro::Task<QDBusMessage> answerTo(QDBusMessage call, QDBusConnection bus, std::stop_token stop) {
    if (stop.stop_requested() || !bus.isConnected())
        co_return QDBusMessage::createError(QDBusError::Disconnected, u"The call was not sent."_s);
    auto watcher = std::make_unique<QDBusPendingCallWatcher>(bus.asyncCall(call));
    StoppableWait wait(std::move(stop));
    // Destroyed with the coroutine, so that a late answer does not end a wait that is over.
    const QObject context;
    QObject::connect(watcher.get(), &QDBusPendingCallWatcher::finished, &context, [&wait] { wait.end(); });
    co_await wait.ended();
    const QDBusMessage answer = watcher->reply();
    if (watcher->isFinished()) {
        // The coroutine may have been resumed inside the watcher's signal.
        watcher.release()->deleteLater();
    }
    co_return answer;
}

}  // namespace tidemark

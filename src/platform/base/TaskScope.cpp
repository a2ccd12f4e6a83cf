#include "platform/base/TaskScope.h"

#include <QCoreApplication>
#include <QEvent>
#include <QPromise>
#include <exception>
#include <list>

namespace tidemark {

struct TaskScope::Running {
    std::list<std::stop_source> stops;
};

TaskScope::TaskScope() : m_running(std::make_shared<Running>()) {}

TaskScope::~TaskScope() {
    finish();
}

TaskHandle TaskScope::start(Body body) {
    std::stop_source stop;
    if (!m_isFinished)
        run(m_running, std::move(body), stop);
    return TaskHandle(stop);
}

QFuture<void> TaskScope::startAwaited(const Body& body) {
    // The body is destroyed when the task has ended. Its promise then finishes the future.
    auto promise = std::make_shared<QPromise<void>>();
    promise->start();
    QFuture<void> future = promise->future();
    start([promise = std::move(promise), body](std::stop_token stop) { return body(stop); });
    return future;
}

void TaskScope::finish() {
    m_isFinished = true;
    // A copy, because a task that ends at once takes itself off the list.
    for (auto stops = m_running->stops; auto& stop : stops)
        stop.request_stop();
    // No event loop without need: it would run other code in the middle of the owner's destructor.
    if (m_running->stops.empty())
        return;
    while (!m_running->stops.empty())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    // The objects that the tasks waited for delete themselves from the event loop, which may not run again.
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

QCoro::Task<> TaskScope::run(std::shared_ptr<Running> running, Body body, std::stop_source stop) {
    const auto place = running->stops.insert(running->stops.end(), stop);
    try {
        co_await body(stop.get_token());
    } catch (const std::exception& error) {
        qWarning("A task ended with an exception: %s", error.what());
    } catch (...) {
        qWarning("A task ended with an unknown exception");
    }
    running->stops.erase(place);
}

}  // namespace tidemark

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
    // It goes with the body, which is kept as long as the task runs, and finishes its future then.
    auto promise = std::make_shared<QPromise<void>>();
    promise->start();
    QFuture<void> future = promise->future();
    start([promise = std::move(promise), body](std::stop_token stop) { return body(stop); });
    return future;
}

void TaskScope::finish() {
    m_isFinished = true;
    // A copy: a task may end, and leave the list, while another is asked.
    for (auto stops = m_running->stops; auto& stop : stops)
        stop.request_stop();
    while (!m_running->stops.empty())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    // What the tasks waited on deletes itself later; nobody may be left to run that loop.
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

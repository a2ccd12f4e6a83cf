#pragma once

#include <QCoroTask>
#include <QFuture>
#include <functional>
#include <memory>
#include <stop_token>

namespace tidemark {

/// A task that runs in a `TaskScope`. Copies refer to the same task; a default-constructed handle refers to
/// none.
class TaskHandle {
public:
    TaskHandle() : m_stop(std::nostopstate) {}
    explicit TaskHandle(std::stop_source stop) : m_stop(std::move(stop)) {}

    /// Asks the task to end. Its waits end early.
    void requestStop() { m_stop.request_stop(); }

private:
    std::stop_source m_stop;
};

/// Owns the top-level tasks of one object. If it is declared as the object's last member, tasks may use
/// `this` freely, because they have all ended before the other members are destroyed. UI thread only.
class TaskScope {
public:
    using Body = std::function<QCoro::Task<>(std::stop_token)>;

    TaskScope();
    TaskScope(const TaskScope&) = delete;
    TaskScope& operator=(const TaskScope&) = delete;
    ~TaskScope();

    /// Starts `body` at once and keeps it, with its captures, until the task has ended. After `finish` it
    /// does nothing. An exception that leaves the body ends only this task.
    TaskHandle start(Body body);

    /// Does the same and gives a future that finishes when the task has ended.
    [[nodiscard]] QFuture<void> startAwaited(const Body& body);

    /// Asks every task to stop. If any are left then, runs the event loop until all have ended. Tasks that
    /// wait only with a StoppableWait have ended before that.
    void finish();

private:
    struct Running;

    static QCoro::Task<> run(std::shared_ptr<Running> running, Body body, std::stop_source stop);

    std::shared_ptr<Running> m_running;
    bool m_isFinished = false;
};

}  // namespace tidemark

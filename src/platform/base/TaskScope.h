#pragma once

#include <QCoroTask>
#include <QFuture>
#include <functional>
#include <memory>
#include <stop_token>

namespace tidemark {

/// A cooperative task that runs in a `TaskScope`. Copies refer to the same task; an empty handle to none.
class TaskHandle {
public:
    TaskHandle() : m_stop(std::nostopstate) {}
    explicit TaskHandle(std::stop_source stop) : m_stop(std::move(stop)) {}

    /// Asks the task to end at its next check; its waits end early.
    void requestStop() { m_stop.request_stop(); }
    [[nodiscard]] explicit operator bool() const { return m_stop.stop_possible(); }

private:
    std::stop_source m_stop;
};

/// Owns the top-level tasks of one object. Declared as the object's last member, it lets tasks use `this`
/// freely: they have all ended before the object goes. UI thread only.
class TaskScope {
public:
    using Body = std::function<QCoro::Task<>(std::stop_token)>;

    TaskScope();
    TaskScope(const TaskScope&) = delete;
    TaskScope& operator=(const TaskScope&) = delete;
    ~TaskScope();

    /// Starts `body` at once and keeps it, with what it captured, until the task has ended. Started after
    /// `finish`, it does nothing. An exception that leaves the body ends only this task.
    TaskHandle start(Body body);

    /// The same for somebody who waits for it: the future finishes when the task has ended.
    [[nodiscard]] QFuture<void> startAwaited(const Body& body);

    /// Asks every task to stop and runs the event loop until all have ended.
    void finish();

private:
    struct Running;

    static QCoro::Task<> run(std::shared_ptr<Running> running, Body body, std::stop_source stop);

    std::shared_ptr<Running> m_running;
    bool m_isFinished = false;
};

}  // namespace tidemark

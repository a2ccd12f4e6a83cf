#include "tests/fakes/ManualClock.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QCoroFuture>
#include <QElapsedTimer>
#include <QPromise>
#include <QTest>
#include <algorithm>

namespace tidemark {

struct ManualClock::Sleeper : QObject {
    std::chrono::nanoseconds duration;
    std::chrono::nanoseconds due;
    bool isOver = false;
    QPromise<void> promise;

    /// Ends the wait from the event loop, so that it has always suspended before.
    void end() {
        isOver = true;
        QMetaObject::invokeMethod(this, [this] { promise.finish(); }, Qt::QueuedConnection);
    }
};

ManualClock::ManualClock(TimePoint start) : m_start(start) {}

ManualClock::~ManualClock() {
    for (const auto& entry : m_sleepers)
        if (const auto sleeper = entry.lock())
            sleeper->end();
}

Clock::TimePoint ManualClock::now() const {
    return m_start + std::chrono::floor<std::chrono::milliseconds>(m_elapsed);
}

void ManualClock::setNow(TimePoint now) {
    m_start = now - std::chrono::floor<std::chrono::milliseconds>(m_elapsed);
}

QCoro::Task<> ManualClock::sleep(std::chrono::nanoseconds duration, std::stop_token stop) {
    const auto sleeper = std::make_shared<Sleeper>();
    sleeper->duration = duration;
    sleeper->due = m_elapsed + std::max(duration, std::chrono::nanoseconds(0));
    sleeper->promise.start();
    const auto place = std::find_if(m_sleepers.begin(), m_sleepers.end(), [&sleeper](const auto& entry) {
        const auto other = entry.lock();
        return other && other->due > sleeper->due;
    });
    m_sleepers.insert(place, sleeper);

    const std::stop_callback onStop(std::move(stop), [&sleeper] { sleeper->end(); });
    const QFuture<void> future = sleeper->promise.future();
    co_await future;
}

void ManualClock::advance(std::chrono::nanoseconds duration) {
    settle();
    const auto target = m_elapsed + duration;
    for (;;) {
        m_sleepers.remove_if([](const auto& entry) {
            const auto sleeper = entry.lock();
            return !sleeper || sleeper->isOver;
        });
        const auto next = m_sleepers.empty() ? nullptr : m_sleepers.front().lock();
        if (!next || next->due > target)
            break;
        m_elapsed = std::max(m_elapsed, next->due);
        next->end();
        settle();
    }
    m_elapsed = target;
    settle();
}

void ManualClock::suspend(std::chrono::nanoseconds duration) {
    m_elapsed += duration;
}

void ManualClock::settle() {
    QElapsedTimer watch;
    watch.start();
    auto* dispatcher = QAbstractEventDispatcher::instance();
    for (;;) {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        if (!dispatcher->processEvents(QEventLoop::AllEvents))
            return;
        if (watch.hasExpired(300'000)) {
            QTest::qFail("The event loop does not come to rest", __FILE__, __LINE__);
            return;
        }
    }
}

QList<std::chrono::nanoseconds> ManualClock::pendingSleeps() const {
    QList<std::chrono::nanoseconds> durations;
    for (const auto& entry : m_sleepers) {
        const auto sleeper = entry.lock();
        if (sleeper && !sleeper->isOver)
            durations.append(sleeper->duration);
    }
    return durations;
}

}  // namespace tidemark

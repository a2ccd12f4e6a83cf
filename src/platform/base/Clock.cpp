#include "platform/base/Clock.h"

#include <sys/timerfd.h>
#include <unistd.h>

#include <QCoroFuture>
#include <QPromise>
#include <QSocketNotifier>
#include <QTimer>

namespace tidemark {

namespace {

/// Becomes readable once `duration` has passed on a clock that goes on during suspend; -1 when the process
/// has no descriptor left.
int openTimer(std::chrono::nanoseconds duration) {
    const int descriptor = timerfd_create(CLOCK_BOOTTIME, TFD_NONBLOCK | TFD_CLOEXEC);
    if (descriptor < 0)
        return -1;
    // A zero time disarms the timer.
    const auto wait = std::max(duration, std::chrono::nanoseconds(1));
    const auto seconds = std::chrono::floor<std::chrono::seconds>(wait);
    itimerspec expiry{};
    expiry.it_value.tv_sec = seconds.count();
    expiry.it_value.tv_nsec = (wait - seconds).count();
    timerfd_settime(descriptor, 0, &expiry, nullptr);
    return descriptor;
}

}  // namespace

Clock::TimePoint SystemClock::now() const {
    return std::chrono::time_point_cast<std::chrono::milliseconds>(std::chrono::system_clock::now());
}

QCoro::Task<> SystemClock::sleep(std::chrono::nanoseconds duration, std::stop_token stop) {
    // The future resumes the task from the event loop, and not inside the timer's signal. A stop request,
    // which may come before the wait, goes through the event loop too.
    QPromise<void> promise;
    promise.start();
    const auto finish = [&promise] { promise.finish(); };
    QObject stopContext;

    const int descriptor = openTimer(duration);
    std::unique_ptr<QObject> timer;
    if (descriptor >= 0) {
        auto notifier = std::make_unique<QSocketNotifier>(descriptor, QSocketNotifier::Read);
        QObject::connect(notifier.get(), &QSocketNotifier::activated, notifier.get(),
                         [finish, own = notifier.get()] {
                             own->setEnabled(false);
                             finish();
                         });
        timer = std::move(notifier);
    } else {
        auto fallback = std::make_unique<QTimer>();
        fallback->setSingleShot(true);
        fallback->callOnTimeout(fallback.get(), finish);
        const auto longest = std::chrono::milliseconds(std::numeric_limits<int>::max());
        fallback->start(std::min(std::chrono::ceil<std::chrono::milliseconds>(duration), longest));
        timer = std::move(fallback);
    }
    const std::stop_callback onStop(std::move(stop), [&stopContext, finish] {
        QMetaObject::invokeMethod(&stopContext, finish, Qt::QueuedConnection);
    });
    const QFuture<void> future = promise.future();
    co_await future;
    timer.reset();
    if (descriptor >= 0)
        close(descriptor);
}

}  // namespace tidemark

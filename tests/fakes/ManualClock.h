#pragma once

#include <QList>
#include <QObject>
#include <list>
#include <memory>

#include "platform/base/Clock.h"

namespace tidemark {

/// Time that passes only when the test says so. Destroyed while somebody waits, it ends that wait.
class ManualClock final : public Clock {
public:
    explicit ManualClock(TimePoint start = TimePoint(std::chrono::seconds(1'700'000'000)));
    ~ManualClock() override;

    [[nodiscard]] TimePoint now() const override;
    [[nodiscard]] QCoro::Task<> sleep(std::chrono::nanoseconds duration, std::stop_token stop) override;

    /// Sets the wall clock, as a user or a time server does. Nobody wakes.
    void setNow(TimePoint now);

    /// Lets time pass: wakes the waits that fall due one after the other, each at its own time, and lets the
    /// event loop come to rest before, between and after. Worker threads are not waited for.
    void advance(std::chrono::nanoseconds duration);

    /// Lets time pass in which nothing runs, as while the machine sleeps. What falls due meanwhile ends with
    /// the next `advance`, all at its beginning.
    void suspend(std::chrono::nanoseconds duration);

    /// Runs the event loop until nothing more is left to do at once.
    static void settle();

    /// The waits under way, each with the duration it was asked for, the one due first in front.
    [[nodiscard]] QList<std::chrono::nanoseconds> pendingSleeps() const;

private:
    struct Sleeper;

    TimePoint m_start;
    std::chrono::nanoseconds m_elapsed{0};
    /// In the order in which they fall due; those due together in the order in which they were asked for.
    std::list<std::weak_ptr<Sleeper>> m_sleepers;
};

}  // namespace tidemark

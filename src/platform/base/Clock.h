#pragma once

#include <QCoroTask>
#include <chrono>
#include <stop_token>

namespace tidemark {

/// Time, behind an interface so that tests can run days of polling at once.
class Clock {
public:
    using TimePoint = std::chrono::sys_time<std::chrono::milliseconds>;

    Clock() = default;
    Clock(const Clock&) = delete;
    Clock& operator=(const Clock&) = delete;
    virtual ~Clock() = default;

    /// Wall-clock time.
    [[nodiscard]] virtual TimePoint now() const = 0;

    /// Waits. Triggering `stop` ends the wait early, without an error. Always suspends at least once.
    [[nodiscard]] virtual QCoro::Task<> sleep(std::chrono::nanoseconds duration, std::stop_token stop) = 0;
};

/// The system's clocks. Sleeps include the time during which the machine is suspended, so a sleep that ran
/// out meanwhile ends right after the resume.
class SystemClock final : public Clock {
public:
    [[nodiscard]] TimePoint now() const override;
    [[nodiscard]] QCoro::Task<> sleep(std::chrono::nanoseconds duration, std::stop_token stop) override;
};

}  // namespace tidemark

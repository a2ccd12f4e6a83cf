#pragma once

#include <QCoroTask>
#include <chrono>
#include <stop_token>

namespace tidemark {

/// Time, so that tests can run days of polling at once.
class Clock {
public:
    using TimePoint = std::chrono::sys_time<std::chrono::milliseconds>;

    Clock() = default;
    Clock(const Clock&) = delete;
    Clock& operator=(const Clock&) = delete;
    virtual ~Clock() = default;

    /// Wall-clock time.
    [[nodiscard]] virtual TimePoint now() const = 0;

    /// Waits; ends early, without error, when `stop` is triggered. Always suspends at least once.
    [[nodiscard]] virtual QCoro::Task<> sleep(std::chrono::nanoseconds duration, std::stop_token stop) = 0;
};

/// The system's clocks. A sleep counts the time that the machine spends suspended, so a wait that ran out
/// meanwhile ends right after the resume.
class SystemClock final : public Clock {
public:
    [[nodiscard]] TimePoint now() const override;
    [[nodiscard]] QCoro::Task<> sleep(std::chrono::nanoseconds duration, std::stop_token stop) override;
};

}  // namespace tidemark

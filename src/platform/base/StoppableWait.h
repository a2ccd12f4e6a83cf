#pragma once

#include <coroutine>
#include <stop_token>
#include <utility>

namespace tidemark {

/// Suspends a coroutine until `end` is called or `stop` is triggered. The coroutine is resumed inside that
/// call. A task that waits in no other way has therefore ended when the request to stop it returns. UI thread
/// only, and so is the request to stop.
class StoppableWait {
public:
    struct Awaiter {
        StoppableWait* wait;

        [[nodiscard]] bool await_ready() const noexcept { return wait->m_isOver; }
        void await_suspend(std::coroutine_handle<> waiting) const noexcept { wait->m_waiting = waiting; }
        void await_resume() const noexcept {}
    };

    explicit StoppableWait(std::stop_token stop) : m_onStop(std::move(stop), End{this}) {}
    StoppableWait(const StoppableWait&) = delete;
    StoppableWait& operator=(const StoppableWait&) = delete;
    ~StoppableWait() = default;

    /// Resumes the coroutine, which may destroy this object.
    void end() {
        m_isOver = true;
        if (const auto waiting = std::exchange(m_waiting, nullptr))
            waiting.resume();
    }

    /// To be awaited, by one coroutine. It refers to this object.
    [[nodiscard]] Awaiter ended() { return {this}; }

private:
    struct End {
        StoppableWait* wait;
        void operator()() const { wait->end(); }
    };

    bool m_isOver = false;
    std::coroutine_handle<> m_waiting;
    /// Last, because it calls `end` at once when `stop` has been triggered already.
    std::stop_callback<End> m_onStop;
};

}  // namespace tidemark

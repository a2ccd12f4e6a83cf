#pragma once

#include <QMetaObject>
#include <QObject>
#include <functional>
#include <utility>

namespace tidemark {

/// Joins any number of requests in one turn of the event loop into one call, which comes from the event loop.
/// The call is dropped if the object is destroyed before. UI thread only.
class DeferredCall {
public:
    explicit DeferredCall(std::function<void()> call) : m_call(std::move(call)) {}

    void schedule() {
        if (std::exchange(m_isScheduled, true))
            return;
        QMetaObject::invokeMethod(
            &m_context,
            [this] {
                m_isScheduled = false;
                m_call();
            },
            Qt::QueuedConnection);
    }

private:
    std::function<void()> m_call;
    bool m_isScheduled = false;
    /// Last, so that a call that is still queued is dropped first.
    QObject m_context;
};

}  // namespace tidemark

#pragma once

#include <QList>
#include <deque>
#include <functional>
#include <mutex>

#include "sandbox/http/Exchange.h"

namespace tidemark::sandbox {

struct LoggedRequest : Request {
    /// Wall-clock milliseconds.
    qint64 time = 0;
    /// Status answered; 0 for a request left without an answer.
    int status = 0;
};

/// The requests of the three services (not the control routes), in the order of their answers; an entry is
/// there before the first byte of its answer is. Keeps the last 10,000. Safe to use from any thread.
class RequestLog final {
public:
    static constexpr int capacity = 10'000;
    using Listener = std::function<void(const LoggedRequest&)>;

    void append(const LoggedRequest& request);
    void clear();

    /// Entries whose path starts so.
    [[nodiscard]] QList<LoggedRequest> entries(const QString& pathPrefix = {}) const;

    /// Requests since the start or the last `clear`, also those no longer kept.
    [[nodiscard]] qint64 total() const;

    /// Called for every request on the server's thread; set it before the server starts.
    void setListener(Listener listener);

private:
    mutable std::mutex m_mutex;
    std::deque<LoggedRequest> m_entries;
    qint64 m_total = 0;
    Listener m_listener;
};

}  // namespace tidemark::sandbox

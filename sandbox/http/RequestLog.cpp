#include "sandbox/http/RequestLog.h"

#include <algorithm>
#include <iterator>

namespace tidemark::sandbox {

void RequestLog::append(const LoggedRequest& request) {
    Listener listener;
    {
        const std::scoped_lock lock(m_mutex);
        listener = m_listener;
        ++m_total;
        m_entries.push_back(request);
        if (m_entries.size() > capacity)
            m_entries.pop_front();
    }
    if (listener)
        listener(request);
}

void RequestLog::clear() {
    const std::scoped_lock lock(m_mutex);
    m_entries.clear();
    m_total = 0;
}

QList<LoggedRequest> RequestLog::entries(const QString& pathPrefix) const {
    const std::scoped_lock lock(m_mutex);
    QList<LoggedRequest> matching;
    std::copy_if(m_entries.begin(), m_entries.end(), std::back_inserter(matching),
                 [&](const LoggedRequest& entry) { return entry.path.startsWith(pathPrefix); });
    return matching;
}

qint64 RequestLog::total() const {
    const std::scoped_lock lock(m_mutex);
    return m_total;
}

void RequestLog::setListener(Listener listener) {
    const std::scoped_lock lock(m_mutex);
    m_listener = std::move(listener);
}

}  // namespace tidemark::sandbox

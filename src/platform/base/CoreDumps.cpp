#include "platform/base/CoreDumps.h"

#include <algorithm>
#include <optional>

namespace tidemark::coredumps {

namespace {

/// The limit that the process was started with, once it is replaced.
std::optional<rlim_t>& userLimit() {
    static std::optional<rlim_t> limit;
    return limit;
}

}  // namespace

void forbid() {
    rlimit limit{};
    if (::getrlimit(RLIMIT_CORE, &limit) != 0)
        return;
    if (!userLimit())
        userLimit() = limit.rlim_cur;
    limit.rlim_cur = std::min<rlim_t>(1, limit.rlim_max);
    ::setrlimit(RLIMIT_CORE, &limit);
}

UserLimit::UserLimit() {
    if (!userLimit() || ::getrlimit(RLIMIT_CORE, &m_before) != 0)
        return;
    rlimit limit = m_before;
    limit.rlim_cur = *userLimit();
    ::setrlimit(RLIMIT_CORE, &limit);
}

UserLimit::~UserLimit() {
    if (userLimit())
        ::setrlimit(RLIMIT_CORE, &m_before);
}

}  // namespace tidemark::coredumps

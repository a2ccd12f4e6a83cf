#pragma once

#include <QByteArray>
#include <chrono>
#include <set>

namespace tidemark {

/// The state of the network that open connections depend on. When it changes, they are dead, which is
/// otherwise noticed only by a timeout.
struct NetworkPath {
    /// For how long the machine has been suspended since it booted.
    std::chrono::nanoseconds suspended{};
    /// The machine's addresses, as `in_addr` and `in6_addr` hold them.
    std::set<QByteArray> addresses;

    [[nodiscard]] static NetworkPath current();

    /// Whether connections from the time of this state may still be alive in the later one.
    [[nodiscard]] bool isContinuedBy(const NetworkPath& later) const;
};

}  // namespace tidemark

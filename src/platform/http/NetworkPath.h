#pragma once

#include <QHostAddress>
#include <QList>
#include <chrono>

namespace tidemark {

/// What open connections depend on: when it changes they are dead, and nobody tells until a time-out does.
struct NetworkPath {
    /// How long the machine has been suspended since it was started.
    std::chrono::nanoseconds suspended{};
    /// The addresses that it has.
    QList<QHostAddress> addresses;

    [[nodiscard]] static NetworkPath current();

    /// Whether connections that were opened then can still be alive.
    [[nodiscard]] bool isContinuedBy(const NetworkPath& later) const;
};

}  // namespace tidemark

#include "platform/http/NetworkPath.h"

#include <QNetworkInterface>
#include <ctime>

namespace tidemark {

namespace {

std::chrono::nanoseconds read(clockid_t clock) {
    timespec time{};
    clock_gettime(clock, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

}  // namespace

NetworkPath NetworkPath::current() {
    return {.suspended = read(CLOCK_BOOTTIME) - read(CLOCK_MONOTONIC),
            .addresses = QNetworkInterface::allAddresses()};
}

bool NetworkPath::isContinuedBy(const NetworkPath& later) const {
    // The two clocks are not read at exactly the same time, so small differences do not count.
    return later.suspended - suspended < std::chrono::seconds(1) && later.addresses == addresses;
}

}  // namespace tidemark

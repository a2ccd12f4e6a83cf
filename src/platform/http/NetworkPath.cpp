#include "platform/http/NetworkPath.h"

#include <ifaddrs.h>
#include <net/if.h>
#include <netinet/in.h>

#include <ctime>
#include <memory>

namespace tidemark {

namespace {

std::chrono::nanoseconds read(clockid_t clock) {
    timespec time{};
    clock_gettime(clock, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

struct FreeInterfaces {
    void operator()(ifaddrs* list) const { freeifaddrs(list); }
};

std::set<QByteArray> ownAddresses() {
    ifaddrs* list = nullptr;
    if (getifaddrs(&list) != 0)
        return {};
    const std::unique_ptr<ifaddrs, FreeInterfaces> owner(list);
    std::set<QByteArray> result;
    for (const ifaddrs* item = list; item != nullptr; item = item->ifa_next) {
        if (item->ifa_addr == nullptr || (item->ifa_flags & IFF_UP) == 0)
            continue;
        const auto take = [&result](const auto& address) {
            result.emplace(reinterpret_cast<const char*>(&address), sizeof address);
        };
        if (item->ifa_addr->sa_family == AF_INET)
            take(reinterpret_cast<const sockaddr_in*>(item->ifa_addr)->sin_addr);
        else if (item->ifa_addr->sa_family == AF_INET6)
            take(reinterpret_cast<const sockaddr_in6*>(item->ifa_addr)->sin6_addr);
    }
    return result;
}

}  // namespace

NetworkPath NetworkPath::current() {
    return {.suspended = read(CLOCK_BOOTTIME) - read(CLOCK_MONOTONIC), .addresses = ownAddresses()};
}

bool NetworkPath::isContinuedBy(const NetworkPath& later) const {
    // The two clocks are not read at exactly the same time, so small differences do not count.
    return later.suspended - suspended < std::chrono::seconds(1) && later.addresses == addresses;
}

}  // namespace tidemark

#include "platform/base/TerminationSignals.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <utility>

namespace tidemark {

namespace {

constexpr std::array terminating{SIGTERM, SIGINT, SIGHUP};

/// Written by the signal handler, which may do little else.
int eventDescriptor() {
    static const int descriptor = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    return descriptor;
}

void noteSignal(int /*number*/) {
    const int savedError = errno;
    [[maybe_unused]] const int result = eventfd_write(eventDescriptor(), 1);
    errno = savedError;
}

void setHandler(void (*handler)(int)) {
    struct sigaction action{};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    for (const int number : terminating) {
        // What was told to be ignored, as under nohup, stays so.
        struct sigaction current{};
        sigaction(number, nullptr, &current);
        if (current.sa_handler != SIG_IGN)
            sigaction(number, &action, nullptr);
    }
}

}  // namespace

void TerminationSignals::exitUntilMade() {
    setHandler([](int /*number*/) { _exit(EXIT_SUCCESS); });
}

TerminationSignals::TerminationSignals(std::function<void()> onSignal)
    : m_onSignal(std::move(onSignal)), m_notifier(eventDescriptor(), QSocketNotifier::Read) {
    QObject::connect(&m_notifier, &QSocketNotifier::activated, &m_notifier, [this] {
        eventfd_t count = 0;
        eventfd_read(eventDescriptor(), &count);
        m_onSignal();
    });
    setHandler(noteSignal);
}

}  // namespace tidemark

#include "platform/base/TerminationSignals.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <utility>

#include "platform/base/QuitLimit.h"

namespace tidemark {

namespace {

constexpr std::array terminating{SIGTERM, SIGINT, SIGHUP};

/// The signal handler only writes to this descriptor, because few other calls are allowed in it.
int eventDescriptor() {
    static const int descriptor = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    return descriptor;
}

void noteSignal(int /*number*/) {
    const int savedError = errno;
    // Also if the event loop does not come to it.
    quitlimit::start();
    [[maybe_unused]] const int result = eventfd_write(eventDescriptor(), 1);
    errno = savedError;
}

void setHandler(void (*handler)(int)) {
    struct sigaction action{};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    for (const int number : terminating) {
        // A signal that is ignored, as SIGHUP is under nohup, stays ignored.
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

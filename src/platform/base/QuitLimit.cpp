#include "platform/base/QuitLimit.h"

#include <unistd.h>

#include <csignal>
#include <cstdlib>

namespace tidemark {

void quitlimit::start() {
    constexpr unsigned seconds = 2;
    struct sigaction action{};
    action.sa_handler = [](int /*number*/) { _exit(EXIT_SUCCESS); };
    sigaction(SIGALRM, &action, nullptr);
    alarm(seconds);
}

}  // namespace tidemark

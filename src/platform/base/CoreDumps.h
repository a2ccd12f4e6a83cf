#pragma once

#include <sys/resource.h>

/// Keeps tokens out of core files. Making the process undumpable (`prctl`) would do the same, but the
/// desktop's portal then refuses its calls, because the portal cannot look into /proc for the caller.
namespace tidemark::coredumps {

/// No crash of this process leaves a core file, neither in a folder nor with a crash handler. For the
/// handlers, which get a core whatever the limit is, Linux makes an exception of a limit of one byte (see
/// core(5)).
void forbid();

/// While it exists, started programs inherit the user's own limit. UI thread only.
class UserLimit {
public:
    UserLimit();
    UserLimit(const UserLimit&) = delete;
    UserLimit& operator=(const UserLimit&) = delete;
    ~UserLimit();

private:
    rlimit m_before{};
};

}  // namespace tidemark::coredumps

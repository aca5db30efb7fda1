#ifndef TESTS_SUPPORT_ASNOBODY_H
#define TESTS_SUPPORT_ASNOBODY_H

#include <sys/wait.h>
#include <unistd.h>

namespace qextest
{

/// Runs \p pCheck, which returns a bool, in a child process without root privileges: root may read and write everything, which would
/// defeat tests of permissions. \return its result; false when the process could not be created.
template <typename TCheck>
bool AsNobody(TCheck pCheck)
{
    const pid_t lChild = ::fork();
    if (lChild == 0)
    {
        constexpr unsigned kNobody = 65534;
        const bool         lReady = ::geteuid() != 0 || (::setgid(kNobody) == 0 && ::setuid(kNobody) == 0);
        ::_exit(lReady && pCheck() ? 0 : 1);
    }
    int lStatus = 0;
    return lChild > 0 && ::waitpid(lChild, &lStatus, 0) == lChild && WIFEXITED(lStatus) && WEXITSTATUS(lStatus) == 0;
}

} // namespace qextest

#endif

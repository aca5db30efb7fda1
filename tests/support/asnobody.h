#ifndef TESTS_SUPPORT_ASNOBODY_H
#define TESTS_SUPPORT_ASNOBODY_H

#include <sys/wait.h>
#include <unistd.h>

namespace qextest
{

/// Runs \p pCheck, which gives a bool, in a process that has no more rights than any user: root may read and write everything, so
/// that tests of permissions would see nothing. \return what it gave; false when no such process could be made.
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

#include <kbaselib/kbase/posix/kposix.h>

#include <sys/ioctl.h>
#include <unistd.h>

namespace qexsdk
{

namespace
{

bool IsTerminal(int pStream)
{
    return ::isatty(pStream) == 1;
}

int TerminalWidth(int pStream)
{
    struct winsize lSize = {};
    return ::ioctl(pStream, TIOCGWINSZ, &lSize) == 0 ? lSize.ws_col : 0;
}

} // namespace

void SetConsoleCalls(KSystemCalls& pCalls)
{
    pCalls.mIsTerminal = IsTerminal;
    pCalls.mTerminalWidth = TerminalWidth;
}

} // namespace qexsdk

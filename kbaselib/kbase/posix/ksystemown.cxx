#include <kbaselib/kbase/posix/kposix.h>

namespace qexsdk
{

const KSystemCalls& KSystemOwn()
{
    static const KSystemCalls sCalls = []
    {
        KSystemCalls lCalls;
        SetFileCalls(lCalls);
        SetProcessCalls(lCalls);
        SetSignalCalls(lCalls);
        SetConsoleCalls(lCalls);
        SetLocaleCalls(lCalls);
        SetLibraryCalls(lCalls);
        return lCalls;
    }();
    return sCalls;
}

} // namespace qexsdk

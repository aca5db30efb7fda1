#include <kbaselib/kbase/kprocess.h>

#include <kbaselib/kbase/ksystem.h>

namespace qexsdk
{

KProcessResult KRunProcess(const KProcessOptions& pOptions)
{
    return KSystemInUse().mRun(pOptions);
}

std::string KProgramPath()
{
    return KSystemInUse().mProgramPath();
}

bool KLimitMemory(uint64_t pBytes)
{
    return KSystemInUse().mLimitMemory(pBytes);
}

} // namespace qexsdk

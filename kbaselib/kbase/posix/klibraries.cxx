#include <kbaselib/kbase/posix/kposix.h>

#include <dlfcn.h>

namespace qexsdk
{

namespace
{

void* OpenLibrary(const char* pName, int pVersion)
{
    const std::string lName = std::string("lib") + pName;
    const std::string lVersion = std::to_string(pVersion);
#ifdef __APPLE__
    const std::string lFile = lName + "." + lVersion + ".dylib";
#else
    const std::string lFile = lName + ".so." + lVersion;
#endif
    return ::dlopen(lFile.c_str(), RTLD_NOW | RTLD_LOCAL);
}

const char* Reason()
{
    const char* lReason = ::dlerror();
    return lReason != nullptr ? lReason : "the system gives no reason";
}

} // namespace

void SetLibraryCalls(KSystemCalls& pCalls)
{
    pCalls.mOpenLibrary = OpenLibrary;
    pCalls.mFindFunction = ::dlsym;
    pCalls.mLibraryReason = Reason;
}

} // namespace qexsdk

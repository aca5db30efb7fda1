#include <kbaselib/kbase/koutputnames.h>

#include <kbaselib/kbase/ksystem.h>

#include <atomic>
#include <cerrno>

namespace qexsdk
{

namespace
{

constexpr int kMaxLinks = 40; ///< Longest chain of symbolic links, the same as the system's limit.

std::atomic<unsigned> sNameCount{0};

/// The folder part of \p pPath with its trailing slash; "" when there is none.
std::string FolderOf(const std::string& pPath)
{
    const size_t lSlash = pPath.rfind('/');
    return lSlash == std::string::npos ? std::string() : pPath.substr(0, lSlash + 1);
}

} // namespace

std::string KTemporaryName(const std::string& pTarget)
{
    return FolderOf(pTarget) + ".qex-" + std::to_string(KSystemInUse().mProcessId()) + "-" + std::to_string(sNameCount.fetch_add(1)) +
           ".tmp";
}

int KFollowLinks(std::string& pPath)
{
    const KSystemCalls& lCalls = KSystemInUse();
    for (int i = 0; i < kMaxLinks; ++i)
    {
        KFileInfo lInfo;
        if (lCalls.mLinkInfo(pPath.c_str(), &lInfo) != 0)
        {
            return errno == ENOENT ? 0 : errno;
        }
        if (lInfo.mKind != KFileInfo::eLINK)
        {
            return 0;
        }
        char                 lText[kMaxPathSize];
        const std::ptrdiff_t lSize = lCalls.mReadLink(pPath.c_str(), lText, sizeof lText);
        if (lSize < 0)
        {
            return errno;
        }
        if (static_cast<size_t>(lSize) == sizeof lText)
        {
            return ENAMETOOLONG;
        }
        const std::string lLink(lText, static_cast<size_t>(lSize));
        pPath = !lLink.empty() && lLink[0] == '/' ? lLink : FolderOf(pPath) + lLink;
    }
    return ELOOP;
}

} // namespace qexsdk

#include <apps/asf/batch/folderwalk.h>

#include <apps/asf/batch/manifest.h>

#include <algorithm>
#include <utility>

namespace asfapp
{

namespace
{

namespace fs = std::filesystem;

} // namespace

std::string WithoutLinks(const fs::path& pPath)
{
    std::error_code lError;
    const fs::path  lPath = fs::weakly_canonical(fs::absolute(pPath, lError), lError);
    const fs::path  lName = lError ? pPath.lexically_normal() : lPath;
    return (lName.has_filename() ? lName : lName.parent_path()).string();
}

KFolderWalk::KFolderWalk(std::string pRoot, std::string pLeftOut, KConsole& pConsole)
    : mRoot(std::move(pRoot)), mLeftOut(std::move(pLeftOut)), mConsole(pConsole)
{
    Enter("");
}

bool KFolderWalk::Next(std::string& pName)
{
    while (!mLevels.empty())
    {
        KLevel& lLevel = mLevels.back();
        if (lLevel.mNext == lLevel.mNames.size())
        {
            mLevels.pop_back();
            continue;
        }
        const std::string   lName = lLevel.mName + lLevel.mNames[lLevel.mNext++];
        std::error_code     lError;
        const fs::file_type lType = fs::status(mRoot / lName, lError).type();
        if (lType == fs::file_type::directory)
        {
            if (fs::path(lName).filename() != kBatchFolder)
            {
                Enter(lName + "/");
            }
        }
        else if (lType != fs::file_type::fifo && lType != fs::file_type::socket && lType != fs::file_type::character)
        {
            pName = lName;
            return true;
        }
    }
    return false;
}

void KFolderWalk::Enter(const std::string& pName)
{
    const std::string lFolder = WithoutLinks(mRoot / pName);
    if (lFolder == mLeftOut && !pName.empty())
    {
        return;
    }
    if (!mSeen.insert(lFolder).second)
    {
        mConsole.Message(eWARNING, (mRoot / pName).string(), 0, "leads to a folder that is read already: skipped");
        return;
    }
    KLevel lLevel;
    lLevel.mName = pName;
    ReadNames(lLevel);
    if (!pName.empty() && std::binary_search(lLevel.mNames.begin(), lLevel.mNames.end(), kBatchFolder))
    {
        mConsole.Message(eNOTE, (mRoot / pName).string(), 0, "is what asf batch has made: skipped");
        return;
    }
    mLevels.push_back(std::move(lLevel));
}

void KFolderWalk::ReadNames(KLevel& pLevel)
{
    std::error_code        lError;
    fs::directory_iterator lEntry(mRoot / pLevel.mName, lError);
    for (const fs::directory_iterator lEnd; !lError && lEntry != lEnd; lEntry.increment(lError))
    {
        pLevel.mNames.push_back(lEntry->path().filename().string());
    }
    if (lError)
    {
        mConsole.Message(eERROR, (mRoot / pLevel.mName).string(), 0, "cannot be read: " + lError.message());
        mConsole.Raise(eEXIT_SYSTEM);
    }
    std::sort(pLevel.mNames.begin(), pLevel.mNames.end());
}

} // namespace asfapp

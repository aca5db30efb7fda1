#include <apps/asf/figure/figurescene.h>
#include <apps/asf/figure/skeletonfinder.h>
#include <kbaselib/kbase/kpath.h>

#include <utility>

namespace asfapp
{

namespace
{

EFileKind KindOf(const std::string& pWord)
{
    return pWord == "asf" ? eKIND_ASF : pWord == "amc" ? eKIND_AMC : pWord == "bvh" ? eKIND_BVH : eKIND_GLTF;
}

} // namespace

std::string FileStem(const std::string& pPath)
{
    if (pPath == "-")
    {
        return "motion";
    }
    return qexsdk::KPathStem(pPath);
}

std::vector<std::string> KFigureInput::GetPaths() const
{
    std::vector<std::string> lPaths{mFigure.GetPath()};
    for (const KInputFile& lMotion : mMotions)
    {
        lPaths.push_back(lMotion.GetPath());
    }
    if (mFigure.GetKind() == eKIND_GLTF && LowerExtension(mFigure.GetPath()) == ".gltf")
    {
        // What the file calls its numbers is not known yet; this is how they are mostly called.
        lPaths.push_back(mFigure.GetPath().substr(0, mFigure.GetPath().size() - 5) + ".bin");
    }
    return lPaths;
}

bool OpenFiles(const std::vector<std::string>& pPaths, const std::string& pFrom, std::vector<KInputFile>& pFiles, KConsole& pConsole)
{
    pFiles.resize(pPaths.size());
    for (size_t lIndex = 0; lIndex < pPaths.size(); ++lIndex)
    {
        if (!pFiles[lIndex].Open(pPaths[lIndex], pConsole))
        {
            return false;
        }
        if (!pFrom.empty() && pPaths.size() == 1)
        {
            pFiles[lIndex].SetKind(KindOf(pFrom));
        }
    }
    return true;
}

bool KFigureInput::Open(const std::vector<std::string>& pPaths, const std::string& pFrom, const KMotionOptions& pOptions,
                        KConsole& pConsole)
{
    std::vector<KInputFile> lFiles;
    return OpenFiles(pPaths, pFrom, lFiles, pConsole) && Take(std::move(lFiles), pOptions, pConsole);
}

bool KFigureInput::Take(std::vector<KInputFile> pFiles, const KMotionOptions& pOptions, KConsole& pConsole)
{
    bool lHasFigure = false;
    for (KInputFile& lFile : pFiles)
    {
        if (lFile.GetKind() == eKIND_AMC)
        {
            mMotions.push_back(std::move(lFile));
            continue;
        }
        if (lHasFigure)
        {
            pConsole.Fail(eEXIT_CALL, "one figure at a time is expected, not " + mFigure.GetShown() + " and " + lFile.GetShown());
            return false;
        }
        mFigure = std::move(lFile);
        lHasFigure = true;
    }
    if (lHasFigure && !pOptions.mAsf.empty())
    {
        pConsole.Fail(eEXIT_CALL, "--asf is for AMC files given alone, not beside " + mFigure.GetShown());
        return false;
    }
    return CheckTogether(lHasFigure, pConsole) && (lHasFigure || FindSkeletonOfAll(pOptions, pConsole));
}

bool KFigureInput::CheckTogether(bool pHasFigure, KConsole& pConsole) const
{
    if (pHasFigure && mFigure.GetKind() != eKIND_ASF && !mMotions.empty())
    {
        pConsole.Fail(eEXIT_CALL, mFigure.GetShown() + " has its own motion: " + mMotions.front().GetShown() + " needs an ASF file");
        return false;
    }
    if (!pHasFigure && mMotions.empty())
    {
        pConsole.Fail(eEXIT_CALL, "a file to read is expected");
        return false;
    }
    return true;
}

/// All motions go onto one skeleton: they have to agree on it.
bool KFigureInput::FindSkeletonOfAll(const KMotionOptions& pOptions, KConsole& pConsole)
{
    std::string lPath = pOptions.mAsf;
    for (size_t lIndex = 0; lIndex < mMotions.size() && pOptions.mAsf.empty(); ++lIndex)
    {
        const std::string lFound = FindSkeleton(mMotions[lIndex], pConsole);
        if (lFound.empty())
        {
            return false;
        }
        if (lIndex > 0 && lFound != lPath)
        {
            pConsole.Fail(eEXIT_CALL, mMotions.front().GetShown() + " and " + mMotions[lIndex].GetShown() +
                                          " have different skeletons: convert them one by one, or tell with --asf FILE");
            return false;
        }
        lPath = lFound;
    }
    if (!mFigure.Open(lPath, pConsole))
    {
        return false;
    }
    if (mFigure.GetKind() != eKIND_ASF)
    {
        pConsole.Message(eERROR, mFigure.GetShown(), 0, "is no skeleton, where one is expected");
        pConsole.Raise(eEXIT_CALL);
        return false;
    }
    return true;
}

} // namespace asfapp

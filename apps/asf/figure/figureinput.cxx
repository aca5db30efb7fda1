#include <apps/asf/figure/figurescene.h>
#include <apps/asf/figure/skeletonfinder.h>
#include <kbaselib/kbase/kpath.h>

#include <utility>

namespace asfapp
{

namespace
{

EFileKind ParseKind(const std::string& pWord)
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
        // The file has not been read, so the name of its buffer is unknown; this is the usual one.
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
            pFiles[lIndex].SetKind(ParseKind(pFrom));
        }
    }
    return true;
}

bool KFigureInput::Open(const std::vector<std::string>& pPaths, const std::string& pFrom, const KMotionOptions& pOptions,
                        KConsole& pConsole)
{
    std::vector<KInputFile> lFiles;
    return OpenFiles(pPaths, pFrom, lFiles, pConsole) && Assign(std::move(lFiles), pOptions, pConsole);
}

bool KFigureInput::Assign(std::vector<KInputFile> pFiles, const KMotionOptions& pOptions, KConsole& pConsole)
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
            pConsole.Fail(eEXIT_USAGE, "expected one figure, not " + mFigure.GetDisplayPath() + " and " + lFile.GetDisplayPath());
            return false;
        }
        mFigure = std::move(lFile);
        lHasFigure = true;
    }
    if (lHasFigure && !pOptions.mAsf.empty())
    {
        pConsole.Fail(eEXIT_USAGE, "--asf is for AMC files given alone, not with " + mFigure.GetDisplayPath());
        return false;
    }
    return CheckFiles(lHasFigure, pConsole) && (lHasFigure || FindSharedSkeleton(pOptions, pConsole));
}

bool KFigureInput::CheckFiles(bool pHasFigure, KConsole& pConsole) const
{
    if (pHasFigure && mFigure.GetKind() != eKIND_ASF && !mMotions.empty())
    {
        pConsole.Fail(eEXIT_USAGE,
                      mFigure.GetDisplayPath() + " has its own motion: " + mMotions.front().GetDisplayPath() + " needs an ASF file");
        return false;
    }
    if (!pHasFigure && mMotions.empty())
    {
        pConsole.Fail(eEXIT_USAGE, "an input file is required");
        return false;
    }
    return true;
}

/// All motions must have the same skeleton.
bool KFigureInput::FindSharedSkeleton(const KMotionOptions& pOptions, KConsole& pConsole)
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
            pConsole.Fail(eEXIT_USAGE, mMotions.front().GetDisplayPath() + " and " + mMotions[lIndex].GetDisplayPath() +
                                           " have different skeletons: convert them one by one, or choose one with --asf FILE");
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
        pConsole.Message(eERROR, mFigure.GetDisplayPath(), 0, "is not an ASF file");
        pConsole.Raise(eEXIT_USAGE);
        return false;
    }
    return true;
}

} // namespace asfapp

#include <qexfigure/kqexfigurefiles.h>

#include <kbaselib/kbase/kpath.h>
#include <qexfigure/kqexfigureguard.h>

#include <algorithm>

namespace qexsdk
{

namespace
{

bool OpenAll(const std::vector<std::string>& pPaths, const KQexFigureFilesOptions& pOptions, std::vector<KQexFigureFile>& pFiles,
             KQexFigureReport& pReport)
{
    pFiles.assign(pPaths.size(), KQexFigureFile());
    for (size_t lIndex = 0; lIndex < pPaths.size(); ++lIndex)
    {
        if (!pFiles[lIndex].Open(pPaths[lIndex], pReport))
        {
            return false;
        }
        if (!pOptions.mFormat.empty() && pPaths.size() == 1)
        {
            pFiles[lIndex].SetFormat(pOptions.mFormat);
        }
    }
    return true;
}

} // namespace

bool OpenFigureFiles(const std::vector<std::string>& pPaths, const KQexFigureFilesOptions& pOptions, std::vector<KQexFigureFile>& pFiles,
                     KQexFigureReport& pReport) noexcept
{
    return RunGuarded(pReport, [&] { return OpenAll(pPaths, pOptions, pFiles, pReport); });
}

bool KQexFigureFiles::Open(const std::vector<std::string>& pPaths, const KQexFigureFilesOptions& pOptions,
                           KQexFigureReport& pReport) noexcept
{
    std::vector<KQexFigureFile> lFiles;
    return OpenFigureFiles(pPaths, pOptions, lFiles, pReport) && Assign(lFiles, pOptions, pReport);
}

bool KQexFigureFiles::Assign(const std::vector<KQexFigureFile>& pFiles, const KQexFigureFilesOptions& pOptions,
                             KQexFigureReport& pReport) noexcept
{
    return RunGuarded(pReport, [&] { return Sort(pFiles, pOptions, pReport); });
}

bool KQexFigureFiles::Sort(const std::vector<KQexFigureFile>& pFiles, const KQexFigureFilesOptions& pOptions, KQexFigureReport& pReport)
{
    bool lHasFigure = false;
    mMotions.clear();
    for (const KQexFigureFile& lFile : pFiles)
    {
        if (lFile.GetFormat() == eFIGURE_AMC)
        {
            mMotions.push_back(lFile);
            continue;
        }
        if (lHasFigure)
        {
            return pReport.Fail(eFIGURE_USAGE, "",
                                "expected one figure, not " + mFigure.GetDisplayPath() + " and " + lFile.GetDisplayPath());
        }
        mFigure = lFile;
        lHasFigure = true;
    }
    if (lHasFigure && !pOptions.mSkeleton.empty())
    {
        const std::string lOption = pOptions.mSkeletonOption.empty() ? "a separate skeleton" : pOptions.mSkeletonOption;
        return pReport.Fail(eFIGURE_USAGE, "", lOption + " is for AMC files given alone, not with " + mFigure.GetDisplayPath());
    }
    if (lHasFigure && mFigure.GetFormat() != eFIGURE_ASF && !mMotions.empty())
    {
        return pReport.Fail(eFIGURE_USAGE, "",
                            mFigure.GetDisplayPath() + " has its own motion: " + mMotions.front().GetDisplayPath() + " needs an ASF file");
    }
    if (!lHasFigure && mMotions.empty())
    {
        return pReport.Fail(eFIGURE_USAGE, "", "an input file is required");
    }
    return lHasFigure || FindSharedSkeleton(pOptions, pReport);
}

/// All motions must have the same skeleton.
bool KQexFigureFiles::FindSharedSkeleton(const KQexFigureFilesOptions& pOptions, KQexFigureReport& pReport)
{
    std::string lPath = pOptions.mSkeleton;
    for (size_t lIndex = 0; lIndex < mMotions.size() && pOptions.mSkeleton.empty(); ++lIndex)
    {
        const std::string lFound = FindFigureSkeleton(mMotions[lIndex], pOptions, pReport);
        if (lFound.empty())
        {
            return false;
        }
        if (lIndex > 0 && lFound != lPath)
        {
            const std::string lHint = pOptions.mSkeletonOption.empty() ? "" : ", or choose one with " + pOptions.mSkeletonOption + " FILE";
            return pReport.Fail(eFIGURE_USAGE, "",
                                mMotions.front().GetDisplayPath() + " and " + mMotions[lIndex].GetDisplayPath() +
                                    " have different skeletons: convert them one by one" + lHint);
        }
        lPath = lFound;
    }
    if (!mFigure.Open(lPath, pReport))
    {
        return false;
    }
    return mFigure.GetFormat() == eFIGURE_ASF || pReport.Fail(eFIGURE_USAGE, mFigure.GetDisplayPath(), "is not an ASF file");
}

bool KQexFigureFiles::CollectPaths(std::vector<std::string>& pPaths) const noexcept
{
    KQexFigureReport lReport;
    return RunGuarded(lReport,
                      [&]
                      {
                          pPaths.push_back(mFigure.GetPath());
                          for (const KQexFigureFile& lMotion : mMotions)
                          {
                              pPaths.push_back(lMotion.GetPath());
                          }
                          if (mFigure.GetFormat() == eFIGURE_GLTF && KPathExtension(mFigure.GetPath()) == ".gltf")
                          {
                              // The file has not been read, so the name of its buffer is unknown; this is the usual one.
                              pPaths.push_back(mFigure.GetPath().substr(0, mFigure.GetPath().size() - 5) + ".bin");
                          }
                          return true;
                      });
}

bool KQexFigureFiles::FailsToRead() const
{
    return mFigure.FailsToRead() ||
           std::any_of(mMotions.begin(), mMotions.end(), [](const KQexFigureFile& pMotion) { return pMotion.FailsToRead(); });
}

} // namespace qexsdk

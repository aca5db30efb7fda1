#include <kbaselib/kbase/kletters.h>
#include <kbaselib/kbase/kpath.h>
#include <qexfigure/kqexfigurefiles.h>
#include <qexfigure/kqexfigureguard.h>
#include <qexioplugins/acclaim/kqexfileacclaimamc.h>

#include <algorithm>
#include <filesystem>
#include <tuple>

namespace qexsdk
{

namespace
{

namespace fs = std::filesystem;

/// The file name of a path with / or \\: headers contain paths of other systems.
std::string BaseName(const std::string& pPath)
{
    return pPath.substr(pPath.find_last_of("/\\") + 1);
}

fs::path FolderOf(const KQexFigureFile& pMotion)
{
    return pMotion.GetPath() == "-" ? fs::path() : fs::path(pMotion.GetPath()).parent_path();
}

/// Names of the ASF files in the motion's folder, sorted.
std::vector<std::string> Candidates(const fs::path& pFolder)
{
    std::vector<std::string> lNames;
    std::error_code          lError;
    for (fs::directory_iterator lEntry(pFolder.empty() ? fs::path(".") : pFolder, lError), lEnd; !lError && lEntry != lEnd;
         lEntry.increment(lError))
    {
        const std::string lName = lEntry->path().filename().string();
        std::error_code   lIgnored;
        if (KPathExtension(lName) == ".asf" && !fs::is_directory(lEntry->path(), lIgnored))
        {
            lNames.push_back(lName);
        }
    }
    std::sort(lNames.begin(), lNames.end());
    return lNames;
}

std::string HeaderFile(const KQexFigureFile& pMotion)
{
    KQexAmcHeader lHeader;
    std::string   lReason;
    if (pMotion.IsInMemory())
    {
        KQexFileAcclaimAmc::PeekHeaderBuffer(pMotion.GetBytes().data(), pMotion.GetBytes().size(), lHeader);
    }
    else
    {
        KQexFileAcclaimAmc::PeekHeader(pMotion.GetPath().c_str(), lHeader, lReason);
    }
    return BaseName(lHeader.mAsfFile);
}

/// The candidate with this name; an exact match wins over one that differs in case.
std::string FindNamed(const std::vector<std::string>& pCandidates, const std::string& pName)
{
    std::string lFound;
    for (const std::string& lCandidate : pCandidates)
    {
        if (lCandidate == pName || (lFound.empty() && KEqualsIgnoreCase(lCandidate, pName)))
        {
            lFound = lCandidate;
        }
    }
    return lFound;
}

std::string LongestPrefix(const std::vector<std::string>& pCandidates, const std::string& pMotionName)
{
    std::string lFound;
    for (const std::string& lCandidate : pCandidates)
    {
        const std::string lStem = KToLower(KPathStem(lCandidate));
        const bool        lIsPrefix = !lStem.empty() && KToLower(pMotionName).compare(0, lStem.size(), lStem) == 0;
        if (lIsPrefix && (lFound.empty() || lStem.size() > KPathStem(lFound).size()))
        {
            lFound = lCandidate;
        }
    }
    return lFound;
}

std::string Join(const std::vector<std::string>& pNames)
{
    std::string lText;
    for (const std::string& lName : pNames)
    {
        lText += (lText.empty() ? "" : ", ") + lName;
    }
    return lText;
}

const char* const kNamedReason = "named in the header";
const char* const kPrefixReason = "its name is a prefix of the motion's";

void ReportChoice(const KQexFigureFile& pMotion, const std::string& pSkeleton, const char* pReason, KQexFigureReport& pReport)
{
    pReport.Add(KQexFigureMessage::eNOTE, pMotion.GetDisplayPath(), 0, "using skeleton " + pSkeleton + " (" + pReason + ")");
}

/// The skeleton of a motion among the files of a folder; empty without one.
std::string FindAmong(const KQexFigureFile& pMotion, const fs::path& pFolder, const std::vector<std::string>& pCandidates,
                      KQexFigureReport& pReport)
{
    const std::string lHeader = HeaderFile(pMotion);
    const char*       lReason = kNamedReason;
    std::string       lFound = lHeader.empty() ? std::string() : FindNamed(pCandidates, lHeader);
    if (lFound.empty() && pMotion.GetPath() != "-")
    {
        lReason = kPrefixReason;
        lFound = LongestPrefix(pCandidates, BaseName(pMotion.GetPath()));
    }
    if (lFound.empty() && pCandidates.size() == 1)
    {
        lReason = "the only one in the folder";
        lFound = pCandidates.front();
    }
    if (lFound.empty())
    {
        return lFound;
    }
    const std::string lPath = (pFolder / lFound).string();
    ReportChoice(pMotion, lPath, lReason, pReport);
    return lPath;
}

std::string Find(const KQexFigureFile& pMotion, const KQexFigureFilesOptions& pOptions, KQexFigureReport& pReport)
{
    const fs::path           lFolder = FolderOf(pMotion);
    std::vector<std::string> lCandidates = Candidates(lFolder);
    std::string              lFound = FindAmong(pMotion, lFolder, lCandidates, pReport);
    if (lFound.empty() && pOptions.mSearchesAbove)
    {
        const fs::path                 lAbove = (lFolder / "..").lexically_normal();
        const std::vector<std::string> lThere = Candidates(lAbove);
        lFound = FindAmong(pMotion, lAbove, lThere, pReport);
        lCandidates.insert(lCandidates.end(), lThere.begin(), lThere.end());
    }
    if (lFound.empty())
    {
        const std::string lPlace = pOptions.mSearchesAbove ? "its folder and the one above" : "its folder";
        const std::string lList = lCandidates.empty() ? "there is no ASF file in " + lPlace : "candidates are " + Join(lCandidates);
        const std::string lHint =
            pOptions.mSkeletonOption.empty() ? std::string() : "; give one with " + pOptions.mSkeletonOption + " FILE";
        pReport.Fail(eFIGURE_USAGE, pMotion.GetDisplayPath(), "needs a skeleton: " + lList + lHint);
    }
    return lFound;
}

/// How well a skeleton fits a motion; a greater one fits better.
struct KFit
{
    bool   mIsNamed = false;  ///< The motion's header names it.
    size_t mPrefix = 0;       ///< Length of its name if that is a prefix of the motion's, else 0.
    bool   mIsBeside = false; ///< It is in the motion's folder.

    bool IsAny() const { return mIsNamed || mPrefix > 0; }
    bool IsBelow(const KFit& pOther) const
    {
        return std::tie(mIsNamed, mPrefix, mIsBeside) < std::tie(pOther.mIsNamed, pOther.mPrefix, pOther.mIsBeside);
    }
};

KFit FitOf(const KQexFigureFile& pSkeleton, const KQexFigureFile& pMotion, const std::string& pHeader)
{
    const std::string lName = BaseName(pSkeleton.GetPath());
    KFit              lFit;
    lFit.mIsNamed = !pHeader.empty() && KEqualsIgnoreCase(lName, pHeader);
    lFit.mPrefix = LongestPrefix({lName}, BaseName(pMotion.GetPath())).empty() ? 0 : KPathStem(lName).size();
    lFit.mIsBeside = FolderOf(pSkeleton) == FolderOf(pMotion);
    return lFit;
}

/// The best of several skeletons, with a note; null if none fits.
const KQexFigureFile* FindFitting(const KQexFigureFile& pMotion, const std::vector<KQexFigureFile>& pSkeletons, KQexFigureReport& pReport)
{
    const std::string     lHeader = HeaderFile(pMotion);
    const KQexFigureFile* lBest = nullptr;
    KFit                  lBestFit;
    for (const KQexFigureFile& lSkeleton : pSkeletons)
    {
        const KFit lFit = FitOf(lSkeleton, pMotion, lHeader);
        if (lFit.IsAny() && (lBest == nullptr || lBestFit.IsBelow(lFit)))
        {
            lBest = &lSkeleton;
            lBestFit = lFit;
        }
    }
    if (lBest != nullptr)
    {
        ReportChoice(pMotion, lBest->GetDisplayPath(), lBestFit.mIsNamed ? kNamedReason : kPrefixReason, pReport);
    }
    return lBest;
}

} // namespace

bool KQexFigureFiles::Pair(const KQexFigureFile& pMotion, const std::vector<KQexFigureFile>& pSkeletons,
                           const KQexFigureFilesOptions& pOptions, KQexFigureReport& pReport) noexcept
{
    return RunGuarded(pReport,
                      [&]
                      {
                          const bool                  lIsGiven = pOptions.mSkeleton.empty() && !pSkeletons.empty();
                          const KQexFigureFile*       lSkeleton = !lIsGiven                ? nullptr
                                                                  : pSkeletons.size() == 1 ? &pSkeletons.front()
                                                                                           : FindFitting(pMotion, pSkeletons, pReport);
                          std::vector<KQexFigureFile> lFiles{pMotion};
                          if (lSkeleton != nullptr)
                          {
                              lFiles.push_back(*lSkeleton);
                          }
                          return Assign(lFiles, pOptions, pReport);
                      });
}

std::string FindFigureSkeleton(const KQexFigureFile& pMotion, const KQexFigureFilesOptions& pOptions, KQexFigureReport& pReport) noexcept
{
    std::string lFound;
    RunGuarded(pReport,
               [&]
               {
                   lFound = Find(pMotion, pOptions, pReport);
                   return true;
               });
    return lFound;
}

} // namespace qexsdk

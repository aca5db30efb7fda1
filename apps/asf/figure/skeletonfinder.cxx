#include <apps/asf/figure/skeletonfinder.h>

#include <kbaselib/kbase/kletters.h>
#include <kbaselib/kbase/kpath.h>
#include <qexioplugins/acclaim/kqexfileacclaimamc.h>

#include <algorithm>
#include <filesystem>
#include <vector>

namespace asfapp
{

namespace
{

namespace fs = std::filesystem;

/// The file name of a path with / or \\: headers contain paths of other systems.
std::string BaseName(const std::string& pPath)
{
    return pPath.substr(pPath.find_last_of("/\\") + 1);
}

fs::path FolderOf(const KInputFile& pMotion)
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
        if (LowerExtension(lName) == ".asf" && !fs::is_directory(lEntry->path(), lIgnored))
        {
            lNames.push_back(lName);
        }
    }
    std::sort(lNames.begin(), lNames.end());
    return lNames;
}

std::string HeaderFile(const KInputFile& pMotion)
{
    qexsdk::KQexAmcHeader lHeader;
    std::string           lReason;
    if (pMotion.IsInMemory())
    {
        qexsdk::KQexFileAcclaimAmc::PeekHeaderBuffer(pMotion.GetBytes().data(), pMotion.GetBytes().size(), lHeader);
    }
    else
    {
        qexsdk::KQexFileAcclaimAmc::PeekHeader(pMotion.GetPath().c_str(), lHeader, lReason);
    }
    return BaseName(lHeader.mAsfFile);
}

/// The candidate with this name; an exact match wins over one that differs in case.
std::string FindNamed(const std::vector<std::string>& pCandidates, const std::string& pName)
{
    std::string lFound;
    for (const std::string& lCandidate : pCandidates)
    {
        if (lCandidate == pName || (lFound.empty() && qexsdk::KEqualsIgnoreCase(lCandidate, pName)))
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
        const std::string lStem = qexsdk::KToLower(qexsdk::KPathStem(lCandidate));
        const bool        lIsPrefix = !lStem.empty() && qexsdk::KToLower(pMotionName).compare(0, lStem.size(), lStem) == 0;
        if (lIsPrefix && (lFound.empty() || lStem.size() > qexsdk::KPathStem(lFound).size()))
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

} // namespace

std::string FindSkeleton(const KInputFile& pMotion, KConsole& pConsole)
{
    const fs::path                 lFolder = FolderOf(pMotion);
    const std::vector<std::string> lCandidates = Candidates(lFolder);
    const std::string              lHeader = HeaderFile(pMotion);

    const char* lReason = "named in the header";
    std::string lFound = lHeader.empty() ? std::string() : FindNamed(lCandidates, lHeader);
    if (lFound.empty() && pMotion.GetPath() != "-")
    {
        lReason = "its name is a prefix of the motion's";
        lFound = LongestPrefix(lCandidates, BaseName(pMotion.GetPath()));
    }
    if (lFound.empty() && lCandidates.size() == 1)
    {
        lReason = "the only one in the folder";
        lFound = lCandidates.front();
    }
    if (lFound.empty())
    {
        const std::string lList = lCandidates.empty() ? "there is no ASF file in its folder" : "candidates are " + Join(lCandidates);
        pConsole.Message(eERROR, pMotion.GetDisplayPath(), 0, "needs a skeleton: " + lList + "; give one with --asf FILE");
        pConsole.Raise(eEXIT_USAGE);
        return std::string();
    }
    const std::string lPath = (lFolder / lFound).string();
    pConsole.Message(eNOTE, pMotion.GetDisplayPath(), 0, "using skeleton " + lPath + " (" + lReason + ")");
    return lPath;
}

} // namespace asfapp

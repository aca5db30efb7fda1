#include <apps/asf/batch/collection.h>

#include <apps/asf/batch/folderwalk.h>
#include <apps/asf/batch/pathpattern.h>
#include <kbaselib/kbase/kinputfile.h>
#include <kbaselib/kbase/kletters.h>
#include <kbaselib/kbase/kpath.h>

#include <algorithm>
#include <filesystem>
#include <limits>
#include <unordered_set>
#include <utility>

namespace asfapp
{

namespace
{

namespace fs = std::filesystem;

bool IsMotion(const std::string& pName)
{
    const std::string lExtension = qexsdk::KPathExtension(pName);
    return lExtension == ".amc" || lExtension == ".bvh" || lExtension == ".glb" || lExtension == ".gltf";
}

/// The shortest spelling of a path, without resolving "..", which a link may lead elsewhere.
std::string Tidy(const std::string& pPath)
{
    const fs::path lPath(pPath);
    if (std::find(lPath.begin(), lPath.end(), "..") != lPath.end())
    {
        return pPath;
    }
    const fs::path lTidy = lPath.lexically_normal();
    return (lTidy.has_filename() || !lTidy.has_relative_path() ? lTidy : lTidy.parent_path()).string();
}

/// A given path as a name below OUTDIR: what leads out of it is left out.
std::string NameOfGiven(const std::string& pPath)
{
    fs::path lName;
    for (const fs::path& lPart : fs::path(pPath).lexically_normal().relative_path())
    {
        if (lPart != ".." && lPart != ".")
        {
            lName /= lPart;
        }
    }
    return lName.generic_string();
}

} // namespace

void KCollection::Add(const std::vector<std::string>& pInputs, const std::string& pOutput, KConsole& pConsole)
{
    mOutput = pOutput.empty() ? pOutput : WithoutLinks(pOutput);
    for (const std::string& lInput : pInputs)
    {
        AddInput(lInput, pConsole);
    }
}

void KCollection::AddInput(const std::string& pInput, KConsole& pConsole)
{
    std::error_code lError;
    if (fs::is_directory(pInput, lError))
    {
        AddFolder(Tidy(pInput), "", pConsole);
    }
    else if (fs::exists(pInput, lError))
    {
        AddFile("", Tidy(pInput));
    }
    else if (IsPattern(pInput))
    {
        const size_t lBefore = mFiles.size();
        AddFolder(FolderOfPattern(pInput), pInput, pConsole);
        if (mFiles.size() == lBefore)
        {
            pConsole.Message(eWARNING, pInput, 0, "no motion matches");
        }
    }
    else
    {
        pConsole.Message(eERROR, pInput, 0, "cannot be read: " + (lError ? lError.message() : std::string("No such file or folder")));
        pConsole.Raise(eEXIT_SYSTEM);
    }
}

void KCollection::AddFolder(const std::string& pFolder, const std::string& pPattern, KConsole& pConsole)
{
    KFolderWalk lWalk(pFolder.empty() ? "." : pFolder, mOutput, pConsole);
    std::string lName;
    while (lWalk.Next(lName))
    {
        const std::string lPath = pFolder.empty() || pFolder == "/" ? pFolder + lName : pFolder + "/" + lName;
        if (pPattern.empty())
        {
            AddFile(pFolder, lName);
        }
        else if (MatchesPattern(lPath, pPattern))
        {
            AddFile("", Tidy(lPath));
        }
    }
}

void KCollection::AddFile(const std::string& pFolder, const std::string& pName)
{
    if (qexsdk::KPathExtension(pName) == ".asf")
    {
        ++mSkeletons;
    }
    else if (!IsMotion(pName))
    {
        ++mOthers;
    }
    else
    {
        KFile lFile;
        lFile.mName = pName;
        lFile.mFolder = IndexOf(pFolder);
        mFiles.push_back(std::move(lFile));
    }
}

/// Folders are added one after the other, so only the last one can be the same.
uint32_t KCollection::IndexOf(const std::string& pFolder)
{
    if (mFolders.empty() || mFolders.back() != pFolder)
    {
        mFolders.push_back(pFolder);
    }
    return static_cast<uint32_t>(mFolders.size() - 1);
}

std::string KCollection::PathOf(const KFile& pFile) const
{
    const std::string& lFolder = mFolders[pFile.mFolder];
    return lFolder.empty() ? pFile.mName : (fs::path(lFolder) / pFile.mName).string();
}

bool KCollection::IsMotionFile(const qexsdk::KFileInfo& pFile) const
{
    std::call_once(mIdentitiesOnce,
                   [this]
                   {
                       for (const KFile& lFile : mFiles)
                       {
                           qexsdk::KFileInfo lInfo;
                           if (qexsdk::KGetFileInfo(PathOf(lFile), lInfo))
                           {
                               mIdentities.emplace(lInfo.mDevice, lInfo.mIndex);
                           }
                       }
                   });
    return mIdentities.count({pFile.mDevice, pFile.mIndex}) > 0;
}

std::string KCollection::OutputOf(const KFile& pFile) const
{
    const std::string lName = mFolders[pFile.mFolder].empty() ? NameOfGiven(pFile.mName) : pFile.mName;
    const std::string lSuffix = pFile.mSuffix > 0 ? "-" + std::to_string(pFile.mSuffix) : "";
    return lName.substr(0, lName.size() - qexsdk::KPathExtension(lName).size()) + lSuffix;
}

std::string KCollection::RecordOf(const KFile& pFile) const
{
    return OutputOf(pFile) + qexsdk::KPathExtension(pFile.mName);
}

void KCollection::Finish(bool pHasSuffixes)
{
    const auto lByPath = [this](const KFile& pOne, const KFile& pOther)
    {
        const int lOrder = pOne.mFolder == pOther.mFolder ? pOne.mName.compare(pOther.mName) : PathOf(pOne).compare(PathOf(pOther));
        return lOrder != 0 ? lOrder < 0 : pOne.mFolder < pOther.mFolder;
    };
    const auto lIsSame = [this](const KFile& pOne, const KFile& pOther)
    {
        return pOne.mFolder == pOther.mFolder ? pOne.mName == pOther.mName : PathOf(pOne) == PathOf(pOther);
    };
    const auto lByName = [](const KFile& pOne, const KFile& pOther)
    {
        return pOne.mName != pOther.mName ? pOne.mName < pOther.mName : pOne.mFolder < pOther.mFolder;
    };
    std::sort(mFiles.begin(), mFiles.end(), lByPath);
    mFiles.erase(std::unique(mFiles.begin(), mFiles.end(), lIsSame), mFiles.end());
    std::sort(mFiles.begin(), mFiles.end(), lByName);
    FindCollisions(pHasSuffixes);
}

/// File systems may ignore case, so names that differ only in it are the same.
void KCollection::FindCollisions(bool pHasSuffixes)
{
    std::vector<std::pair<std::string, uint32_t>> lOutputs;
    for (const KFile& lFile : mFiles)
    {
        lOutputs.emplace_back(qexsdk::KToLower(OutputOf(lFile)), static_cast<uint32_t>(lOutputs.size()));
    }
    std::sort(lOutputs.begin(), lOutputs.end());
    std::unordered_set<std::string> lTaken;
    for (size_t i = 0; pHasSuffixes && i < lOutputs.size(); ++i)
    {
        lTaken.insert(lOutputs[i].first);
    }
    uint32_t lNumber = 1;
    for (size_t i = 1; i < lOutputs.size(); ++i)
    {
        KFile&     lFile = mFiles[lOutputs[i].second];
        const bool lIsSame = lOutputs[i].first == lOutputs[i - 1].first;
        lNumber = lIsSame ? lNumber : 1;
        if (lIsSame && pHasSuffixes)
        {
            while (!lTaken.insert(lOutputs[i].first + "-" + std::to_string(++lNumber)).second)
            {
            }
            lFile.mSuffix = lNumber;
        }
        else if (lIsSame)
        {
            lFile.mHasCollision = true;
            mFiles[lOutputs[i - 1].second].mHasCollision = true;
        }
    }
}

bool ReadList(const std::string& pPath, bool pIsNull, std::vector<std::string>& pInputs, KConsole& pConsole)
{
    std::string lBytes;
    std::string lReason;
    if (!qexsdk::KReadWholeFile(pPath.c_str(), std::numeric_limits<size_t>::max() / 2, false, lBytes, lReason))
    {
        pConsole.Message(eERROR, pPath == "-" ? "standard input" : pPath, 0, "cannot be read: " + lReason);
        pConsole.Raise(eEXIT_SYSTEM);
        return false;
    }
    const char lSeparator = pIsNull ? '\0' : '\n';
    for (size_t lStart = 0; lStart < lBytes.size();)
    {
        const size_t lEnd = std::min(lBytes.find(lSeparator, lStart), lBytes.size());
        std::string  lPath = lBytes.substr(lStart, lEnd - lStart);
        if (!pIsNull && !lPath.empty() && lPath.back() == '\r')
        {
            lPath.pop_back();
        }
        if (!lPath.empty())
        {
            pInputs.push_back(std::move(lPath));
        }
        lStart = lEnd + 1;
    }
    return true;
}

} // namespace asfapp

#include <qexioplugins/acclaim/exchange/kqexasfnaming.h>

#include <kbaselib/kbase/kletters.h>
#include <qexioplugins/acclaim/model/kqexasfconstants.h>
#include <qexioplugins/motion/kqexsafenames.h>

#include <cstdio>
#include <cstring>

namespace qexsdk
{

namespace
{

/// Makes a name that is a single token and not a keyword.
std::string ValidName(const std::string& pName, const char* pIfEmpty)
{
    std::string lName =
        MakeSafeName(pName, pIfEmpty,
                     [](char pC) { return static_cast<unsigned char>(pC) > ' ' && pC != '\x7f' && std::strchr(",()#", pC) == nullptr; });
    if (lName.front() == ':')
    {
        lName.front() = '_';
    }
    if (KEqualsIgnoreCase(lName, "begin") || KEqualsIgnoreCase(lName, "end"))
    {
        lName += '_';
    }
    return lName;
}

/// One naming of a skeleton's bones.
class KNaming
{
public:
    KNaming(bool pKeepPrefixes, std::vector<std::string>& pWarnings) : mKeepPrefixes(pKeepPrefixes), mWarnings(pWarnings)
    {
        mNames.Make(kRootName);
    }

    /// The name that a bone should have: that of \p pNode, its prefix included if there is room for it.
    std::string WantedName(const KQexNode* pNode)
    {
        const std::string lWhole = pNode->GetName();
        const std::string lBare = BareName(pNode);
        if (!mKeepPrefixes || lWhole.size() == lBare.size())
        {
            return lBare;
        }
        if (lWhole.front() != ':' && lWhole.size() <= kMaxName)
        {
            return lWhole;
        }
        mLostPrefixes += (mLostPrefixes.empty() ? "" : ", ") + lWhole;
        return lBare;
    }

    void Rename(HKQexAsfNode pBone, const std::string& pWanted)
    {
        const std::string lName = mNames.Make(ValidName(pWanted, "bone"));
        if (lName != pWanted)
        {
            mWarnings.push_back("Bone renamed (" + lName + "), from (" + pWanted + ")");
        }
        std::snprintf(pBone->mName, sizeof pBone->mName, "%s", lName.c_str());
    }

    void WarnOfLostPrefixes()
    {
        if (!mLostPrefixes.empty())
        {
            mWarnings.push_back("Prefixes left out of names that are too long with them, or begin with a colon (" + mLostPrefixes + ")");
        }
    }

private:
    bool                      mKeepPrefixes;
    std::vector<std::string>& mWarnings;
    KQexUniqueNames           mNames{kMaxName};
    std::string               mLostPrefixes;
};

} // namespace

void NameBones(const std::vector<KQexAsfOrigin>& pOrigins, bool pKeepPrefixes, std::vector<std::string>& pWarnings)
{
    KNaming lNaming(pKeepPrefixes, pWarnings);
    // Original names win over generated ones.
    for (size_t i = 1; i < pOrigins.size(); ++i)
    {
        if (pOrigins[i].mNode != nullptr)
        {
            lNaming.Rename(pOrigins[i].mBone, lNaming.WantedName(pOrigins[i].mNode));
        }
    }
    for (size_t i = 1; i < pOrigins.size(); ++i)
    {
        const KQexAsfOrigin& lOrigin = pOrigins[i];
        if (lOrigin.mNode != nullptr)
        {
            continue;
        }
        const bool  lHasBone = lOrigin.mBone->mChildBuf.GetCount() > 0;
        std::string lWanted = lHasBone ? lOrigin.mBone->mChildBuf[0]->mName : std::string();
        if (!lHasBone && lOrigin.mEnd != nullptr)
        {
            lWanted = lNaming.WantedName(lOrigin.mEnd);
        }
        lNaming.Rename(lOrigin.mBone, lWanted + kDummySuffix);
    }
    lNaming.WarnOfLostPrefixes();
}

void NameSkeleton(KQexAsfScene& pScene, const std::string& pWanted, std::vector<std::string>& pWarnings)
{
    const std::string lName = ValidName(pWanted, "ASF").substr(0, kMaxName);
    if (lName != pWanted)
    {
        pWarnings.push_back("Skeleton renamed (" + lName + "), from (" + pWanted + ")");
    }
    std::snprintf(pScene.mName, sizeof pScene.mName, "%s", lName.c_str());
}

} // namespace qexsdk

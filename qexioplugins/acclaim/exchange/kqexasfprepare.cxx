#include <qexioplugins/acclaim/exchange/kqexasfprepare.h>

#include <kbaselib/kbase/kletters.h>
#include <kbaselib/kmath/kdofcodes.h>
#include <qexioplugins/acclaim/model/kqexasfconstants.h>
#include <qexioplugins/acclaim/model/kqexasfround.h>
#include <qexioplugins/acclaim/model/kqexasfwalk.h>
#include <qexioplugins/motion/kqexrestpose.h>
#include <qexioplugins/motion/kqexsafenames.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <new>

namespace qexsdk
{

namespace
{

constexpr const char* kDummy = "Dummy";

bool EndsIn(const std::string& pText, const std::string& pEnd)
{
    return pText.size() > pEnd.size() && pText.compare(pText.size() - pEnd.size(), pEnd.size(), pEnd) == 0;
}

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

std::string BareName(const KQexNode* pNode)
{
    return pNode->GetBareName();
}

bool IsMoved(const KQexNode* pNode, const KQexAnimLayer* pLayer)
{
    return DiffersFromRest(pNode->mLocalTranslation, pLayer) || DiffersFromRest(pNode->mLocalRotation, pLayer);
}

void CopyName(KQexAsfNode& pBone, const std::string& pName)
{
    std::snprintf(pBone.mName, sizeof pBone.mName, "%s", pName.c_str());
}

/// Two rotation DOFs that suffice in one rest pose do not in another: relative to that, their rotations need a third.
void AddThirdRotation(KQexAsfNode& pBone)
{
    bool lHas[eDOF_COUNT] = {};
    for (int i = 0; i < pBone.mOrderCount; ++i)
    {
        lHas[pBone.mOrderBuf[i]] = true;
    }
    if (lHas[eDOF_RZ] + lHas[eDOF_RY] + lHas[eDOF_RX] == 2 && pBone.mOrderCount < kMaxDofs)
    {
        pBone.mOrderBuf[pBone.mOrderCount++] = !lHas[eDOF_RZ] ? eDOF_RZ : !lHas[eDOF_RY] ? eDOF_RY : eDOF_RX;
    }
}

} // namespace

KQexAsfPreparation::KQexAsfPreparation(KQexAsfScene* pScene, KQexNode* pRoot, const KQexAnimLayer* pLayer,
                                       const KQexExportAcclaimOptions& pOptions, bool pHasTranslations)
    : mScene(pScene), mRoot(pRoot), mLayer(pLayer), mOptions(pOptions), mHasTranslations(pHasTranslations)
{
}

/// Pairs bones with nodes. Extraction keeps the order of children and the clean-up only removes some, so a bone's node is the next
/// sibling with its name.
void KQexAsfPreparation::FindOrigins()
{
    struct KPathBone
    {
        KQexNode* mNode;
        KQexNode* mNext; ///< Child of mNode at which the search for the next bone starts.
    };
    std::vector<KPathBone> lPath;
    KQexAsfWalk            lWalk(mScene->mRoot);
    while (HKQexAsfNode lBone = lWalk.Next())
    {
        if (!lWalk.IsEntering())
        {
            lPath.pop_back();
            continue;
        }
        if (lPath.empty())
        {
            mOrigins.push_back(KQexAsfOrigin{lBone, mRoot});
            lPath.push_back(KPathBone{mRoot, mRoot->GetFirstChild()});
            continue;
        }
        if (lBone->mOrderCount == 0)
        {
            // A dummy has no node: its child's node is searched among the same siblings.
            mOrigins.push_back(KQexAsfOrigin{lBone, nullptr});
            lPath.push_back(lPath.back());
            continue;
        }
        KPathBone& lParent = lPath.back();
        while (lParent.mNext != nullptr && BareName(lParent.mNext).compare(0, sizeof lBone->mName - 1, lBone->mName) != 0)
        {
            lParent.mNext = lParent.mNext->GetNextSibling();
        }
        KQexNode* lNode = lParent.mNext;
        mOrigins.push_back(KQexAsfOrigin{lBone, lNode});
        if (lNode != nullptr)
        {
            lParent.mNext = lNode->GetNextSibling();
        }
        lPath.push_back(KPathBone{lNode, lNode != nullptr ? lNode->GetFirstChild() : nullptr});
    }
}

/// End nodes became the length of their parents' bones; any other removed leaf is a loss.
void KQexAsfPreparation::WarnDroppedLeaves()
{
    std::unordered_map<const KQexNode*, bool> lKept;
    for (const KQexAsfOrigin& lOrigin : mOrigins)
    {
        lKept[lOrigin.mNode] = true;
    }
    std::string lDropped;
    for (const KQexNode* lNode = mRoot; lNode != nullptr; lNode = lNode->GetNextInTree(mRoot))
    {
        if (lKept.count(lNode) == 0 && BareName(lNode) != BareName(lNode->GetParent()) + "_End")
        {
            lDropped += (lDropped.empty() ? "" : ", ") + std::string(lNode->GetName());
        }
    }
    if (!lDropped.empty())
    {
        mWarnings.push_back("Leaf joints without length left out (" + lDropped + ")");
    }
}

void KQexAsfPreparation::RenameBone(HKQexAsfNode pBone, const std::string& pName)
{
    if (pName != pBone->mName)
    {
        mWarnings.push_back("Bone renamed (" + pName + "), from (" + pBone->mName + ")");
        CopyName(*pBone, pName);
    }
}

/// Original names win over generated ones.
void KQexAsfPreparation::MakeNamesValid()
{
    KQexUniqueNames lNames(kMaxName);
    lNames.Make(kRootName);
    for (const bool lIsGenerated : {false, true})
    {
        for (size_t i = 1; i < mOrigins.size(); ++i)
        {
            if ((mOrigins[i].mNode == nullptr) == lIsGenerated)
            {
                RenameBone(mOrigins[i].mBone, lNames.Make(ValidName(mOrigins[i].mBone->mName, "bone")));
            }
        }
    }
    const std::string lWanted = mOptions.mSkeletonName.empty() ? mScene->mName : mOptions.mSkeletonName;
    const std::string lName = ValidName(lWanted, "ASF").substr(0, kMaxName);
    if (lName != lWanted)
    {
        mWarnings.push_back("Skeleton renamed (" + lName + "), from (" + lWanted + ")");
    }
    std::snprintf(mScene->mName, sizeof mScene->mName, "%s", lName.c_str());
}

/// The root of a file has no length: an offset that all its children share becomes a bone between them.
bool KQexAsfPreparation::AddSharedOffset()
{
    HKQexAsfNode lRoot = mScene->mRoot;
    const int    lCount = lRoot->mChildBuf.GetCount();
    if (!(lRoot->mLength > 0.0) || lCount == 0)
    {
        return true;
    }
    HKQexAsfNode lOffsetBone = QexSdkNew<KQexAsfNode>();
    if (lOffsetBone == nullptr)
    {
        return false;
    }
    CopyName(*lOffsetBone, lRoot->mChildBuf[0]->mName + std::string(kDummy));
    KgeSet(lOffsetBone->mDirectionV, lRoot->mDirectionV);
    lOffsetBone->mLength = lRoot->mLength;
    lRoot->mLength = 0.0;
    for (int i = 0; i < lCount; ++i)
    {
        if (!lOffsetBone->AddChild(lRoot->mChildBuf[i]))
        {
            // The root still owns the bones.
            lOffsetBone->mChildBuf.Clear();
            QexSdkDelete(lOffsetBone);
            return false;
        }
    }
    lRoot->mChildBuf.Clear();
    if (!lRoot->AddChild(lOffsetBone))
    {
        QexSdkDelete(lOffsetBone);
        return false;
    }
    mOrigins.insert(mOrigins.begin() + 1, KQexAsfOrigin{lOffsetBone, nullptr});
    return true;
}

/// Whether the node came from a dummy of an earlier export: it has the name of one and is not animated.
bool KQexAsfPreparation::IsDummy(const KQexAsfOrigin& pOrigin) const
{
    const std::string lName = BareName(pOrigin.mNode);
    if (!EndsIn(lName, kDummy) || IsMoved(pOrigin.mNode, mLayer))
    {
        return false;
    }
    for (const KQexNode* lChild = pOrigin.mNode->GetFirstChild(); lChild != nullptr; lChild = lChild->GetNextSibling())
    {
        if (BareName(lChild) + kDummy == lName || BareName(lChild) == lName + "_End")
        {
            return true;
        }
    }
    return false;
}

/// Extraction without translations stores the rotation limits (z, y, x) in the rows of the translations.
void KQexAsfPreparation::MoveLimits(KQexAsfNode& pBone) const
{
    if (mHasTranslations)
    {
        return;
    }
    for (int lRow = 0; lRow < 3; ++lRow)
    {
        for (int lBound = 0; lBound < 2; ++lBound)
        {
            pBone.mLimitsBuf[lRow + 3][lBound] = pBone.mLimitsBuf[lRow][lBound];
            pBone.mLimitsActive[lRow + 3][lBound] = pBone.mLimitsActive[lRow][lBound];
            pBone.mLimitsBuf[lRow][lBound] = 0.0;
            pBone.mLimitsActive[lRow][lBound] = false;
        }
    }
}

void KQexAsfPreparation::SetKnownDofs(KQexAsfNode& pBone, const std::vector<KQexBoneDof>& pDofs) const
{
    pBone.mOrderCount = 0;
    std::memset(pBone.mLimitsActive, 0, sizeof pBone.mLimitsActive);
    for (const KQexBoneDof& lDof : pDofs)
    {
        const int lCode = KDofCodeOf(lDof.mWord);
        if (lCode < 0 || pBone.mOrderCount == kMaxDofs)
        {
            continue;
        }
        const double lFactor = KIsTranslationDof(lCode) ? mOptions.mLengthUnit / kCentimetresPerInch : 1.0;
        pBone.mOrderBuf[pBone.mOrderCount++] = lCode;
        pBone.mLimitsActive[lCode][0] = lDof.mHasMin;
        pBone.mLimitsActive[lCode][1] = lDof.mHasMax;
        pBone.mLimitsBuf[lCode][0] = lDof.mMin * lFactor;
        pBone.mLimitsBuf[lCode][1] = lDof.mMax * lFactor;
    }
}

void KQexAsfPreparation::SetDofs(const KQexAsfOrigin& pOrigin)
{
    KQexAsfNode& lBone = *pOrigin.mBone;
    if (pOrigin.mNode == nullptr || lBone.mParent == nullptr)
    {
        return;
    }
    const bool lIsTranslated =
        mOptions.mTranslations == eTRANSLATION_DOFS_ALL ||
        (mOptions.mTranslations == eTRANSLATION_DOFS_MOVING && DiffersFromRest(pOrigin.mNode->mLocalTranslation, mLayer));
    MoveLimits(lBone);
    if (!lIsTranslated && mHasTranslations)
    {
        std::copy(lBone.mOrderBuf + 3, lBone.mOrderBuf + 6, lBone.mOrderBuf);
        lBone.mOrderCount = 3;
    }
    if (mOptions.mBoneDofs != nullptr)
    {
        const auto lFound = mOptions.mBoneDofs->find(BareName(pOrigin.mNode));
        if (lFound != mOptions.mBoneDofs->end() && !(lFound->second.empty() && IsMoved(pOrigin.mNode, mLayer)))
        {
            SetKnownDofs(lBone, lFound->second);
            if (mOptions.mBasePoseFirstFrame)
            {
                AddThirdRotation(lBone);
            }
            return;
        }
    }
    if (IsDummy(pOrigin))
    {
        lBone.mOrderCount = 0;
    }
}

/// Extraction gives lengths in the unit 1.0.
void KQexAsfPreparation::SetUnit(KQexAsfNode& pBone) const
{
    pBone.mLength *= mOptions.mLengthUnit;
}

bool KQexAsfPreparation::Run()
{
    try
    {
        FindOrigins();
        WarnDroppedLeaves();
        if (mOptions.mAdaptForFile)
        {
            std::for_each(mOrigins.begin(), mOrigins.end(), [this](const KQexAsfOrigin& pOrigin) { SetDofs(pOrigin); });
            if (!AddSharedOffset())
            {
                return false;
            }
        }
        MakeNamesValid();
    }
    catch (const std::bad_alloc&)
    {
        return false;
    }
    mScene->mLengthUnit = mOptions.mLengthUnit;
    for (const KQexAsfOrigin& lOrigin : mOrigins)
    {
        SetUnit(*lOrigin.mBone);
        if (mOptions.mAdaptForFile && lOrigin.mBone != mScene->mRoot)
        {
            RoundBone(*lOrigin.mBone, mScene->mLengthUnit);
        }
    }
    return true;
}

} // namespace qexsdk

#include <qexioplugins/acclaim/exchange/kqexasfprepare.h>

#include <kbaselib/kmath/kdofcodes.h>
#include <qexioplugins/acclaim/exchange/kqexasfends.h>
#include <qexioplugins/acclaim/exchange/kqexasfnaming.h>
#include <qexioplugins/acclaim/exchange/kqexasfuneven.h>
#include <qexioplugins/acclaim/model/kqexasfconstants.h>
#include <qexioplugins/acclaim/model/kqexasfround.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <new>

namespace qexsdk
{

namespace
{

bool EndsIn(const std::string& pText, const std::string& pEnd)
{
    return pText.size() > pEnd.size() && pText.compare(pText.size() - pEnd.size(), pEnd.size(), pEnd) == 0;
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

KQexAsfPreparation::KQexAsfPreparation(KQexAsfScene* pScene, KQexNode* pRoot, const KQexMovingJoints& pMoving,
                                       const KQexExportAcclaimOptions& pOptions, bool pHasTranslations,
                                       const std::unordered_set<const KQexNode*>& pLeaves)
    : mScene(pScene), mRoot(pRoot), mMoving(pMoving), mOptions(pOptions), mHasTranslations(pHasTranslations), mLeaves(pLeaves)
{
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
    std::snprintf(lOffsetBone->mName, sizeof lOffsetBone->mName, "%.*s%s", kMaxName, lRoot->mChildBuf[0]->mName, kDummySuffix);
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
    mOrigins.insert(mOrigins.begin() + 1, KQexAsfOrigin{lOffsetBone, nullptr, mOrigins.front().mEnd});
    mOrigins.front().mEnd = nullptr;
    return true;
}

/// Whether the node came from a dummy of an earlier export: it has the name of one and is not animated.
bool KQexAsfPreparation::IsDummy(const KQexAsfOrigin& pOrigin) const
{
    const std::string lName = BareName(pOrigin.mNode);
    if (!EndsIn(lName, kDummySuffix) || mMoving.Moves(pOrigin.mNode))
    {
        return false;
    }
    for (const KQexNode* lChild = pOrigin.mNode->GetFirstChild(); lChild != nullptr; lChild = lChild->GetNextSibling())
    {
        if (BareName(lChild) + kDummySuffix == lName || BareName(lChild) == lName + kEndSuffix)
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
    const bool lIsTranslated = mOptions.mTranslations == eTRANSLATION_DOFS_ALL ||
                               (mOptions.mTranslations == eTRANSLATION_DOFS_MOVING && mMoving.Translates(pOrigin.mNode));
    MoveLimits(lBone);
    if (!lIsTranslated && mHasTranslations)
    {
        std::copy(lBone.mOrderBuf + 3, lBone.mOrderBuf + 6, lBone.mOrderBuf);
        lBone.mOrderCount = 3;
    }
    const std::vector<KQexBoneDof>* lKnown = mOptions.mBoneDofs != nullptr ? FindBoneDofs(*mOptions.mBoneDofs, pOrigin.mNode) : nullptr;
    if (lKnown != nullptr && !(lKnown->empty() && mMoving.Moves(pOrigin.mNode)))
    {
        SetKnownDofs(lBone, *lKnown);
        if (mOptions.mBasePoseFirstFrame)
        {
            AddThirdRotation(lBone);
        }
        return;
    }
    if (IsDummy(pOrigin))
    {
        lBone.mOrderCount = 0;
    }
}

/// Notes the leaves that got the length pLength.
void KQexAsfPreparation::NoteAddedEnds(double pLength)
{
    for (const KQexAsfOrigin& lOrigin : mOrigins)
    {
        if (mLeaves.count(lOrigin.mNode) > 0)
        {
            mAddedEnds.emplace_back(lOrigin.mBone->mName);
        }
    }
    if (!mAddedEnds.empty())
    {
        char lText[64];
        std::snprintf(lText, sizeof lText, "%.3g cm", pLength * kCentimetresPerInch / mOptions.mLengthUnit);
        const std::string lOthers = mAddedEnds.size() > 1 ? " and " + std::to_string(mAddedEnds.size() - 1) + " more" : "";
        mNotes.push_back("Leaf joints without a length get one of " + std::string(lText) + " (" + mAddedEnds.front() + lOthers + ")");
    }
}

/// End nodes became the length of their parents' bones; any other removed leaf is a loss.
void KQexAsfPreparation::WarnDroppedLeaves()
{
    std::unordered_set<const KQexNode*> lKept;
    for (const KQexAsfOrigin& lOrigin : mOrigins)
    {
        lKept.insert(lOrigin.mNode);
    }
    std::string lDropped;
    for (const KQexNode* lNode = mRoot; lNode != nullptr; lNode = lNode->GetNextInTree(mRoot))
    {
        if (lKept.count(lNode) == 0 && !IsEndOfParent(*lNode, mMoving, nullptr))
        {
            lDropped += (lDropped.empty() ? "" : ", ") + std::string(lNode->GetName());
        }
    }
    if (!lDropped.empty())
    {
        mWarnings.push_back("Leaf joints without length left out (" + lDropped + ")");
    }
}

/// Rounds the bones of mLeaves, or all others. The added ends are made from rounded bones: writing what was read changes nothing.
void KQexAsfPreparation::Round(bool pLeaves)
{
    for (const KQexAsfOrigin& lOrigin : mOrigins)
    {
        if (mOptions.mAdaptForFile && lOrigin.mBone != mScene->mRoot && (mLeaves.count(lOrigin.mNode) > 0) == pLeaves)
        {
            RoundBone(*lOrigin.mBone, mScene->mLengthUnit);
        }
    }
}

bool KQexAsfPreparation::RunSteps()
{
    mOrigins = FindAsfOrigins(mScene->mRoot, mRoot);
    if (mOptions.mAdaptForFile)
    {
        std::for_each(mOrigins.begin(), mOrigins.end(), [this](const KQexAsfOrigin& pOrigin) { SetDofs(pOrigin); });
        if (mMoving.HasUnevenScaling())
        {
            SetRestVectors(mOrigins, mRoot, mOptions.mBaseScale);
        }
        if (!AddSharedOffset())
        {
            return false;
        }
    }
    NameBones(mOrigins, mOptions.mAdaptForFile, mWarnings);
    NameSkeleton(*mScene, mOptions.mSkeletonName.empty() ? mScene->mName : mOptions.mSkeletonName, mWarnings);
    // Extraction gives lengths in the unit 1.
    mScene->mLengthUnit = mOptions.mLengthUnit;
    for (const KQexAsfOrigin& lOrigin : mOrigins)
    {
        lOrigin.mBone->mLength *= mOptions.mLengthUnit;
    }
    Round(false);
    NoteAddedEnds(SetAddedEnds(mOrigins, mLeaves));
    Round(true);
    WarnDroppedLeaves();
    return true;
}

bool KQexAsfPreparation::Run()
{
    try
    {
        return RunSteps();
    }
    catch (const std::bad_alloc&)
    {
        return false;
    }
}

} // namespace qexsdk

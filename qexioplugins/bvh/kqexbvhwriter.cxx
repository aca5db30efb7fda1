#include <qexioplugins/bvh/kqexbvhwriter.h>

#include <kbaselib/kmath/keulernearest.h>
#include <qexscene/kqexrestpose.h>

namespace qexsdk
{

KQexBvhWriter::KQexBvhWriter(KQexFileBvh& pFile, const KQexBvhWriteOptions& pOptions)
    : mFile(pFile),
      mOptions(pOptions),
      mLayer(KQexLayerOf(pOptions.mStack)),
      mCode(pOptions.mOrder <= eEULER_ZYX ? 2 * static_cast<int>(pOptions.mOrder) : 0)
{
}

/// True for a leaf that is an only child, is named after its parent with "_End" and stays at rest. Any other leaf is written as a
/// joint, because an end site has no name.
bool KQexBvhWriter::IsEndSite(const KQexNode* pNode) const
{
    const KQexNode* lParent = pNode->GetParent();
    if (pNode->GetFirstChild() != nullptr || lParent->GetChildCount(false) != 1 ||
        std::string(lParent->GetName()) + "_End" != pNode->GetName())
    {
        return false;
    }
    return !DiffersFromRest(pNode->mLocalTranslation, mLayer) && !DiffersFromRest(pNode->mLocalRotation, mLayer);
}

void KQexBvhWriter::SetRest(KQexBvhJoint& pJoint, const KQexFrame& pRest) const
{
    pRest.GetWorld(pJoint.mIndex).GetRotation(pJoint.mRestInv);
    KgeInverse(pJoint.mRestInv, pJoint.mRestInv);
    KmV(pJoint.mOffset, 0.0, 0.0, 0.0);
    if (pJoint.mParent >= 0)
    {
        const double* lPosition = pRest.GetWorld(pJoint.mIndex).mData[3].mData;
        const double* lParent = pRest.GetWorld(mJoints[static_cast<size_t>(pJoint.mParent)].mIndex).mData[3].mData;
        KmV(pJoint.mOffset, lPosition[0] - lParent[0], lPosition[1] - lParent[1], lPosition[2] - lParent[2]);
    }
}

/// Sets mHasAnimatedScaling and mHasNonUniformScaling from the node and its ancestors.
void KQexBvhWriter::SetScaling(KQexBvhJoint& pJoint) const
{
    const KQexNode* lNode = pJoint.mNode;
    if (pJoint.mParent >= 0)
    {
        const KQexBvhJoint& lParent = mJoints[static_cast<size_t>(pJoint.mParent)];
        pJoint.mHasAnimatedScaling = lParent.mHasAnimatedScaling;
        pJoint.mHasNonUniformScaling = lParent.mHasNonUniformScaling;
        AddScaling(lNode, pJoint);
        return;
    }
    for (; lNode != nullptr; lNode = lNode->GetParent())
    {
        AddScaling(lNode, pJoint);
    }
}

void KQexBvhWriter::AddScaling(const KQexNode* pNode, KQexBvhJoint& pJoint) const
{
    const auto lScaling = pNode->mLocalScaling.Get();
    pJoint.mHasAnimatedScaling = pJoint.mHasAnimatedScaling || DiffersFromRest(pNode->mLocalScaling, mLayer);
    pJoint.mHasNonUniformScaling =
        pJoint.mHasNonUniformScaling || lScaling.mData[0] != lScaling.mData[1] || lScaling.mData[1] != lScaling.mData[2];
}

/// Whether the joint's position changes in its parent's rotation frame: by its own animated translation, by an animated scaling
/// above it, or by a non-uniform scaling above its parent, whose effect changes as the parent rotates.
bool KQexBvhWriter::HasAnimatedPosition(const KQexBvhJoint& pJoint) const
{
    const KQexBvhJoint& lParent = mJoints[static_cast<size_t>(pJoint.mParent)];
    const bool          lIsNonUniform =
        lParent.mParent >= 0 ? mJoints[static_cast<size_t>(lParent.mParent)].mHasNonUniformScaling : lParent.mHasNonUniformScaling;
    return lParent.mHasAnimatedScaling || lIsNonUniform || DiffersFromRest(pJoint.mNode->mLocalTranslation, mLayer);
}

/// Adds node pNode of a frame; pJoints has the joint of each node, -1 for those without one.
void KQexBvhWriter::AddJoint(const KQexFrame& pRest, size_t pNode, std::vector<int>& pJoints)
{
    const int    lParent = pRest.GetNodes().GetParent(pNode);
    KQexBvhJoint lJoint;
    lJoint.mNode = pRest.GetNodes().GetNode(pNode);
    lJoint.mIndex = pNode;
    lJoint.mParent = lParent >= 0 ? pJoints[static_cast<size_t>(lParent)] : -1;
    lJoint.mIsEndSite = lJoint.mParent >= 0 && IsEndSite(lJoint.mNode);
    SetScaling(lJoint);
    lJoint.mHasPositions = lJoint.mParent < 0 || (!lJoint.mIsEndSite && HasAnimatedPosition(lJoint));
    SetRest(lJoint, pRest);
    pJoints[pNode] = static_cast<int>(mJoints.size());
    mJoints.push_back(lJoint);
}

/// Gives the joint a unique name that every reader reads as one word; warns when it differs from the node's.
void KQexBvhWriter::NameJoint(const KQexBvhJoint& pJoint, KQexUniqueNames& pNames)
{
    const std::string lOld = pJoint.mNode->GetName();
    const std::string lNew = pNames.Make(MakeSafeName(
        lOld, "joint", [](char pC) { return static_cast<unsigned char>(pC) > ' ' && pC != '{' && pC != '}' && pC != '\x7f'; }));
    if (lNew != lOld)
    {
        mFile.Warning("Joint renamed (%.60s), from (%.60s)\n", lNew.c_str(), lOld.c_str());
    }
    mNames.push_back(lNew);
}

void KQexBvhWriter::Prepare(const std::vector<KQexNode*>& pRoots)
{
    const KQexFrameNodes lNodes(pRoots, nullptr);
    KQexFrame            lRest(lNodes, eFRAME_WORLD);
    std::vector<int>     lJoints(lNodes.GetCount(), -1);
    KQexUniqueNames      lNames;
    lRest.Evaluate(0, KTime(0));
    for (KQexNode* lRoot : pRoots)
    {
        for (const KQexNode* lNode = lRoot; lNode != nullptr; lNode = lNode->GetNextInTree(lRoot))
        {
            AddJoint(lRest, static_cast<size_t>(lNodes.Find(lNode)), lJoints);
        }
    }
    for (const KQexBvhJoint& lJoint : mJoints)
    {
        if (lJoint.mIsEndSite)
        {
            mNames.emplace_back();
            continue;
        }
        NameJoint(lJoint, lNames);
        mValueCount += lJoint.mHasPositions ? 6 : 3;
    }
    mLast.assign(mValueCount, 0.0);
}

void KQexBvhWriter::Begin(const KQexFrameNodes& pNodes, int pThreads)
{
    for (KQexBvhJoint& lJoint : mJoints)
    {
        lJoint.mIndex = static_cast<size_t>(pNodes.Find(lJoint.mNode));
    }
    mRotations.assign(static_cast<size_t>(pThreads), KRotations(mJoints.size()));
}

/// Converts from y up to z up: a quarter turn about x.
void KQexBvhWriter::ToFileAxes(double* pVector) const
{
    if (mOptions.mZUp)
    {
        KmV(pVector, pVector[0], -pVector[2], pVector[1]);
    }
}

/// The same rotation in file axes: T R inverse(T), where T is that quarter turn.
void KQexBvhWriter::ToFileAxes(KgeRMatrix& pRotation) const
{
    if (!mOptions.mZUp)
    {
        return;
    }
    const KgeRMatrix lOld(pRotation);
    KmVset(pRotation.mData[0], lOld.mData[0]);
    KmVneg(pRotation.mData[1], lOld.mData[2]);
    KmVset(pRotation.mData[2], lOld.mData[1]);
    for (int i = 0; i < 3; ++i)
    {
        ToFileAxes(pRotation.mData[i]);
    }
}

void KQexBvhWriter::Compute(int pThread, const KQexFrame& pFrame, double* pValues) noexcept
{
    KRotations& lRotations = mRotations[static_cast<size_t>(pThread)];
    KgeRMatrix  lParentInv;
    KgeRMatrix  lLocal;
    for (size_t i = 0; i < mJoints.size(); ++i)
    {
        const KQexBvhJoint& lJoint = mJoints[i];
        if (lJoint.mIsEndSite)
        {
            continue;
        }
        const KQexMatrix& lTransform = pFrame.GetWorld(lJoint.mIndex);
        KgeRMatrix&       lRotation = lRotations[i];
        lTransform.GetRotation(lRotation);
        KgeMult(lRotation, lRotation, lJoint.mRestInv);
        const bool lIsRoot = lJoint.mParent < 0;
        if (!lIsRoot)
        {
            KgeInverse(lParentInv, lRotations[static_cast<size_t>(lJoint.mParent)]);
            KgeMult(lLocal, lParentInv, lRotation);
        }
        if (lJoint.mHasPositions)
        {
            KmVset(pValues, lTransform.mData[3].mData);
            if (!lIsRoot)
            {
                const double* lParent = pFrame.GetWorld(mJoints[static_cast<size_t>(lJoint.mParent)].mIndex).mData[3].mData;
                const double  lOffset[3] = {pValues[0] - lParent[0], pValues[1] - lParent[1], pValues[2] - lParent[2]};
                KmRV(pValues, lParentInv.mData, lOffset);
            }
            ToFileAxes(pValues);
            KmVN(pValues, pValues, mOptions.mScale);
            pValues += 3;
        }
        if (lIsRoot)
        {
            KgeSet(lLocal, lRotation);
        }
        ToFileAxes(lLocal);
        KmRtoVord(pValues, lLocal.mData, mCode);
        pValues += 3;
    }
}

/// Replaces each rotation by the equivalent Euler triple nearest to the previous frame's.
void KQexBvhWriter::MakeContinuous(double* pValues)
{
    double* lLast = mLast.data();
    for (const KQexBvhJoint& lJoint : mJoints)
    {
        if (lJoint.mIsEndSite)
        {
            continue;
        }
        const int lSkip = lJoint.mHasPositions ? 3 : 0;
        KmNearestEuler(pValues + lSkip, lLast + lSkip, mCode);
        KmVset(lLast + lSkip, pValues + lSkip);
        pValues += lSkip + 3;
        lLast += lSkip + 3;
    }
}

} // namespace qexsdk

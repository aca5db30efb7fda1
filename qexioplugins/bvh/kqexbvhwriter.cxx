#include <qexioplugins/bvh/kqexbvhwriter.h>

#include <kbaselib/kbase/kparallel.h>
#include <kbaselib/kmath/keulernearest.h>
#include <qexscene/kqexrestpose.h>

namespace qexsdk
{

KQexBvhWriter::KQexBvhWriter(KQexFileBvh& pFile, const KQexBvhWriteOptions& pOptions)
    : mFile(pFile),
      mOptions(pOptions),
      mLayer(pOptions.mStack != nullptr ? pOptions.mStack->GetMember<KQexAnimLayer>(0) : nullptr),
      mCode(pOptions.mOrder <= eEULER_ZYX ? 2 * static_cast<int>(pOptions.mOrder) : 0),
      mThreads(KThreadCount(pOptions.mThreads))
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

void KQexBvhWriter::SetRest(KQexBvhJoint& pJoint, const KQexGlobalTransforms& pRest) const
{
    pRest.GetTransform(pJoint.mPose).GetRotation(pJoint.mRestInv);
    KgeInverse(pJoint.mRestInv, pJoint.mRestInv);
    KmV(pJoint.mOffset, 0.0, 0.0, 0.0);
    if (pJoint.mParent >= 0)
    {
        const double* lPosition = pRest.GetTransform(pJoint.mPose).mData[3].mData;
        const double* lParent = pRest.GetTransform(mJoints[static_cast<size_t>(pJoint.mParent)].mPose).mData[3].mData;
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

bool KQexBvhWriter::AddTree(KQexNode* pRoot, KQexGlobalTransforms& pRest)
{
    if (!pRoot->GetScene()->GetEvaluator()->EvaluateGlobalTransforms(pRoot, KTime(0), pRest))
    {
        return false;
    }
    const size_t lFirst = mJoints.size();
    for (int i = 0; i < pRest.GetCount(); ++i)
    {
        const KQexNode* lNode = pRest.GetNode(i);
        KQexBvhJoint    lJoint;
        lJoint.mNode = lNode;
        lJoint.mPose = i;
        lJoint.mTree = static_cast<int>(mRoots.size());
        lJoint.mParent = i > 0 ? static_cast<int>(lFirst) + pRest.GetParentIndex(i) : -1;
        lJoint.mIsEndSite = i > 0 && IsEndSite(lNode);
        SetScaling(lJoint);
        lJoint.mHasPositions = i == 0 || (!lJoint.mIsEndSite && HasAnimatedPosition(lJoint));
        SetRest(lJoint, pRest);
        mJoints.push_back(lJoint);
    }
    mRoots.push_back(pRoot);
    return true;
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

bool KQexBvhWriter::Prepare(const std::vector<KQexNode*>& pRoots)
{
    KQexUniqueNames      lNames;
    KQexGlobalTransforms lRest;
    for (KQexNode* lRoot : pRoots)
    {
        if (!AddTree(lRoot, lRest))
        {
            return false;
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
    mScratch.resize(static_cast<size_t>(mThreads));
    for (KQexBvhScratch& lScratch : mScratch)
    {
        lScratch.mRotations.resize(mJoints.size());
        for (size_t i = 0; i < mRoots.size(); ++i)
        {
            lScratch.mPoses.push_back(std::make_unique<KQexGlobalTransforms>());
        }
    }
    return true;
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

bool KQexBvhWriter::Evaluate(int pThread, KTime pTime, double* pValues)
{
    KQexBvhScratch& lScratch = mScratch[static_cast<size_t>(pThread)];
    for (size_t i = 0; i < mRoots.size(); ++i)
    {
        if (!mRoots[i]->GetScene()->GetEvaluator()->EvaluateGlobalTransforms(mRoots[i], pTime, *lScratch.mPoses[i]))
        {
            return false;
        }
    }
    KgeRMatrix lParentInv;
    KgeRMatrix lLocal;
    for (size_t i = 0; i < mJoints.size(); ++i)
    {
        const KQexBvhJoint& lJoint = mJoints[i];
        if (lJoint.mIsEndSite)
        {
            continue;
        }
        const KQexGlobalTransforms& lPose = *lScratch.mPoses[static_cast<size_t>(lJoint.mTree)];
        const KQexMatrix&           lTransform = lPose.GetTransform(lJoint.mPose);
        KgeRMatrix&                 lRotation = lScratch.mRotations[i];
        lTransform.GetRotation(lRotation);
        KgeMult(lRotation, lRotation, lJoint.mRestInv);
        const bool lIsRoot = lJoint.mParent < 0;
        if (!lIsRoot)
        {
            KgeInverse(lParentInv, lScratch.mRotations[static_cast<size_t>(lJoint.mParent)]);
            KgeMult(lLocal, lParentInv, lRotation);
        }
        if (lJoint.mHasPositions)
        {
            KmVset(pValues, lTransform.mData[3].mData);
            if (!lIsRoot)
            {
                const double* lParent = lPose.GetTransform(mJoints[static_cast<size_t>(lJoint.mParent)].mPose).mData[3].mData;
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
    return true;
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

#include <qexioplugins/acclaim/amc/kqexamcframes.h>

#include <new>

namespace qexsdk
{

namespace
{

/// Whether KQexMatrix::GetRotation() found a rotation: axes that it cannot normalise are zero.
bool IsRotation(const KgeRMatrix& pMatrix)
{
    return KmVlength(pMatrix.mData[0]) > 0.5 && KmVlength(pMatrix.mData[1]) > 0.5 && KmVlength(pMatrix.mData[2]) > 0.5;
}

} // namespace

bool KQexJointFrames::Evaluate(KQexNode* pRoot, KTime pTime)
{
    if (!pRoot->GetScene()->GetEvaluator()->EvaluateGlobalTransforms(pRoot, pTime, mPose))
    {
        return false;
    }
    try
    {
        mFrames.resize(static_cast<std::size_t>(mPose.GetCount()));
    }
    catch (const std::bad_alloc&)
    {
        return false;
    }
    for (int i = 0; i < mPose.GetCount(); ++i)
    {
        KQexJointFrame& lFrame = mFrames[static_cast<std::size_t>(i)];
        mPose.GetTransform(i).GetRotation(lFrame.mRotation);
        KmVset(lFrame.mPosition, mPose.GetTransform(i).mData[3].mData);
        if (!IsRotation(lFrame.mRotation))
        {
            ContinueParent(i, pTime, lFrame.mRotation);
        }
    }
    return true;
}

void KQexJointFrames::ContinueParent(int pIndex, KTime pTime, KgeRMatrix& pRotation) const
{
    const double      lUnscaled[3] = {1.0, 1.0, 1.0};
    const KQexNode*   lNode = mPose.GetNode(pIndex);
    const KQexVector4 lAngles = lNode->EvaluateLocalRotation(pTime);
    const double      lOrigin[3] = {};
    KQexMatrix        lLocal;
    lNode->ComposeLocalTransform(lLocal, lOrigin, lAngles.mData, lUnscaled);
    lLocal.GetRotation(pRotation);
    const int lParent = mPose.GetParentIndex(pIndex);
    if (lParent >= 0)
    {
        KgeMult(pRotation, GetFrame(lParent).mRotation, pRotation);
    }
}

} // namespace qexsdk

#include <qexioplugins/acclaim/amc/kqexamcframes.h>

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

void KQexJointFrames::Set(const KQexFrame& pFrame)
{
    const size_t lCount = pFrame.GetNodes().GetCount();
    mFrames.resize(lCount);
    for (size_t i = 0; i < lCount; ++i)
    {
        pFrame.GetWorld(i).GetRotation(mFrames[i].mRotation);
        KmVset(mFrames[i].mPosition, pFrame.GetWorld(i).mData[3].mData);
        if (!IsRotation(mFrames[i].mRotation))
        {
            ContinueParent(pFrame, i);
        }
    }
}

void KQexJointFrames::ContinueParent(const KQexFrame& pFrame, size_t pIndex)
{
    const double lUnscaled[3] = {1.0, 1.0, 1.0};
    const double lOrigin[3] = {};
    KgeRMatrix&  lRotation = mFrames[pIndex].mRotation;
    const int    lParent = pFrame.GetNodes().GetParent(pIndex);
    KQexMatrix   lLocal;
    pFrame.GetNodes().GetNode(pIndex)->ComposeLocalTransform(lLocal, lOrigin, pFrame.GetAngles(pIndex), lUnscaled);
    lLocal.GetRotation(lRotation);
    if (lParent >= 0)
    {
        KgeMult(lRotation, mFrames[static_cast<size_t>(lParent)].mRotation, lRotation);
    }
}

} // namespace qexsdk

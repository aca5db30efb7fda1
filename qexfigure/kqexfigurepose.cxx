#include <qexfigure/kqexfigurepose.h>

#include <algorithm>
#include <utility>

namespace qexsdk
{

void KQexOutputSpace::Turn(double pVector[3]) const
{
    if (mZUp)
    {
        std::swap(pVector[1], pVector[2]);
        pVector[1] = 0.0 - pVector[1]; // Not -0.
    }
}

KQexFigurePose::KQexFigurePose(const std::vector<KQexFigureJoint>& pJoints, const KQexFrameNodes& pNodes, const KQexOutputSpace& pSpace,
                               unsigned int pParts)
    : mJoints(&pJoints), mSpace(pSpace), mRotations((pParts & eFRAME_ROTATIONS) != 0 ? pNodes.GetCount() : 0)
{
    for (const KQexFigureJoint& lJoint : pJoints)
    {
        mNodes.push_back(static_cast<size_t>(pNodes.Find(lJoint.mNode)));
    }
}

void KQexFigurePose::Set(const KQexFrame& pFrame)
{
    mFrame = &pFrame;
    for (size_t lNode = 0; lNode < mRotations.size(); ++lNode)
    {
        const int             lParent = pFrame.GetNodes().GetParent(lNode);
        const KQexQuaternion& lLocal = pFrame.GetRotation(lNode);
        mRotations[lNode] = lParent >= 0 ? mRotations[static_cast<size_t>(lParent)] * lLocal : lLocal;
    }
}

void KQexFigurePose::GetPosition(KQexSpace pSpace, size_t pJoint, double pResult[3]) const
{
    if (IsWorld(pSpace, pJoint))
    {
        const KQexVector4 lAt = mFrame->GetWorld(mNodes[pJoint]).GetT();
        std::copy(lAt.mData, lAt.mData + 3, pResult);
    }
    else
    {
        mFrame->GetTranslation(mNodes[pJoint], pResult);
    }
    std::transform(pResult, pResult + 3, pResult, [this](double pNumber) { return pNumber * mSpace.mPerCentimetre; });
    mSpace.Turn(pResult);
}

KQexQuaternion KQexFigurePose::GetRotation(KQexSpace pSpace, size_t pJoint) const
{
    KQexQuaternion lRotation = IsWorld(pSpace, pJoint) ? mRotations[mNodes[pJoint]] : mFrame->GetRotation(mNodes[pJoint]);
    mSpace.Turn(lRotation.mData);
    return lRotation;
}

void KQexFigurePose::GetScaling(size_t pJoint, double pResult[3]) const
{
    const double* lScaling = mFrame->GetScaling(mNodes[pJoint]);
    std::copy(lScaling, lScaling + 3, pResult);
    if (mSpace.mZUp)
    {
        std::swap(pResult[1], pResult[2]);
    }
}

} // namespace qexsdk

#include <qexioplugins/acclaim/amc/kqexamcrest.h>

#include <qexioplugins/acclaim/amc/kqexdofsolver.h>

#include <algorithm>
#include <cmath>
#include <unordered_map>

namespace qexsdk
{

namespace
{

constexpr double kMismatch = 0.02;       ///< Allowed mismatch of a link, as a fraction of its length ...
constexpr double kShortMismatch = 0.001; ///< ... and, as files round short bones, of the longest one's.
constexpr double kLeastSine = 0.05;      ///< Between two links that define a rotation.

/// An orthonormal basis whose x is along \p pX and whose z is perpendicular to both. False when they are nearly parallel.
bool MakeBasis(const double* pX, const double* pY, KgeRMatrix& pBasis)
{
    double(&lAxes)[4][4] = pBasis.mData;
    double lY[3];
    KmVnorm(lAxes[0], pX);
    KmVnorm(lY, pY);
    KmV(lAxes[2], lAxes[0][1] * lY[2] - lAxes[0][2] * lY[1], lAxes[0][2] * lY[0] - lAxes[0][0] * lY[2],
        lAxes[0][0] * lY[1] - lAxes[0][1] * lY[0]);
    if (!(KmVlength(lAxes[2]) > kLeastSine))
    {
        return false;
    }
    KmVnorm(lAxes[2], lAxes[2]);
    KmV(lAxes[1], lAxes[2][1] * lAxes[0][2] - lAxes[2][2] * lAxes[0][1], lAxes[2][2] * lAxes[0][0] - lAxes[2][0] * lAxes[0][2],
        lAxes[2][0] * lAxes[0][1] - lAxes[2][1] * lAxes[0][0]);
    return true;
}

double Distance(const double* pA, const double* pB)
{
    const double lDifference[3] = {pA[0] - pB[0], pA[1] - pB[1], pA[2] - pB[2]};
    return KmVlength(lDifference);
}

} // namespace

KQexAmcRest::KQexAmcRest(const std::vector<HKQexAsfNode>& pBones, const std::vector<KQexAmcJoint>& pJoints, const KQexJointFrames& pFrames,
                         double pScale)
    : mBones(pBones), mJoints(pJoints), mFrames(pFrames), mScale(pScale)
{
}

const KQexJointFrame& KQexAmcRest::GetFrame(std::size_t pJoint) const
{
    return mIsByJoint ? mOwn[pJoint] : mFrames.GetFrame(static_cast<size_t>(mJoints[pJoint].mPose));
}

/// A skeleton that was made from these nodes stands in the space of the root's node; one of another source most often in world space,
/// or turned in some other way (z up). Where its pose is another one, the axes of its bones may still be those of the nodes.
void KQexAmcRest::Align(KQexAmcRestAlignment pAlignment)
{
    const KgeRMatrix  lWorld;
    const KgeRMatrix& lRoot = mFrames.GetFrame(static_cast<size_t>(mJoints.front().mPose)).mRotation;
    mIsByJoint = false;
    KgeSet(mAlign, pAlignment == eAMC_REST_ROOT ? lRoot : lWorld);
    if (pAlignment != eAMC_REST_FIND)
    {
        return;
    }
    FindStarts();
    FindLinks();
    const bool lIsWorld = Fits(lWorld);
    const bool lIsRoot = Fits(lRoot);
    KgeRMatrix lFound;
    if (lIsWorld || lIsRoot)
    {
        const bool lBoth = lIsWorld && lIsRoot;
        KgeSet(mAlign, lBoth ? (GetAxisMismatch(lRoot) < GetAxisMismatch(lWorld) ? lRoot : lWorld) : lIsRoot ? lRoot : lWorld);
    }
    else if (FindRotation(lFound) && Fits(lFound))
    {
        KgeSet(mAlign, lFound);
    }
    else if (IsSameFigure())
    {
        mIsByJoint = true;
    }
    else if (GetMeanMismatch(lRoot) < GetMeanMismatch(lWorld))
    {
        KgeSet(mAlign, lRoot);
    }
}

void KQexAmcRest::FindStarts()
{
    std::unordered_map<const KQexAsfNode*, std::size_t> lIndexOf;
    mOwn.assign(mBones.size(), KQexJointFrame());
    for (std::size_t i = 0; i < mBones.size(); ++i)
    {
        const KQexAsfNode& lBone = *mBones[i];
        const auto         lParent = lIndexOf.find(lBone.mParent);
        KgeSet(mOwn[i].mRotation, lBone.mAxisRM);
        if (lParent != lIndexOf.end())
        {
            double lWay[3];
            KmVN(lWay, lBone.mParent->mPositionV.mData, mScale != 0.0 ? 1.0 / mScale : 0.0);
            KmVadd(mOwn[i].mPosition, mOwn[lParent->second].mPosition, lWay);
        }
        lIndexOf[mBones[i]] = i;
    }
}

void KQexAmcRest::FindLinks()
{
    for (std::size_t i = 0; i < mJoints.size(); ++i)
    {
        if (mJoints[i].mNode == nullptr || mJoints[i].mParent < 0)
        {
            continue;
        }
        KLink lLink;
        lLink.mJoint = i;
        lLink.mParent = static_cast<std::size_t>(mJoints[i].mParent);
        const double* lNode = mFrames.GetFrame(static_cast<size_t>(mJoints[i].mPose)).mPosition;
        const double* lParentNode = mFrames.GetFrame(static_cast<size_t>(mJoints[lLink.mParent].mPose)).mPosition;
        for (int k = 0; k < 3; ++k)
        {
            lLink.mInNodes[k] = (lNode[k] - lParentNode[k]) * mScale;
            lLink.mInSkeleton[k] = (mOwn[i].mPosition[k] - mOwn[lLink.mParent].mPosition[k]) * mScale;
        }
        lLink.mLength = KmVlength(lLink.mInSkeleton);
        if (lLink.mLength > 0.0 && KmVlength(lLink.mInNodes) > 0.0)
        {
            mLongest = std::max(mLongest, lLink.mLength);
            mLinks.push_back(lLink);
        }
    }
}

/// Distance between the link's directions, the skeleton's one turned by pRotation. Lengths do not matter: figures differ in size.
double KQexAmcRest::GetMismatch(const KLink& pLink, const KgeRMatrix& pRotation) const
{
    double lInSkeleton[3];
    double lInNodes[3];
    KmRV(lInSkeleton, pRotation.mData, pLink.mInSkeleton);
    KmVnorm(lInSkeleton, lInSkeleton);
    KmVnorm(lInNodes, pLink.mInNodes);
    return Distance(lInSkeleton, lInNodes);
}

bool KQexAmcRest::Fits(const KgeRMatrix& pRotation) const
{
    return std::all_of(mLinks.begin(), mLinks.end(),
                       [&](const KLink& pLink)
                       { return GetMismatch(pLink, pRotation) * pLink.mLength <= kMismatch * pLink.mLength + kShortMismatch * mLongest; });
}

double KQexAmcRest::GetMeanMismatch(const KgeRMatrix& pRotation) const
{
    double lSum = 0.0;
    for (const KLink& lLink : mLinks)
    {
        lSum += GetMismatch(lLink, pRotation);
    }
    return mLinks.empty() ? 0.0 : lSum / static_cast<double>(mLinks.size());
}

/// Sum of the angles between the bones' axes, turned by pRotation, and the nodes' frames; degrees.
double KQexAmcRest::GetAxisMismatch(const KgeRMatrix& pRotation) const
{
    double lSum = 0.0;
    for (std::size_t i = 0; i < mJoints.size(); ++i)
    {
        if (mJoints[i].mNode != nullptr)
        {
            KgeRMatrix lAxis;
            KgeMult(lAxis, pRotation, mBones[i]->mAxisRM);
            lSum += AngleBetween(lAxis, mFrames.GetFrame(static_cast<size_t>(mJoints[i].mPose)).mRotation);
        }
    }
    return lSum;
}

/// The rotation from the skeleton's longest link, and the one that is the farthest from its line, to those of the nodes.
bool KQexAmcRest::FindRotation(KgeRMatrix& pRotation) const
{
    const auto lFirst =
        std::max_element(mLinks.begin(), mLinks.end(), [](const KLink& pA, const KLink& pB) { return pA.mLength < pB.mLength; });
    if (lFirst == mLinks.end())
    {
        return false;
    }
    const auto lDistance = [&](const KLink& pLink)
    {
        double lUnit[3];
        double lAlong[3];
        KmVnorm(lUnit, lFirst->mInSkeleton);
        KmVN(lAlong, lUnit, lUnit[0] * pLink.mInSkeleton[0] + lUnit[1] * pLink.mInSkeleton[1] + lUnit[2] * pLink.mInSkeleton[2]);
        return Distance(pLink.mInSkeleton, lAlong);
    };
    const auto lSecond =
        std::max_element(mLinks.begin(), mLinks.end(), [&](const KLink& pA, const KLink& pB) { return lDistance(pA) < lDistance(pB); });
    KgeRMatrix lFrom;
    KgeRMatrix lTo;
    if (!MakeBasis(lFirst->mInSkeleton, lSecond->mInSkeleton, lFrom) || !MakeBasis(lFirst->mInNodes, lSecond->mInNodes, lTo))
    {
        return false;
    }
    KgeInverse(lFrom, lFrom);
    KgeMult(pRotation, lTo, lFrom);
    return true;
}

/// Whether three quarters of the links are the same, lengths included, in the frames of their parents: the bones' axes are then the
/// nodes' frames, whatever the poses.
bool KQexAmcRest::IsSameFigure() const
{
    std::size_t lSame = 0;
    for (const KLink& lLink : mLinks)
    {
        double     lInSkeleton[3];
        double     lInNodes[3];
        KgeRMatrix lParentInv;
        KmRV(lInSkeleton, mBones[lLink.mParent]->mAxisRMInv.mData, lLink.mInSkeleton);
        KgeInverse(lParentInv, mFrames.GetFrame(static_cast<size_t>(mJoints[lLink.mParent].mPose)).mRotation);
        KmRV(lInNodes, lParentInv.mData, lLink.mInNodes);
        lSame += Distance(lInSkeleton, lInNodes) <= kMismatch * lLink.mLength + kShortMismatch * mLongest ? 1 : 0;
    }
    return !mLinks.empty() && 4 * lSame >= 3 * mLinks.size();
}

} // namespace qexsdk

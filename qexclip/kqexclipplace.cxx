// Steps that change where a motion stands in the world.

#include <qexclip/kqexclipedit.h>
#include <qexclip/kqexclipsteps.h>

#include <kbaselib/kmath/maths.h>

#include <algorithm>
#include <cmath>

namespace qexsdk
{

namespace
{

constexpr int kY = 1;

/// A turn about the origin and then a move.
struct KPlacement
{
    KQexQuaternion mTurn;
    double         mOffset[3] = {0.0, 0.0, 0.0};

    void Apply(float* pRotation, float* pTranslation) const
    {
        double lPosition[3] = {static_cast<double>(pTranslation[0]), static_cast<double>(pTranslation[1]),
                               static_cast<double>(pTranslation[2])};
        mTurn.Rotate(lPosition, lPosition);
        for (int i = 0; i < 3; ++i)
        {
            pTranslation[i] = static_cast<float>(lPosition[i] + mOffset[i]);
        }
        KFromQuaternion(mTurn * KToQuaternion(pRotation), pRotation);
    }
};

/// The turn about the vertical in \p pTurn, when it is split into one about a horizontal axis and then one about the vertical.
KQexQuaternion TurnAboutVertical(const KQexQuaternion& pTurn)
{
    KQexQuaternion lTwist{{0.0, pTurn.mData[1], 0.0, pTurn.mData[3]}};
    lTwist.Normalize(); // Upside down it is undefined, and none.
    return lTwist;
}

/// Places every root of \p pData in each frame by pPlacementAt(frame).
template <typename TPlacement>
void PlaceRoots(KQexClipData& pData, const TPlacement& pPlacementAt)
{
    std::vector<char> lIsMoving = KRoots(pData);
    KDropDofs(pData, lIsMoving);
    for (const int lJoint : pData.mMovingJoints)
    {
        lIsMoving[static_cast<size_t>(lJoint)] = 1;
    }
    KSetMoving(pData, lIsMoving);
    for (long long lFrame = 0; lFrame < pData.mSampling.mCount; ++lFrame)
    {
        const KPlacement lPlacement = pPlacementAt(lFrame);
        const size_t     lRow = static_cast<size_t>(lFrame);
        for (size_t i = 0; i < pData.mMovingJoints.size(); ++i)
        {
            const size_t lJoint = static_cast<size_t>(pData.mMovingJoints[i]);
            if (pData.mParents[lJoint] < 0)
            {
                lPlacement.Apply(&pData.mRotations[(lRow * pData.mNames.size() + lJoint) * 4],
                                 &pData.mTranslations[(lRow * pData.mMovingJoints.size() + i) * 3]);
            }
        }
    }
}

/// The rotation and the position of the first root in frame \p pFrame.
void GetRoot(const KQexClip& pClip, long long pFrame, KQexQuaternion& pRotation, double pPosition[3])
{
    KQexPose lPose(static_cast<size_t>(pClip.GetJointCount()));
    pClip.SampleFrame(pFrame, lPose);
    pRotation = KToQuaternion(lPose[0].mRotation);
    for (int i = 0; i < 3; ++i)
    {
        pPosition[i] = static_cast<double>(lPose[0].mTranslation[i]);
    }
}

/// What brings the first root above the origin and lets it face along +z in the first frame.
KPlacement PlacementAtOrigin(const KQexClip& pClip)
{
    KQexQuaternion lRotation;
    KPlacement     lPlacement;
    double         lPosition[3];
    double         lForward[3] = {0.0, 0.0, 1.0};
    GetRoot(pClip, 0, lRotation, lPosition);
    (lRotation * KToQuaternion(pClip.GetData().mRest[0].mRotation).Inverse()).Rotate(lForward, lForward);
    lPlacement.mTurn = KQexQuaternion::About(kY, -kAtand<double>(lForward[0], lForward[2]));
    lPlacement.mTurn.Rotate(lPosition, lPosition);
    lPlacement.mOffset[0] = -lPosition[0];
    lPlacement.mOffset[2] = -lPosition[2];
    return lPlacement;
}

} // namespace

bool KQexClipTransform(const KQexClip& pClip, const KQexQuaternion& pTurn, const double pOffset[3], KQexClip& pResult)
{
    KPlacement lPlacement;
    lPlacement.mTurn = pTurn;
    if (pClip.GetJointCount() == 0 || !lPlacement.mTurn.Normalize())
    {
        return false;
    }
    std::copy(pOffset, pOffset + 3, lPlacement.mOffset);
    return KMakeClip(pClip, pResult,
                     [&lPlacement](KQexClipData& pData)
                     {
                         PlaceRoots(pData, [&lPlacement](long long) { return lPlacement; });
                         for (size_t lJoint = 0; lJoint < pData.mRest.size(); ++lJoint)
                         {
                             if (pData.mParents[lJoint] < 0)
                             {
                                 lPlacement.Apply(pData.mRest[lJoint].mRotation, pData.mRest[lJoint].mTranslation);
                             }
                         }
                         return true;
                     });
}

bool KQexClipInPlace(const KQexClip& pClip, bool pKeepTurn, KQexClip& pResult)
{
    if (pClip.GetJointCount() == 0)
    {
        return false;
    }
    return KMakeClip(pClip, pResult,
                     [&pClip, pKeepTurn](KQexClipData& pData)
                     {
                         KQexQuaternion lFirst;
                         double         lStart[3];
                         GetRoot(pClip, 0, lFirst, lStart);
                         const auto lPlacementAt = [&](long long pFrame)
                         {
                             KPlacement     lPlacement;
                             KQexQuaternion lRotation;
                             double         lPosition[3];
                             GetRoot(pClip, pFrame, lRotation, lPosition);
                             lPlacement.mTurn = pKeepTurn ? KQexQuaternion() : TurnAboutVertical(lRotation * lFirst.Inverse()).Inverse();
                             lPlacement.mTurn.Rotate(lPosition, lPosition);
                             lPlacement.mOffset[0] = lStart[0] - lPosition[0];
                             lPlacement.mOffset[2] = lStart[2] - lPosition[2];
                             return lPlacement;
                         };
                         PlaceRoots(pData, lPlacementAt);
                         return true;
                     });
}

bool KQexClipToOrigin(const KQexClip& pClip, KQexClip& pResult)
{
    if (pClip.GetJointCount() == 0)
    {
        return false;
    }
    return KMakeClip(pClip, pResult,
                     [&pClip](KQexClipData& pData)
                     {
                         const KPlacement lPlacement = PlacementAtOrigin(pClip);
                         PlaceRoots(pData, [&lPlacement](long long) { return lPlacement; });
                         return true;
                     });
}

} // namespace qexsdk

// Some of a clip's joints.

#include <qexclip/kqexclipedit.h>
#include <qexclip/kqexclipsteps.h>
#include <qexclip/kqexclipworld.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <numeric>
#include <utility>

namespace qexsdk
{

namespace
{

/// Reduces a clip to some of its joints.
class KQexJointSelection
{
public:
    KQexJointSelection(const KQexClipData& pFrom, const std::vector<int>& pJoints)
        : mFrom(pFrom), mJoints(pJoints), mNew(pFrom.mNames.size(), -1), mNearest(pFrom.mNames.size(), -1), mRelative(pFrom.mNames.size())
    {
        for (size_t i = 0; i < pJoints.size(); ++i)
        {
            mNew[static_cast<size_t>(pJoints[i])] = static_cast<int>(i);
        }
        for (size_t lJoint = 0; lJoint < mNearest.size(); ++lJoint)
        {
            const int lParent = pFrom.mParents[lJoint];
            mNearest[lJoint] = lParent < 0 ? -1 : Stays(lParent) ? lParent : mNearest[static_cast<size_t>(lParent)];
        }
    }

    /// The transforms of the joints that stay. One pass over all joints: a chain between two of them is not walked for each.
    KQexPose Select(const KQexPose& pPose)
    {
        KQexPose lResult;
        lResult.reserve(mJoints.size());
        for (size_t lJoint = 0; lJoint < pPose.size(); ++lJoint)
        {
            const int lParent = mFrom.mParents[lJoint];
            if (lParent < 0 || Stays(lParent))
            {
                mRelative[lJoint] = KGetWorldJoint(pPose[lJoint], nullptr);
                if (Stays(static_cast<int>(lJoint)))
                {
                    lResult.push_back(pPose[lJoint]);
                }
                continue;
            }
            mRelative[lJoint] = KGetWorldJoint(pPose[lJoint], &mRelative[static_cast<size_t>(lParent)]);
            if (Stays(static_cast<int>(lJoint)))
            {
                lResult.push_back(ToTransform(mRelative[lJoint]));
            }
        }
        return lResult;
    }

    void SelectJoints(KQexClipData& pData)
    {
        std::vector<char> lIsDropped(mNew.size(), 1);
        pData.mNames.clear();
        pData.mParents.clear();
        pData.mIsEnd.clear();
        for (const int lJoint : mJoints)
        {
            const size_t lIndex = static_cast<size_t>(lJoint);
            const int    lParent = mNearest[lIndex];
            lIsDropped[lIndex] = static_cast<char>(lParent != mFrom.mParents[lIndex]);
            pData.mNames.push_back(mFrom.mNames[lIndex]);
            pData.mParents.push_back(lParent < 0 ? -1 : mNew[static_cast<size_t>(lParent)]);
            pData.mIsEnd.push_back(mFrom.mIsEnd.empty() ? '\0' : mFrom.mIsEnd[lIndex]);
        }
        KDropDofs(pData, lIsDropped);
        for (KQexClipDof& lDof : pData.mDofs)
        {
            lDof.mJoint = mNew[static_cast<size_t>(lDof.mJoint)];
        }
        pData.mRest = Select(mFrom.mRest);
    }

private:
    bool Stays(int pJoint) const { return mNew[static_cast<size_t>(pJoint)] >= 0; }

    /// The scaling is what is left along the joint's own axes.
    static KQexJointTransform ToTransform(const KWorldJoint& pJoint)
    {
        KQexJointTransform lResult;
        double             lImages[3][4];
        KFromQuaternion(pJoint.mRotation, lResult.mRotation);
        pJoint.mRotation.ToAxes(lImages);
        for (int i = 0; i < 3; ++i)
        {
            lResult.mTranslation[i] = static_cast<float>(pJoint.mPosition[i]);
            lResult.mScaling[i] = static_cast<float>(lImages[i][0] * pJoint.mImages[i][0] + lImages[i][1] * pJoint.mImages[i][1] +
                                                     lImages[i][2] * pJoint.mImages[i][2]);
        }
        return lResult;
    }

    const KQexClipData&      mFrom;
    const std::vector<int>&  mJoints;
    std::vector<int>         mNew;      ///< Index among the selected joints, -1 for the others.
    std::vector<int>         mNearest;  ///< Nearest ancestor that stays, -1 for none.
    std::vector<KWorldJoint> mRelative; ///< Relative to the nearest ancestor that stays.
};

bool IsAscending(const std::vector<int>& pJoints, int pCount)
{
    return !pJoints.empty() && pJoints.front() >= 0 && pJoints.back() < pCount &&
           std::adjacent_find(pJoints.begin(), pJoints.end(), std::greater_equal<int>()) == pJoints.end();
}

/// Whether the numbers of each joint, three for each in every frame, ever differ from those at rest by more than \p pTolerance and
/// rounding.
std::vector<char> FindChanging(const KQexClipData& pData, const std::vector<float>& pValues, float (KQexJointTransform::*pRest)[3],
                               float pTolerance)
{
    std::vector<char> lIsChanging(pData.mNames.size(), 0);
    for (size_t i = 0; i < pValues.size(); ++i)
    {
        const size_t lJoint = i / 3 % lIsChanging.size();
        const float  lRest = (pData.mRest[lJoint].*pRest)[i % 3];
        if (std::fabs(pValues[i] - lRest) > pTolerance + 1e-6F * std::fabs(lRest))
        {
            lIsChanging[lJoint] = 1;
        }
    }
    return lIsChanging;
}

} // namespace

bool KQexClipSelect(const KQexClip& pClip, const std::vector<int>& pJoints, KQexClip& pResult)
{
    if (!IsAscending(pJoints, pClip.GetJointCount()))
    {
        return false;
    }
    return KMakeClip(pClip, pResult,
                     [&pClip, &pJoints](KQexClipData& pData)
                     {
                         KQexJointSelection lSelection(pClip.GetData(), pJoints);
                         lSelection.SelectJoints(pData);
                         std::vector<float> lDofValues = std::move(pData.mDofValues);
                         KClearFrames(pData);
                         pData.mDofValues = std::move(lDofValues);
                         // Below a joint that goes any other may move or be scaled.
                         pData.mMovingJoints.resize(pJoints.size());
                         std::iota(pData.mMovingJoints.begin(), pData.mMovingJoints.end(), 0);
                         pData.mScaledJoints = pData.mMovingJoints;
                         KQexPose lPose(pClip.GetData().mNames.size());
                         for (long long lFrame = 0; lFrame < pData.mSampling.mCount; ++lFrame)
                         {
                             pClip.SampleFrame(lFrame, lPose);
                             KAppendPose(pData, lSelection.Select(lPose));
                         }
                         KSetMoving(pData, FindChanging(pData, pData.mTranslations, &KQexJointTransform::mTranslation, 1e-5F));
                         KSetScaled(pData, FindChanging(pData, pData.mScalings, &KQexJointTransform::mScaling, 1e-6F));
                         return true;
                     });
}

} // namespace qexsdk

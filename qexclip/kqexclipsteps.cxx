// Steps that choose, change or join frames and joints.

#include <qexclip/kqexclipedit.h>
#include <qexclip/kqexclipsteps.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <iterator>

namespace qexsdk
{

namespace
{

constexpr double kLowestRate = 1e-3;
constexpr double kHighestRate = 1e6;
constexpr float  kRestTolerance = 1e-5F; ///< Centimetres; translations this near to that at rest do not count as moving.

/// Linear between \p pFrom and \p pTo.
float Mix(float pFrom, float pTo, double pFraction)
{
    return static_cast<float>(static_cast<double>(pFrom) + pFraction * (static_cast<double>(pTo) - static_cast<double>(pFrom)));
}

void AppendDofValues(const KQexClipData& pFrom, double pFrame, std::vector<float>& pValues)
{
    if (pFrom.mDofValues.empty())
    {
        return;
    }
    const size_t lFrame = static_cast<size_t>(pFrame);
    const size_t lNext = lFrame + 1 < static_cast<size_t>(pFrom.mSampling.mCount) ? lFrame + 1 : lFrame;
    for (size_t i = 0; i < pFrom.mDofs.size(); ++i)
    {
        pValues.push_back(Mix(pFrom.mDofValues[lFrame * pFrom.mDofs.size() + i], pFrom.mDofValues[lNext * pFrom.mDofs.size() + i],
                              pFrame - static_cast<double>(lFrame)));
    }
}

/// Keeps the frames first, first + every, … of \p pValues, \p pRow numbers each.
void KeepFrames(std::vector<float>& pValues, size_t pRow, size_t pFirst, size_t pEvery, size_t pCount)
{
    if (pValues.empty())
    {
        return;
    }
    std::vector<float> lKept;
    lKept.reserve(pCount * pRow);
    for (size_t i = 0; i < pCount; ++i)
    {
        const float* lFrom = pValues.data() + (pFirst + i * pEvery) * pRow;
        lKept.insert(lKept.end(), lFrom, lFrom + pRow);
    }
    pValues.swap(lKept);
}

/// \p pOuter after \p pInner: a joint's transform relative to its parent's parent.
KQexJointTransform Compose(const KQexJointTransform& pOuter, const KQexJointTransform& pInner)
{
    const KQexQuaternion lOuter = KToQuaternion(pOuter.mRotation);
    KQexJointTransform   lResult;
    double               lMoved[3];
    for (int i = 0; i < 3; ++i)
    {
        lMoved[i] = static_cast<double>(pOuter.mScaling[i]) * static_cast<double>(pInner.mTranslation[i]);
        lResult.mScaling[i] = pOuter.mScaling[i] * pInner.mScaling[i];
    }
    lOuter.Rotate(lMoved, lMoved);
    for (int i = 0; i < 3; ++i)
    {
        lResult.mTranslation[i] = static_cast<float>(static_cast<double>(pOuter.mTranslation[i]) + lMoved[i]);
    }
    KFromQuaternion(lOuter * KToQuaternion(pInner.mRotation), lResult.mRotation);
    return lResult;
}

/// Reduces a clip to some of its joints.
class KQexJointSelection
{
public:
    KQexJointSelection(const KQexClipData& pFrom, const std::vector<int>& pJoints) : mFrom(pFrom), mJoints(pJoints)
    {
        mNew.assign(pFrom.mNames.size(), -1);
        for (size_t i = 0; i < pJoints.size(); ++i)
        {
            mNew[static_cast<size_t>(pJoints[i])] = static_cast<int>(i);
        }
    }

    KQexPose Select(const KQexPose& pPose) const
    {
        KQexPose lResult;
        for (const int lJoint : mJoints)
        {
            KQexJointTransform lTransform = pPose[static_cast<size_t>(lJoint)];
            for (int lParent = ParentOf(lJoint); lParent >= 0 && NewOf(lParent) < 0; lParent = ParentOf(lParent))
            {
                lTransform = Compose(pPose[static_cast<size_t>(lParent)], lTransform);
            }
            lResult.push_back(lTransform);
        }
        return lResult;
    }

    void SelectJoints(KQexClipData& pData) const
    {
        std::vector<char> lIsDropped(mNew.size(), 1);
        pData.mNames.clear();
        pData.mParents.clear();
        pData.mIsEnd.clear();
        for (const int lJoint : mJoints)
        {
            int lParent = ParentOf(lJoint);
            lIsDropped[static_cast<size_t>(lJoint)] = static_cast<char>(lParent >= 0 && NewOf(lParent) < 0);
            while (lParent >= 0 && NewOf(lParent) < 0)
            {
                lParent = ParentOf(lParent);
            }
            pData.mNames.push_back(mFrom.mNames[static_cast<size_t>(lJoint)]);
            pData.mParents.push_back(lParent < 0 ? -1 : NewOf(lParent));
            pData.mIsEnd.push_back(mFrom.mIsEnd.empty() ? '\0' : mFrom.mIsEnd[static_cast<size_t>(lJoint)]);
        }
        KDropDofs(pData, lIsDropped);
        for (KQexClipDof& lDof : pData.mDofs)
        {
            lDof.mJoint = NewOf(lDof.mJoint);
        }
        pData.mRest = Select(mFrom.mRest);
    }

private:
    int ParentOf(int pJoint) const { return mFrom.mParents[static_cast<size_t>(pJoint)]; }
    int NewOf(int pJoint) const { return mNew[static_cast<size_t>(pJoint)]; }

    const KQexClipData&     mFrom;
    const std::vector<int>& mJoints;
    std::vector<int>        mNew; ///< Index among the selected joints, -1 for the others.
};

bool IsAscending(const std::vector<int>& pJoints, int pCount)
{
    return !pJoints.empty() && pJoints.front() >= 0 && pJoints.back() < pCount &&
           std::adjacent_find(pJoints.begin(), pJoints.end(), std::greater_equal<int>()) == pJoints.end();
}

/// Whether the translation of each joint ever differs from that at rest. All joints of \p pData are listed as moving.
std::vector<char> FindMoving(const KQexClipData& pData)
{
    std::vector<char> lIsMoving(pData.mNames.size(), 0);
    for (size_t i = 0; i < pData.mTranslations.size(); ++i)
    {
        const size_t lJoint = i / 3 % lIsMoving.size();
        const float  lRest = pData.mRest[lJoint].mTranslation[i % 3];
        if (std::fabs(pData.mTranslations[i] - lRest) > kRestTolerance + 1e-6F * std::fabs(lRest))
        {
            lIsMoving[lJoint] = 1;
        }
    }
    return lIsMoving;
}

KQexPose MixPoses(const KQexPose& pFrom, const KQexPose& pTo, double pFraction)
{
    KQexPose lResult(pFrom.size());
    for (size_t lJoint = 0; lJoint < pFrom.size(); ++lJoint)
    {
        KFromQuaternion(KQexQuaternion::Slerp(KToQuaternion(pFrom[lJoint].mRotation), KToQuaternion(pTo[lJoint].mRotation), pFraction),
                        lResult[lJoint].mRotation);
        for (int i = 0; i < 3; ++i)
        {
            lResult[lJoint].mTranslation[i] = Mix(pFrom[lJoint].mTranslation[i], pTo[lJoint].mTranslation[i], pFraction);
            lResult[lJoint].mScaling[i] = Mix(pFrom[lJoint].mScaling[i], pTo[lJoint].mScaling[i], pFraction);
        }
    }
    return lResult;
}

std::vector<int> Union(const std::vector<int>& pOne, const std::vector<int>& pOther)
{
    std::vector<int> lResult;
    std::set_union(pOne.begin(), pOne.end(), pOther.begin(), pOther.end(), std::back_inserter(lResult));
    return lResult;
}

/// Two clips, the second of which takes over from the first.
class KQexClipSequence
{
public:
    KQexClipSequence(const KQexClip& pFirst, const KQexClip& pSecond, int pBlend)
        : mFirst(pFirst), mSecond(pSecond), mBlend(pBlend), mLead(pFirst.GetFrameCount() - pBlend)
    {
    }

    void Append(KQexClipData& pData) const
    {
        const bool lHasValues = !mFirst.GetData().mDofValues.empty() && !mSecond.GetData().mDofValues.empty();
        KQexPose   lFrom(pData.mNames.size());
        KQexPose   lTo(pData.mNames.size());
        for (long long lFrame = 0; lFrame < pData.mSampling.mCount; ++lFrame)
        {
            const double lShare = ShareOfSecond(lFrame);
            mFirst.SampleFrame(std::min(lFrame, mFirst.GetFrameCount() - 1), lFrom);
            mSecond.SampleFrame(std::max(0LL, lFrame - mLead), lTo);
            KAppendPose(pData, lShare <= 0.0 ? lFrom : lShare >= 1.0 ? lTo : MixPoses(lFrom, lTo, lShare));
            if (lHasValues)
            {
                AppendValues(lFrame, lShare, pData.mDofValues);
            }
        }
    }

private:
    double ShareOfSecond(long long pFrame) const { return static_cast<double>(pFrame - mLead + 1) / static_cast<double>(mBlend + 1); }

    void AppendValues(long long pFrame, double pShare, std::vector<float>& pValues) const
    {
        std::vector<float> lFrom;
        std::vector<float> lTo;
        AppendDofValues(mFirst.GetData(), static_cast<double>(std::min(pFrame, mFirst.GetFrameCount() - 1)), lFrom);
        AppendDofValues(mSecond.GetData(), static_cast<double>(std::max(0LL, pFrame - mLead)), lTo);
        for (size_t i = 0; i < lFrom.size(); ++i)
        {
            pValues.push_back(Mix(lFrom[i], lTo[i], std::clamp(pShare, 0.0, 1.0)));
        }
    }

    const KQexClip& mFirst;
    const KQexClip& mSecond;
    int             mBlend;
    long long       mLead; ///< Frames before the second begins.
};

} // namespace

bool KQexClipResample(const KQexClip& pClip, double pFramesPerSecond, KQexClip& pResult)
{
    if (pClip.GetFrameCount() < 1 || !(pFramesPerSecond >= kLowestRate && pFramesPerSecond <= kHighestRate))
    {
        return false;
    }
    return KMakeClip(pClip, pResult,
                     [&pClip, pFramesPerSecond](KQexClipData& pData)
                     {
                         const KQexSampling lOld = pData.mSampling;
                         const KTime        lStep = NearestFrameStep(1.0 / pFramesPerSecond);
                         pData.mSampling = {lOld.mStart, lStep, (lOld.mCount - 1) * lOld.mStep.Get() / lStep.Get() + 1};
                         KClearFrames(pData);
                         KQexPose lPose(pData.mNames.size());
                         for (long long lFrame = 0; lFrame < pData.mSampling.mCount; ++lFrame)
                         {
                             pClip.Sample(KTime(lFrame * lStep.Get()).GetSeconds(), lPose);
                             KAppendPose(pData, lPose);
                             AppendDofValues(pClip.GetData(),
                                             static_cast<double>(lFrame) * static_cast<double>(lStep.Get()) /
                                                 static_cast<double>(lOld.mStep.Get()),
                                             pData.mDofValues);
                         }
                         return true;
                     });
}

bool KQexClipCut(const KQexClip& pClip, long long pFirst, long long pLast, int pEvery, KQexClip& pResult)
{
    if (pFirst < 0 || pLast < pFirst || pLast >= pClip.GetFrameCount() || pEvery < 1)
    {
        return false;
    }
    return KMakeClip(pClip, pResult,
                     [pFirst, pLast, pEvery](KQexClipData& pData)
                     {
                         const size_t lCount = static_cast<size_t>((pLast - pFirst) / pEvery + 1);
                         const auto   lKeep = [pFirst, pEvery, lCount](std::vector<float>& pValues, size_t pRow)
                         {
                             KeepFrames(pValues, pRow, static_cast<size_t>(pFirst), static_cast<size_t>(pEvery), lCount);
                         };
                         lKeep(pData.mRotations, pData.mNames.size() * 4);
                         lKeep(pData.mTranslations, pData.mMovingJoints.size() * 3);
                         lKeep(pData.mScalings, pData.mScaledJoints.size() * 3);
                         lKeep(pData.mDofValues, pData.mDofs.size());
                         const KTime lStart = pData.mSampling.GetTime(pFirst);
                         pData.mSampling = {lStart, KTime(pData.mSampling.mStep.Get() * pEvery), static_cast<long long>(lCount)};
                         return true;
                     });
}

bool KQexClipSelect(const KQexClip& pClip, const std::vector<int>& pJoints, KQexClip& pResult)
{
    if (!IsAscending(pJoints, pClip.GetJointCount()))
    {
        return false;
    }
    return KMakeClip(pClip, pResult,
                     [&pClip, &pJoints](KQexClipData& pData)
                     {
                         const KQexJointSelection lSelection(pClip.GetData(), pJoints);
                         lSelection.SelectJoints(pData);
                         const std::vector<float> lValues = pData.mDofValues;
                         KClearFrames(pData);
                         pData.mDofValues = lValues;
                         pData.mMovingJoints.clear();
                         pData.mScaledJoints.clear();
                         for (int i = 0; i < static_cast<int>(pJoints.size()); ++i)
                         {
                             pData.mMovingJoints.push_back(i);
                             if (!pClip.GetData().mScaledJoints.empty())
                             {
                                 pData.mScaledJoints.push_back(i);
                             }
                         }
                         KQexPose lPose(pClip.GetData().mNames.size());
                         for (long long lFrame = 0; lFrame < pData.mSampling.mCount; ++lFrame)
                         {
                             pClip.SampleFrame(lFrame, lPose);
                             KAppendPose(pData, lSelection.Select(lPose));
                         }
                         KSetMoving(pData, FindMoving(pData));
                         return true;
                     });
}

bool KQexClipScale(const KQexClip& pClip, double pFactor, KQexClip& pResult)
{
    if (!(pFactor > 0.0) || !std::isfinite(pFactor))
    {
        return false;
    }
    return KMakeClip(pClip, pResult,
                     [pFactor](KQexClipData& pData)
                     {
                         const auto lScale = [pFactor](float& pLength)
                         {
                             pLength = static_cast<float>(pFactor * static_cast<double>(pLength));
                         };
                         for (KQexJointTransform& lRest : pData.mRest)
                         {
                             std::for_each(lRest.mTranslation, lRest.mTranslation + 3, lScale);
                         }
                         std::for_each(pData.mTranslations.begin(), pData.mTranslations.end(), lScale);
                         for (size_t i = 0; i < pData.mDofs.size(); ++i)
                         {
                             KQexBoneDof& lDof = pData.mDofs[i].mDof;
                             if (lDof.mWord.empty() || lDof.mWord[0] != 't')
                             {
                                 continue;
                             }
                             lDof.mMin *= pFactor;
                             lDof.mMax *= pFactor;
                             for (size_t lValue = i; lValue < pData.mDofValues.size(); lValue += pData.mDofs.size())
                             {
                                 lScale(pData.mDofValues[lValue]);
                             }
                         }
                         return true;
                     });
}

bool KQexClipJoin(const KQexClip& pClip, const KQexClip& pNext, int pBlend, KQexClip& pResult)
{
    const KQexClipData& lOne = pClip.GetData();
    const KQexClipData& lTwo = pNext.GetData();
    if (pBlend < 0 || pBlend > std::min(pClip.GetFrameCount(), pNext.GetFrameCount()) || lOne.mNames != lTwo.mNames ||
        lOne.mParents != lTwo.mParents || lOne.mSampling.mStep != lTwo.mSampling.mStep)
    {
        return false;
    }
    return KMakeClip(pClip, pResult,
                     [&](KQexClipData& pData)
                     {
                         KClearFrames(pData);
                         pData.mMovingJoints = Union(lOne.mMovingJoints, lTwo.mMovingJoints);
                         pData.mScaledJoints = Union(lOne.mScaledJoints, lTwo.mScaledJoints);
                         pData.mSampling.mCount += lTwo.mSampling.mCount - pBlend;
                         KQexClipSequence(pClip, pNext, pBlend).Append(pData);
                         return true;
                     });
}

} // namespace qexsdk

// Steps that choose, change or join frames.

#include <qexclip/kqexclipedit.h>
#include <qexclip/kqexclipsteps.h>

#include <algorithm>
#include <cmath>

namespace qexsdk
{

namespace
{

constexpr double kLowestRate = 1e-3;
constexpr double kHighestRate = 1e6;

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

/// Keeps \p pCount frames of \p pData: first, first + step, … The times stay as they are.
void KeepFrames(KQexClipData& pData, long long pFirst, long long pStep, long long pCount)
{
    const auto lKeep = [=](std::vector<float>& pValues, size_t pRow)
    {
        if (pValues.empty())
        {
            return;
        }
        std::vector<float> lKept;
        lKept.reserve(static_cast<size_t>(pCount) * pRow);
        for (long long i = 0; i < pCount; ++i)
        {
            const float* lFrom = pValues.data() + static_cast<size_t>(pFirst + i * pStep) * pRow;
            lKept.insert(lKept.end(), lFrom, lFrom + pRow);
        }
        pValues.swap(lKept);
    };
    lKeep(pData.mRotations, pData.mNames.size() * 4);
    lKeep(pData.mTranslations, pData.mMovingJoints.size() * 3);
    lKeep(pData.mScalings, pData.mScaledJoints.size() * 3);
    lKeep(pData.mDofValues, pData.mDofs.size());
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

/// The joints whose numbers at rest differ, ascending.
std::vector<int> DifferingAtRest(const KQexClipData& pOne, const KQexClipData& pOther, float (KQexJointTransform::*pNumbers)[3])
{
    std::vector<int> lResult;
    for (size_t lJoint = 0; lJoint < pOne.mRest.size(); ++lJoint)
    {
        const float* lOne = pOne.mRest[lJoint].*pNumbers;
        if (!std::equal(lOne, lOne + 3, pOther.mRest[lJoint].*pNumbers))
        {
            lResult.push_back(static_cast<int>(lJoint));
        }
    }
    return lResult;
}

/// Whether both keep the values of the same degrees of freedom.
bool HaveSameDofs(const KQexClipData& pOne, const KQexClipData& pOther)
{
    return !pOne.mDofValues.empty() && !pOther.mDofValues.empty() &&
           std::equal(pOne.mDofs.begin(), pOne.mDofs.end(), pOther.mDofs.begin(), pOther.mDofs.end(),
                      [](const KQexClipDof& pDof, const KQexClipDof& pSame)
                      { return pDof.mJoint == pSame.mJoint && pDof.mDof.mWord == pSame.mDof.mWord; });
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
        const bool lHasValues = HaveSameDofs(mFirst.GetData(), mSecond.GetData());
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
                         KReserveFrames(pData);
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
                         const long long lCount = (pLast - pFirst) / pEvery + 1;
                         const long long lEvery = std::min<long long>(pEvery, pLast - pFirst + 1); // A step that the times hold.
                         KeepFrames(pData, pFirst, lEvery, lCount);
                         pData.mSampling = {pData.mSampling.GetTime(pFirst), KTime(pData.mSampling.mStep.Get() * lEvery), lCount};
                         return true;
                     });
}

bool KQexClipReverse(const KQexClip& pClip, KQexClip& pResult)
{
    return pClip.GetFrameCount() > 0 && KMakeClip(pClip, pResult,
                                                  [](KQexClipData& pData)
                                                  {
                                                      KeepFrames(pData, pData.mSampling.mCount - 1, -1, pData.mSampling.mCount);
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
                         pData.mMovingJoints = KUnion(KUnion(lOne.mMovingJoints, lTwo.mMovingJoints),
                                                      DifferingAtRest(lOne, lTwo, &KQexJointTransform::mTranslation));
                         pData.mScaledJoints = KUnion(KUnion(lOne.mScaledJoints, lTwo.mScaledJoints),
                                                      DifferingAtRest(lOne, lTwo, &KQexJointTransform::mScaling));
                         pData.mSampling.mCount += lTwo.mSampling.mCount - pBlend;
                         KReserveFrames(pData);
                         KQexClipSequence(pClip, pNext, pBlend).Append(pData);
                         return true;
                     });
}

} // namespace qexsdk

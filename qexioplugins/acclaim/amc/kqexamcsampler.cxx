#include <qexioplugins/acclaim/amc/kqexamcsampler.h>

#include <qexscene/kqexanimcurve.h>
#include <qexscene/kqexkeystore.h>

#include <algorithm>

namespace qexsdk
{

namespace
{

const int kCurveCount = 6;

/// The curves of a bone: translation x, y, z, rotation x, y, z; null where there is none.
struct KBoneCurves
{
    explicit KBoneCurves(HKQexAsfNode pNode)
    {
        for (int i = 0; i < 3; ++i)
        {
            mCurves[i] = pNode->mLTData[i];
            mCurves[i + 3] = pNode->mLRData[i];
        }
    }

    KQexAnimCurve** begin() { return mCurves; }
    KQexAnimCurve** end() { return mCurves + kCurveCount; }

    KQexAnimCurve* mCurves[kCurveCount];
};

/// Whether one of the bone's DOFs has a code from pFirst to pLast.
bool HasDof(HKQexAsfNode pNode, int pFirst, int pLast)
{
    return std::any_of(pNode->mOrderBuf, pNode->mOrderBuf + pNode->mOrderCount,
                       [=](int pCode) { return pCode >= pFirst && pCode <= pLast; });
}

bool HasKeys(KQexAnimCurve* const* pCurves, long long pKeys)
{
    return std::all_of(pCurves, pCurves + 3,
                       [=](const KQexAnimCurve* pCurve) { return pCurve != nullptr && pCurve->GetKeyCount() == pKeys; });
}

} // namespace

bool KQexAmcSampler::Frame(const KQexAmcFrame& pFrame)
{
    const std::vector<KQexAmcBone>& lBones = *pFrame.mBones;
    if (mStates.empty())
    {
        mLengthFactor = pFrame.mLengthFactor;
        mAngleFactor = pFrame.mAngleFactor;
        mStates.resize(lBones.size());
        for (size_t i = 0; i < lBones.size(); ++i)
        {
            mStates[i].mNode = lBones[i].mNode;
        }
    }
    if (pFrame.mLate)
    {
        DeferFrame(pFrame);
        return true;
    }

    if (mInOrderCount == 0)
    {
        mFirst = pFrame.mTime;
    }
    for (const int lIndex : *pFrame.mPresent)
    {
        KState& lState = mStates[static_cast<size_t>(lIndex)];
        if (lState.mLast != mInOrderCount - 1)
        {
            BridgeGap(lState);
        }
        Sample(lState, lBones[static_cast<size_t>(lIndex)].mValues, pFrame.mTime);
        lState.mLast = mInOrderCount;
    }
    mPrevious = pFrame.mTime;
    ++mInOrderCount;
    return true;
}

void KQexAmcSampler::Sample(KState& pState, const double* pValues, const KTime& pTime)
{
    pState.mNode->AddSampleFromDOF(pValues, pTime, mLengthFactor, mAngleFactor, mFlags.mSetRotatePivotOffet, mFlags.mSetPreRotation);
    ++pState.mKeys;
}

/// Adds keys up to the previous frame, for a bone that this frame has and the previous one lacks.
void KQexAmcSampler::BridgeGap(KState& pState)
{
    if (pState.mLast >= 0)
    {
        HoldLast(pState, mPrevious);
        return;
    }
    const double lDefault[6] = {0, 0, 0, 0, 0, 0};
    Sample(pState, lDefault, mFirst);
    if (mPrevious.Get() != mFirst.Get())
    {
        Sample(pState, lDefault, mPrevious);
    }
}

void KQexAmcSampler::HoldLast(KState& pState, const KTime& pTime)
{
    for (KQexAnimCurve* lCurve : KBoneCurves(pState.mNode))
    {
        if (lCurve != nullptr)
        {
            lCurve->AppendSample(pTime, lCurve->GetValue(lCurve->GetKeyCount() - 1));
        }
    }
    ++pState.mKeys;
}

void KQexAmcSampler::DeferFrame(const KQexAmcFrame& pFrame)
{
    for (const int lIndex : *pFrame.mPresent)
    {
        KLateSample lSample;
        lSample.mBone = lIndex;
        lSample.mTime = pFrame.mTime;
        const double* lValues = (*pFrame.mBones)[static_cast<size_t>(lIndex)].mValues;
        std::copy(lValues, lValues + 6, lSample.mValues);
        mLate.push_back(lSample);
    }
}

bool KQexAmcSampler::Finish(const KTime& pStart, const KTime& pStop)
{
    std::stable_sort(mLate.begin(), mLate.end(),
                     [](const KLateSample& pLeft, const KLateSample& pRight)
                     { return pLeft.mBone != pRight.mBone ? pLeft.mBone < pRight.mBone : pLeft.mTime.Get() < pRight.mTime.Get(); });
    const KLateSample* const lEnd = mLate.data() + mLate.size();
    for (const KLateSample* lBegin = mLate.data(); lBegin != lEnd;)
    {
        const KLateSample* const lNext =
            std::find_if(lBegin, lEnd, [=](const KLateSample& pSample) { return pSample.mBone != lBegin->mBone; });
        MergeLate(mStates[static_cast<size_t>(lBegin->mBone)], lBegin, lNext);
        lBegin = lNext;
    }

    bool lOk = true;
    for (KState& lState : mStates)
    {
        if (lState.mKeys == 0)
        {
            continue;
        }
        KBoneCurves                 lCurves(lState.mNode);
        KQexAnimCurve* const* const lAny =
            std::find_if(lCurves.begin(), lCurves.end(), [](const KQexAnimCurve* pCurve) { return pCurve != nullptr; });
        if (lAny != lCurves.end() && (*lAny)->GetTime((*lAny)->GetKeyCount() - 1).Get() < pStop.Get())
        {
            HoldLast(lState, pStop);
        }
        // A curve with a single key would be dropped as motionless, and its pose with it.
        if (lState.mKeys == 1)
        {
            HoldLast(lState, pStart);
        }
        lOk = HasAllKeys(lState) && lOk;
    }
    return lOk;
}

/// Merges a bone's late samples, sorted by time, into its keys. Of samples at the same time the last one in the file wins.
void KQexAmcSampler::MergeLate(KState& pState, const KLateSample* pBegin, const KLateSample* pEnd)
{
    KBoneCurves         lCurves(pState.mNode);
    KQexKeyStore        lKeys[kCurveCount];
    const KQexKeyStore* lTimes = nullptr;
    for (int i = 0; i < kCurveCount; ++i)
    {
        if (lCurves.mCurves[i] == nullptr)
        {
            continue;
        }
        lCurves.mCurves[i]->SwapKeys(lKeys[i]);
        lTimes = &lKeys[i];
    }
    if (lTimes == nullptr)
    {
        return;
    }

    const int lKeyCount = lTimes->GetCount();
    pState.mKeys = 0;
    for (int lKey = 0; lKey < lKeyCount || pBegin != pEnd;)
    {
        const bool lLate = pBegin != pEnd && (lKey == lKeyCount || pBegin->mTime.Get() <= lTimes->GetTime(lKey));
        if (!lLate)
        {
            for (int i = 0; i < kCurveCount; ++i)
            {
                if (lCurves.mCurves[i] != nullptr)
                {
                    lCurves.mCurves[i]->AppendSample(KTime(lKeys[i].GetTime(lKey)), lKeys[i].GetValue(lKey));
                }
            }
            ++pState.mKeys;
            ++lKey;
            continue;
        }
        if (lKey < lKeyCount && pBegin->mTime.Get() == lTimes->GetTime(lKey))
        {
            ++lKey;
        }
        if (pBegin + 1 == pEnd || pBegin[1].mTime.Get() != pBegin->mTime.Get())
        {
            Sample(pState, pBegin->mValues, pBegin->mTime);
        }
        ++pBegin;
    }
}

bool KQexAmcSampler::HasAllKeys(const KState& pState) const
{
    return (!HasDof(pState.mNode, 0, 2) || HasKeys(pState.mNode->mLTData, pState.mKeys)) &&
           (!HasDof(pState.mNode, 3, 5) || HasKeys(pState.mNode->mLRData, pState.mKeys));
}

} // namespace qexsdk

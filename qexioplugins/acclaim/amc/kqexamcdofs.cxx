#include <qexioplugins/acclaim/amc/kqexamcdofs.h>

#include <kbaselib/kmath/kdofcodes.h>

#include <algorithm>
#include <new>

namespace qexsdk
{

bool KQexAmcDofs::Frame(const KQexAmcFrame& pFrame)
{
    if (mBones.empty())
    {
        AddBones(*pFrame.mBones);
    }
    if (mCount == 0 && !pFrame.mLate)
    {
        mFirst = pFrame.mTime;
    }
    for (const int lIndex : *pFrame.mPresent)
    {
        AddLine(mBones[static_cast<size_t>(lIndex)], pFrame, (*pFrame.mBones)[static_cast<size_t>(lIndex)].mValues);
    }
    if (!pFrame.mLate)
    {
        mPrevious = pFrame.mTime;
        ++mCount;
    }
    return mNext.Frame(pFrame);
}

void KQexAmcDofs::AddBones(const std::vector<KQexAmcBone>& pBones)
{
    int lDofs = 0;
    for (const KQexAmcBone& lBone : pBones)
    {
        mBones.push_back(KBone{lBone.mNode, lDofs, -1});
        lDofs += lBone.mNode->mOrderCount;
    }
    mKeys = std::vector<KQexKeyStore>(static_cast<size_t>(lDofs));
}

/// In centimetres or degrees.
float KQexAmcDofs::ToScene(const KBone& pBone, int pDof, const KQexAmcFrame& pFrame, double pValue) const
{
    return static_cast<float>(pValue * (KIsTranslationDof(pBone.mNode->mOrderBuf[pDof]) ? pFrame.mLengthFactor : pFrame.mAngleFactor));
}

void KQexAmcDofs::AddLine(KBone& pBone, const KQexAmcFrame& pFrame, const double* pValues)
{
    if (!pFrame.mLate && pBone.mLast != mCount - 1)
    {
        Hold(pBone);
    }
    for (int i = 0; i < pBone.mNode->mOrderCount; ++i)
    {
        const float lValue = ToScene(pBone, i, pFrame, pValues[i]);
        if (pFrame.mLate)
        {
            mLate.push_back(KLateValue{pBone.mFirst + i, pFrame.mTime.Get(), lValue});
        }
        else
        {
            Set(pBone.mFirst + i, pFrame.mTime, lValue);
        }
    }
    pBone.mLast = pFrame.mLate ? pBone.mLast : mCount;
}

/// Repeats the last values up to the previous frame, which has no line of the bone.
void KQexAmcDofs::Hold(const KBone& pBone)
{
    for (int i = pBone.mFirst; i < pBone.mFirst + pBone.mNode->mOrderCount; ++i)
    {
        const KQexKeyStore& lKeys = mKeys[static_cast<size_t>(i)];
        if (lKeys.GetCount() == 0)
        {
            Set(i, mFirst, 0.0F);
        }
        Set(i, mPrevious, lKeys.GetValue(lKeys.GetCount() - 1));
    }
}

void KQexAmcDofs::Set(int pDof, KTime pTime, float pValue)
{
    if (mKeys[static_cast<size_t>(pDof)].Set(pTime.Get(), pValue) < 0)
    {
        throw std::bad_alloc();
    }
}

/// Adds late values, sorted by time, to the keys. Of values at the same time the last one in the file wins.
void KQexAmcDofs::MergeLate(int pDof, const KLateValue* pBegin, const KLateValue* pEnd)
{
    KQexKeyStore lOld;
    lOld.Swap(mKeys[static_cast<size_t>(pDof)]);
    int lKey = 0;
    for (const KLateValue* lLate = pBegin; lLate != pEnd; ++lLate)
    {
        for (; lKey < lOld.GetCount() && lOld.GetTime(lKey) <= lLate->mTime; ++lKey)
        {
            Set(pDof, KTime(lOld.GetTime(lKey)), lOld.GetValue(lKey));
        }
        Set(pDof, KTime(lLate->mTime), lLate->mValue);
    }
    for (; lKey < lOld.GetCount(); ++lKey)
    {
        Set(pDof, KTime(lOld.GetTime(lKey)), lOld.GetValue(lKey));
    }
}

void KQexAmcDofs::Finish(KQexDofValues& pValues)
{
    std::stable_sort(mLate.begin(), mLate.end(),
                     [](const KLateValue& pLeft, const KLateValue& pRight)
                     { return pLeft.mDof != pRight.mDof ? pLeft.mDof < pRight.mDof : pLeft.mTime < pRight.mTime; });
    const KLateValue* const lEnd = mLate.data() + mLate.size();
    for (const KLateValue* lBegin = mLate.data(); lBegin != lEnd;)
    {
        const KLateValue* const lNext = std::find_if(lBegin, lEnd, [=](const KLateValue& pValue) { return pValue.mDof != lBegin->mDof; });
        MergeLate(lBegin->mDof, lBegin, lNext);
        lBegin = lNext;
    }
    pValues.mKeys.swap(mKeys);
    for (const KBone& lBone : mBones)
    {
        for (int i = 0; i < lBone.mNode->mOrderCount; ++i)
        {
            KQexDofTrack lTrack;
            lTrack.mJoint = lBone.mNode->mName;
            lTrack.mDof.mWord = kDofWords[lBone.mNode->mOrderBuf[i]];
            lTrack.mKeys = &pValues.mKeys[static_cast<size_t>(lBone.mFirst + i)];
            pValues.mTracks.push_back(lTrack);
        }
    }
}

} // namespace qexsdk

#include <qexioplugins/acclaim/model/kqexasfcurves.h>

#include <qexioplugins/acclaim/model/kqexasfwalk.h>

#include <algorithm>
#include <cstddef>

namespace qexsdk
{

namespace
{

HKQexAsfNode NextEntered(KQexAsfWalk& pWalk)
{
    HKQexAsfNode lBone = pWalk.Next();
    while (lBone != nullptr && !pWalk.IsEntering())
    {
        lBone = pWalk.Next();
    }
    return lBone;
}

void DestroyAll(KQexAnimCurve** pBegin, KQexAnimCurve** pEnd)
{
    for (; pBegin != pEnd; ++pBegin)
    {
        if (*pBegin != nullptr)
        {
            (*pBegin)->Destroy(false, false);
        }
        *pBegin = nullptr;
    }
}

} // namespace

KQexAsfCurves::~KQexAsfCurves()
{
    DestroyAll(mCurves.data(), mCurves.data() + mCurves.size());
}

void KQexAsfCurves::MoveFrom(HKQexAsfNode pRoot)
{
    size_t      lBones = 0;
    KQexAsfWalk lCount(pRoot);
    while (NextEntered(lCount) != nullptr)
    {
        ++lBones;
    }
    mCurves.reserve(6 * lBones);

    KQexAsfWalk lWalk(pRoot);
    while (const HKQexAsfNode lBone = NextEntered(lWalk))
    {
        mCurves.insert(mCurves.end(), lBone->mLTData, lBone->mLTData + 3);
        mCurves.insert(mCurves.end(), lBone->mLRData, lBone->mLRData + 3);
        std::fill(lBone->mLTData, lBone->mLTData + 3, nullptr);
        std::fill(lBone->mLRData, lBone->mLRData + 3, nullptr);
    }
}

void KQexAsfCurves::MoveTo(HKQexAsfNode pRoot)
{
    KQexAnimCurve** lNext = mCurves.data();
    KQexAsfWalk     lWalk(pRoot);
    while (const HKQexAsfNode lBone = NextEntered(lWalk))
    {
        std::copy(lNext, lNext + 3, lBone->mLTData);
        std::copy(lNext + 3, lNext + 6, lBone->mLRData);
        lNext += 6;
    }
    mCurves.clear();
}

void KQexAsfCurves::Destroy(HKQexAsfNode pRoot)
{
    KQexAsfWalk lWalk(pRoot);
    while (const HKQexAsfNode lBone = NextEntered(lWalk))
    {
        DestroyAll(lBone->mLTData, lBone->mLTData + 3);
        DestroyAll(lBone->mLRData, lBone->mLRData + 3);
    }
}

bool KQexAsfCurves::HasAny(HKQexAsfNode pRoot)
{
    const auto lIsCurve = [](const KQexAnimCurve* pCurve)
    {
        return pCurve != nullptr;
    };
    KQexAsfWalk lWalk(pRoot);
    while (const HKQexAsfNode lBone = NextEntered(lWalk))
    {
        if (std::any_of(lBone->mLTData, lBone->mLTData + 3, lIsCurve) || std::any_of(lBone->mLRData, lBone->mLRData + 3, lIsCurve))
        {
            return true;
        }
    }
    return false;
}

} // namespace qexsdk

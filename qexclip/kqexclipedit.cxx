#include <qexclip/kqexclipedit.h>

#include <algorithm>
#include <iterator>
#include <new>

namespace qexsdk
{

namespace
{

/// Lists exactly the joints for which \p pIsListed is not 0 in \p pJoints, and their numbers of every frame in \p pValues: those they had
/// there, else those at rest.
void SetListed(const KQexClipData& pData, const std::vector<char>& pIsListed, float (KQexJointTransform::*pRest)[3],
               std::vector<int>& pJoints, std::vector<float>& pValues)
{
    std::vector<int>   lColumns(pIsListed.size(), -1);
    std::vector<int>   lListed;
    std::vector<float> lValues;
    for (size_t i = 0; i < pJoints.size(); ++i)
    {
        lColumns[static_cast<size_t>(pJoints[i])] = static_cast<int>(i);
    }
    for (size_t lJoint = 0; lJoint < pIsListed.size(); ++lJoint)
    {
        if (pIsListed[lJoint] != 0)
        {
            lListed.push_back(static_cast<int>(lJoint));
        }
    }
    lValues.reserve(static_cast<size_t>(pData.mSampling.mCount) * lListed.size() * 3);
    for (long long lFrame = 0; lFrame < pData.mSampling.mCount; ++lFrame)
    {
        const float* lRow = pValues.data() + static_cast<size_t>(lFrame) * pJoints.size() * 3;
        for (const int lJoint : lListed)
        {
            const int    lColumn = lColumns[static_cast<size_t>(lJoint)];
            const float* lFrom = lColumn < 0 ? pData.mRest[static_cast<size_t>(lJoint)].*pRest : lRow + static_cast<size_t>(lColumn) * 3;
            lValues.insert(lValues.end(), lFrom, lFrom + 3);
        }
    }
    pJoints.swap(lListed);
    pValues.swap(lValues);
}

} // namespace

void KClearFrames(KQexClipData& pData)
{
    pData.mRotations.clear();
    pData.mTranslations.clear();
    pData.mScalings.clear();
    pData.mDofValues.clear();
}

void KAppendPose(KQexClipData& pData, const KQexPose& pPose)
{
    for (const KQexJointTransform& lJoint : pPose)
    {
        pData.mRotations.insert(pData.mRotations.end(), lJoint.mRotation, lJoint.mRotation + 4);
    }
    for (const int lJoint : pData.mMovingJoints)
    {
        const float* lTranslation = pPose[static_cast<size_t>(lJoint)].mTranslation;
        pData.mTranslations.insert(pData.mTranslations.end(), lTranslation, lTranslation + 3);
    }
    for (const int lJoint : pData.mScaledJoints)
    {
        const float* lScaling = pPose[static_cast<size_t>(lJoint)].mScaling;
        pData.mScalings.insert(pData.mScalings.end(), lScaling, lScaling + 3);
    }
}

void KSetMoving(KQexClipData& pData, const std::vector<char>& pIsMoving)
{
    SetListed(pData, pIsMoving, &KQexJointTransform::mTranslation, pData.mMovingJoints, pData.mTranslations);
}

void KSetScaled(KQexClipData& pData, const std::vector<char>& pIsScaled)
{
    SetListed(pData, pIsScaled, &KQexJointTransform::mScaling, pData.mScaledJoints, pData.mScalings);
}

void KReserveFrames(KQexClipData& pData)
{
    const size_t lFrames = static_cast<size_t>(pData.mSampling.mCount);
    const auto   lReserve = [lFrames](std::vector<float>& pValues, size_t pRow)
    {
        if (pRow > 0 && lFrames > pValues.max_size() / pRow)
        {
            throw std::bad_alloc();
        }
        pValues.reserve(lFrames * pRow);
    };
    lReserve(pData.mRotations, pData.mNames.size() * 4);
    lReserve(pData.mTranslations, pData.mMovingJoints.size() * 3);
    lReserve(pData.mScalings, pData.mScaledJoints.size() * 3);
}

std::vector<int> KUnion(const std::vector<int>& pOne, const std::vector<int>& pOther)
{
    std::vector<int> lResult;
    std::set_union(pOne.begin(), pOne.end(), pOther.begin(), pOther.end(), std::back_inserter(lResult));
    return lResult;
}

void KDropDofs(KQexClipData& pData, const std::vector<char>& pIsDropped)
{
    const size_t       lOld = pData.mDofs.size();
    const size_t       lFrames = lOld > 0 ? pData.mDofValues.size() / lOld : 0;
    std::vector<float> lValues;
    for (size_t i = 0; i < lFrames * lOld; ++i)
    {
        if (pIsDropped[static_cast<size_t>(pData.mDofs[i % lOld].mJoint)] == 0)
        {
            lValues.push_back(pData.mDofValues[i]);
        }
    }
    pData.mDofs.erase(std::remove_if(pData.mDofs.begin(), pData.mDofs.end(),
                                     [&pIsDropped](const KQexClipDof& pDof) { return pIsDropped[static_cast<size_t>(pDof.mJoint)] != 0; }),
                      pData.mDofs.end());
    pData.mDofValues.swap(lValues);
}

std::vector<char> KRoots(const KQexClipData& pData)
{
    std::vector<char> lRoots;
    for (const int lParent : pData.mParents)
    {
        lRoots.push_back(static_cast<char>(lParent < 0));
    }
    return lRoots;
}

KQexQuaternion KToQuaternion(const float* pNumbers)
{
    return KQexQuaternion{{static_cast<double>(pNumbers[1]), static_cast<double>(pNumbers[2]), static_cast<double>(pNumbers[3]),
                           static_cast<double>(pNumbers[0])}};
}

void KPutQuaternion(const KQexQuaternion& pRotation, float* pNumbers)
{
    pNumbers[0] = static_cast<float>(pRotation.mData[3]);
    for (int i = 0; i < 3; ++i)
    {
        pNumbers[i + 1] = static_cast<float>(pRotation.mData[i]);
    }
}

void KFromQuaternion(const KQexQuaternion& pRotation, float* pNumbers)
{
    KQexQuaternion lUnit = pRotation;
    lUnit.Normalize();
    KPutQuaternion(lUnit, pNumbers);
}

} // namespace qexsdk

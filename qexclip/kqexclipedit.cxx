#include <qexclip/kqexclipedit.h>

#include <algorithm>

namespace qexsdk
{

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
    std::vector<int>   lColumns(pIsMoving.size(), -1);
    std::vector<int>   lMoving;
    std::vector<float> lTranslations;
    for (size_t i = 0; i < pData.mMovingJoints.size(); ++i)
    {
        lColumns[static_cast<size_t>(pData.mMovingJoints[i])] = static_cast<int>(i);
    }
    for (size_t lJoint = 0; lJoint < pIsMoving.size(); ++lJoint)
    {
        if (pIsMoving[lJoint] != 0)
        {
            lMoving.push_back(static_cast<int>(lJoint));
        }
    }
    for (long long lFrame = 0; lFrame < pData.mSampling.mCount; ++lFrame)
    {
        const float* lRow = pData.mTranslations.data() + static_cast<size_t>(lFrame) * pData.mMovingJoints.size() * 3;
        for (const int lJoint : lMoving)
        {
            const int    lColumn = lColumns[static_cast<size_t>(lJoint)];
            const float* lFrom = lColumn < 0 ? pData.mRest[static_cast<size_t>(lJoint)].mTranslation : lRow + lColumn * 3;
            lTranslations.insert(lTranslations.end(), lFrom, lFrom + 3);
        }
    }
    pData.mMovingJoints.swap(lMoving);
    pData.mTranslations.swap(lTranslations);
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
    return KQexQuaternion{{static_cast<double>(pNumbers[0]), static_cast<double>(pNumbers[1]), static_cast<double>(pNumbers[2]),
                           static_cast<double>(pNumbers[3])}};
}

void KFromQuaternion(const KQexQuaternion& pRotation, float* pNumbers)
{
    KQexQuaternion lUnit = pRotation;
    lUnit.Normalize();
    for (int i = 0; i < 4; ++i)
    {
        pNumbers[i] = static_cast<float>(lUnit.mData[i]);
    }
}

} // namespace qexsdk

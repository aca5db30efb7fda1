#include <qexclip/kqexclipworld.h>

#include <qexclip/kqexclipedit.h>

#include <algorithm>

namespace qexsdk
{

namespace
{

/// Replaces \p pVector in the joint's axes by the same in those that the joint is relative to.
void MapVector(const KWorldJoint& pJoint, double (&pVector)[3])
{
    double lResult[3];
    for (int i = 0; i < 3; ++i)
    {
        lResult[i] = pJoint.mImages[0][i] * pVector[0] + pJoint.mImages[1][i] * pVector[1] + pJoint.mImages[2][i] * pVector[2];
    }
    std::copy(lResult, lResult + 3, pVector);
}

} // namespace

KWorldJoint KGetWorldJoint(const KQexJointTransform& pLocal, const KWorldJoint* pParent)
{
    KWorldJoint lResult;
    double      lImages[3][4];
    lResult.mRotation = KToQuaternion(pLocal.mRotation);
    lResult.mRotation.Normalize(); // Single precision's rounding would lengthen the axes, and show in differences between frames.
    lResult.mRotation.ToAxes(lImages);
    for (int j = 0; j < 3; ++j)
    {
        for (int i = 0; i < 3; ++i)
        {
            lResult.mImages[j][i] = lImages[j][i] * static_cast<double>(pLocal.mScaling[j]);
        }
        lResult.mPosition[j] = static_cast<double>(pLocal.mTranslation[j]);
    }
    if (pParent == nullptr)
    {
        return lResult;
    }
    for (double(&lImage)[3] : lResult.mImages)
    {
        MapVector(*pParent, lImage);
    }
    MapVector(*pParent, lResult.mPosition);
    for (int i = 0; i < 3; ++i)
    {
        lResult.mPosition[i] += pParent->mPosition[i];
    }
    lResult.mRotation = pParent->mRotation * lResult.mRotation;
    return lResult;
}

} // namespace qexsdk

#include <tests/qexscene/localmatrix.h>

#include <Imath/ImathMatrix.h>
#include <Imath/ImathVec.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

using namespace qexsdk;

namespace qextest
{

namespace
{

using KMatrix = Imath::M44d;

KMatrix RotationAbout(int pAxis, double pDegrees)
{
    Imath::V3d lAxis(0.0);
    lAxis[pAxis] = 1.0;
    KMatrix lMatrix;
    lMatrix.setAxisAngle(lAxis, pDegrees * 3.14159265358979323846 / 180.0);
    return lMatrix;
}

/// Rotations about the axes \p pAxes, the first one applied first. With row vectors that is the leftmost factor.
KMatrix EulerRotation(const KQexVector4& pAngles, const char* pAxes)
{
    KMatrix lMatrix;
    for (; *pAxes != '\0'; ++pAxes)
    {
        const int lAxis = *pAxes - 'x';
        lMatrix = lMatrix * RotationAbout(lAxis, pAngles[lAxis]);
    }
    return lMatrix;
}

KMatrix Translation(const KQexVector4& pOffset)
{
    KMatrix lMatrix;
    lMatrix.setTranslation(Imath::V3d(pOffset[0], pOffset[1], pOffset[2]));
    return lMatrix;
}

/// Imath's rows and the vectors of mData are both the images of the axes.
KQexMatrix FromImath(const KMatrix& pMatrix)
{
    KQexMatrix lMatrix;
    for (int lJ = 0; lJ < 4; ++lJ)
    {
        for (int lI = 0; lI < 4; ++lI)
        {
            lMatrix.mData[lJ][lI] = pMatrix[lJ][lI];
        }
    }
    return lMatrix;
}

KMatrix ToImath(const KQexMatrix& pMatrix)
{
    KMatrix lMatrix;
    for (int lJ = 0; lJ < 4; ++lJ)
    {
        for (int lI = 0; lI < 4; ++lI)
        {
            lMatrix[lJ][lI] = pMatrix.mData[lJ][lI];
        }
    }
    return lMatrix;
}

const char* Axes(const KQexNode& pNode)
{
    static const char* const sAxes[] = {"xyz", "xzy", "yzx", "yxz", "zxy", "zyx", "xyz"};
    return pNode.GetRotationActive() ? sAxes[pNode.GetRotationOrder()] : "xyz";
}

} // namespace

KQexMatrix LocalMatrix(const KQexNode& pNode, const KQexVector4& pTranslation, const KQexVector4& pRotation, const KQexVector4& pScaling)
{
    KMatrix lScale;
    lScale.setScale(Imath::V3d(pScaling[0], pScaling[1], pScaling[2]));
    KMatrix lRotation = EulerRotation(pRotation, Axes(pNode));
    if (pNode.GetRotationActive())
    {
        lRotation = EulerRotation(pNode.GetPostRotation(), "xyz").inverse() * lRotation * EulerRotation(pNode.GetPreRotation(), "xyz");
    }
    return FromImath(lScale * lRotation * Translation(pNode.GetRotationOffset()) * Translation(pTranslation));
}

KQexMatrix LocalMatrix(const KQexNode& pNode)
{
    return LocalMatrix(pNode, pNode.mLocalTranslation.Get(), pNode.mLocalRotation.Get(), pNode.mLocalScaling.Get());
}

KQexMatrix Product(const KQexMatrix& pLeft, const KQexMatrix& pRight)
{
    return FromImath(ToImath(pRight) * ToImath(pLeft));
}

void ExpectNear(const KQexMatrix& pActual, const KQexMatrix& pExpected, double pTolerance)
{
    for (int lJ = 0; lJ < 4; ++lJ)
    {
        for (int lI = 0; lI < 4; ++lI)
        {
            const double lExpected = pExpected.mData[lJ][lI];
            ASSERT_NEAR(pActual.mData[lJ][lI], lExpected, pTolerance * std::max(1.0, std::fabs(lExpected))) << lJ << ", " << lI;
        }
    }
}

void KRandomNode::Set(KQexNode& pNode)
{
    pNode.mLocalTranslation.Set(Vector(100.0));
    pNode.mLocalRotation.Set(Vector(360.0));
    if (Below(3) == 0)
    {
        pNode.mLocalScaling.Set(KQexVector4(Between(-2.0, 2.0), Between(0.1, 2.0), Between(0.1, 2.0)));
    }
    pNode.SetRotationOffset(kPivotSet0, Vector(100.0));
    pNode.SetPreRotation(kPivotSet0, Vector(360.0));
    pNode.SetPostRotation(kPivotSet0, Vector(360.0));
    pNode.SetRotationOrder(kPivotSet0, static_cast<ERotationOrder>(Below(7)));
    pNode.SetRotationActive(Below(4) != 0);
}

KQexVector4 KRandomNode::Vector(double pMax)
{
    if (Below(3) == 0)
    {
        return KQexVector4();
    }
    const double lX = Between(-pMax, pMax);
    const double lY = Between(-pMax, pMax);
    return KQexVector4(lX, lY, Between(-pMax, pMax));
}

} // namespace qextest

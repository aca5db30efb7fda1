#include <qexioplugins/gltf/kqexgltfmesh.h>

#include <qexioplugins/gltf/kqexgltfvectors.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace qexsdk
{

namespace
{

constexpr double kRingOffset = 0.2;  ///< Distance of the widest cross-section from the bone's start, as a fraction of its length.
constexpr double kRingRadius = 0.12; ///< Radius of that cross-section, as a fraction of the bone's length,
constexpr double kThinnest = 0.015;  ///< but not below this fraction of the figure's size,
constexpr double kThickest = 0.035;  ///< not above this one,
constexpr double kStoutest = 0.35;   ///< and never above this fraction of the bone's length.
constexpr double kMinLength = 1e-9;  ///< Shorter bones have no direction.

/// Two vectors of length \p pRadius, orthogonal to \p pAlong and to each other.
void MakeRing(const double* pAlong, double pRadius, double* pU, double* pV)
{
    const double lAxis[3] = {std::fabs(pAlong[0]) < 0.6 ? 1.0 : 0.0, std::fabs(pAlong[0]) < 0.6 ? 0.0 : 1.0, 0.0};
    Cross(pU, pAlong, lAxis);
    KmVnorm(pU, pU);
    Cross(pV, pAlong, pU);
    KmVN(pU, pU, pRadius);
    KmVN(pV, pV, pRadius);
}

/// Radius of a bone's widest cross-section: in proportion, but a finger stays visible and a spine of one bone slim.
double RingRadius(double pLength, double pFigureSize)
{
    const double lRadius = std::clamp(kRingRadius * pLength, kThinnest * pFigureSize, kThickest * pFigureSize);
    return std::min(lRadius, kStoutest * pLength);
}

} // namespace

void KQexGltfBoneMesh::AddFace(const double* pA, const double* pB, const double* pC, const double* pCentre, std::uint16_t pJoint)
{
    double lAB[3];
    double lAC[3];
    double lNormal[3];
    double lOutward[3];
    Subtract(lAB, pB, pA);
    Subtract(lAC, pC, pA);
    Cross(lNormal, lAB, lAC);
    KmVnorm(lNormal, lNormal);
    Subtract(lOutward, pA, pCentre);
    if (Dot(lNormal, lOutward) < 0.0)
    {
        KmVneg(lNormal, lNormal);
        std::swap(pB, pC);
    }
    for (const double* lCorner : {pA, pB, pC})
    {
        for (int i = 0; i < 3; ++i)
        {
            mPositions.push_back(static_cast<float>(lCorner[i]));
            mNormals.push_back(static_cast<float>(lNormal[i]));
        }
        mJoints.insert(mJoints.end(), {pJoint, 0, 0, 0});
    }
}

void KQexGltfBoneMesh::AddBone(const double* pStart, const double* pEnd, std::uint16_t pJoint)
{
    double lAlong[3];
    Subtract(lAlong, pEnd, pStart);
    const double lLength = KmVlength(lAlong);
    if (!(lLength > kMinLength) || !std::isfinite(lLength))
    {
        return;
    }
    KmVN(lAlong, lAlong, 1.0 / lLength);
    double lU[3];
    double lV[3];
    MakeRing(lAlong, RingRadius(lLength, mFigureSize), lU, lV);
    double lCentre[3];
    KmVN(lCentre, lAlong, kRingOffset * lLength);
    KmVadd(lCentre, lCentre, pStart);
    double lRing[4][3];
    KmVadd(lRing[0], lCentre, lU);
    KmVadd(lRing[1], lCentre, lV);
    Subtract(lRing[2], lCentre, lU);
    Subtract(lRing[3], lCentre, lV);
    for (int i = 0; i < 4; ++i)
    {
        AddFace(pStart, lRing[i], lRing[(i + 1) % 4], lCentre, pJoint);
        AddFace(pEnd, lRing[i], lRing[(i + 1) % 4], lCentre, pJoint);
    }
}

} // namespace qexsdk

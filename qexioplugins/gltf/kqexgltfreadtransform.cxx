#include <qexioplugins/gltf/kqexgltfreader.h>
#include <qexioplugins/gltf/kqexgltfvectors.h>

#include <algorithm>
#include <cmath>
#include <functional>

namespace qexsdk
{

namespace
{

constexpr double kShearTolerance = 1e-4; ///< Axes whose cosine is at most this count as orthogonal: files have single precision.

double Determinant(const double (*pM)[3])
{
    return pM[0][0] * (pM[1][1] * pM[2][2] - pM[1][2] * pM[2][1]) - pM[0][1] * (pM[1][0] * pM[2][2] - pM[1][2] * pM[2][0]) +
           pM[0][2] * (pM[1][0] * pM[2][1] - pM[1][1] * pM[2][0]);
}

} // namespace

bool GltfReadNumbers(const KQexGltfJson::KValue& pFrom, int pCount, double* pResult, const std::string& pName)
{
    if (!pFrom.IsValid())
    {
        return false;
    }
    bool lOk = pFrom.Is(KQexGltfJson::eARRAY) && pFrom.GetCount() == static_cast<size_t>(pCount);
    for (KQexGltfJson::KValue lNumber = pFrom.GetFirst(); lOk && lNumber.IsValid(); lNumber = lNumber.GetNext())
    {
        lOk = lNumber.Is(KQexGltfJson::eNUMBER);
        *pResult++ = lNumber.GetNumber(0.0);
    }
    if (!lOk)
    {
        throw KQexGltfError(pName + " is not " + std::to_string(pCount) + " numbers");
    }
    return true;
}

void KQexGltfReader::SetTransform(KQexGltfReadNode& pNode, const std::string& pName)
{
    if (pNode.mFrom["matrix"].IsValid())
    {
        SetMatrix(pNode, pName);
        return;
    }
    double         lT[3] = {0.0, 0.0, 0.0};
    double         lS[3] = {1.0, 1.0, 1.0};
    KQexQuaternion lR;
    GltfReadNumbers(pNode.mFrom["translation"], 3, lT, pName + ".translation");
    GltfReadNumbers(pNode.mFrom["scale"], 3, lS, pName + ".scale");
    if (GltfReadNumbers(pNode.mFrom["rotation"], 4, lR.mData, pName + ".rotation") && !lR.Normalize())
    {
        Warn(pName + ".rotation has zero length, using identity");
    }
    SetRest(pNode, lT, lR, lS);
}

/// Decomposes a matrix: the lengths of its axes are the scale, and the axes after Gram-Schmidt orthonormalization are the rotation.
void KQexGltfReader::SetMatrix(KQexGltfReadNode& pNode, const std::string& pName)
{
    double lM[16];
    double lAxes[3][3];
    double lS[3];
    GltfReadNumbers(pNode.mFrom["matrix"], 16, lM, pName + ".matrix");
    bool lIsSingular = false;
    for (int i = 0; i < 3; ++i)
    {
        const double* lAxis = lM + 4 * i;
        lS[i] = std::hypot(lAxis[0], lAxis[1], lAxis[2]);
        lIsSingular = lIsSingular || !(lS[i] > 0.0) || !std::isfinite(lS[i]);
        for (int j = 0; j < 3; ++j)
        {
            lAxes[i][j] = lIsSingular ? 0.0 : lAxis[j] / lS[i];
        }
    }
    const double lDeterminant = lIsSingular ? 0.0 : Determinant(lAxes);
    if (lIsSingular || std::fabs(lDeterminant) < 1e-9)
    {
        Warn(pName + ".matrix is singular, rotation ignored");
        SetRest(pNode, lM + 12, KQexQuaternion(), lS);
        return;
    }
    if (lDeterminant < 0.0)
    {
        lS[0] = -lS[0];
        std::transform(lAxes[0], lAxes[0] + 3, lAxes[0], std::negate<>());
    }
    bool lIsSheared = lM[3] != 0.0 || lM[7] != 0.0 || lM[11] != 0.0 || lM[15] != 1.0;
    for (int i = 1; i < 3; ++i)
    {
        for (int j = 0; j < i; ++j)
        {
            const double lProjection = Dot(lAxes[i], lAxes[j]);
            lIsSheared = lIsSheared || std::fabs(lProjection) > kShearTolerance;
            for (int k = 0; k < 3; ++k)
            {
                lAxes[i][k] -= lProjection * lAxes[j][k];
            }
        }
        const double lLength = std::sqrt(Dot(lAxes[i], lAxes[i]));
        std::transform(lAxes[i], lAxes[i] + 3, lAxes[i], [lLength](double pNumber) { return pNumber / lLength; });
    }
    if (lIsSheared)
    {
        Warn(pName + ".matrix has shear or perspective, which is ignored");
    }
    KQexQuaternion lR = KQexQuaternion::FromAxes(lAxes);
    lR.Normalize();
    SetRest(pNode, lM + 12, lR, lS);
}

void KQexGltfReader::SetRest(KQexGltfReadNode& pNode, const double pTranslation[3], const KQexQuaternion& pRotation,
                             const double pScaling[3])
{
    double       lAngles[3] = {0.0, 0.0, 0.0};
    const double lF = mOptions.mScale;
    const double lT[3] = {pTranslation[0] * lF, pTranslation[1] * lF, pTranslation[2] * lF};
    ToEuler(pNode, pRotation, lAngles, lAngles);
    if (!std::isfinite(lT[0] + lT[1] + lT[2]) || !std::isfinite(pScaling[0] + pScaling[1] + pScaling[2]))
    {
        throw KQexGltfError(std::string("Node (") + pNode.mNode->GetName() + "): a value is too large");
    }
    pNode.mNode->mLocalTranslation.Set(qexVectorTemplate3<double>(lT[0], lT[1], lT[2]));
    pNode.mNode->mLocalRotation.Set(qexVectorTemplate3<double>(lAngles[0], lAngles[1], lAngles[2]));
    pNode.mNode->mLocalScaling.Set(qexVectorTemplate3<double>(pScaling[0], pScaling[1], pScaling[2]));
}

} // namespace qexsdk

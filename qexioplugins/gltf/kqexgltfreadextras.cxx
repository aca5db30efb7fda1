#include <kbaselib/kmath/kdofcodes.h>
#include <qexioplugins/gltf/kqexgltfreader.h>

#include <cstring>

// Reads the `extras` that our own writer adds to nodes. Other programs may store anything there, so unknown contents are ignored.

namespace qexsdk
{

namespace
{

/// Reads bounds by axis: {"x": …, "z": …}; a missing axis has no bound.
void ReadBounds(const KQexGltfJson::KValue& pFrom, bool* pActive, double* pValues)
{
    static const char* const sAxes[3] = {"x", "y", "z"};
    for (int i = 0; i < 3; ++i)
    {
        pActive[i] = pFrom[sAxes[i]].Is(KQexGltfJson::eNUMBER);
        pValues[i] = pFrom[sAxes[i]].GetNumber(0.0);
    }
}

bool ReadAngles(const KQexGltfJson::KValue& pFrom, KQexVector4& pAngles)
{
    int i = 0;
    for (KQexGltfJson::KValue lFrom = pFrom.GetFirst(); lFrom.Is(KQexGltfJson::eNUMBER) && i < 3; lFrom = lFrom.GetNext(), ++i)
    {
        pAngles[i] = lFrom.GetNumber(0.0);
    }
    return i == 3;
}

} // namespace

void KQexGltfReader::ReadExtras(KQexGltfReadNode& pNode)
{
    static const char* const   sOrders[6] = {"XYZ", "XZY", "YZX", "YXZ", "ZXY", "ZYX"};
    const KQexGltfJson::KValue lExtras = pNode.mFrom["extras"];
    KQexNode*                  lNode = pNode.mNode;
    for (int i = 0; i < 6; ++i)
    {
        if (std::strcmp(lExtras["rotationOrder"].GetText(), sOrders[i]) == 0)
        {
            pNode.mOrder = 2 * i;
            lNode->SetRotationOrder(kPivotSet0, static_cast<ERotationOrder>(i));
        }
    }
    KQexVector4 lAngles;
    if (ReadAngles(lExtras["preRotation"], lAngles))
    {
        lNode->SetPreRotation(kPivotSet0, lAngles);
        pNode.mPreInverse = KQexQuaternion::FromEuler(lAngles, 0).Inverse();
        pNode.mHasPivots = true;
    }
    if (ReadAngles(lExtras["postRotation"], lAngles))
    {
        lNode->SetPostRotation(kPivotSet0, lAngles);
        pNode.mPost = KQexQuaternion::FromEuler(lAngles, 0);
        pNode.mHasPivots = true;
    }
    const KQexGltfJson::KValue lLimits = lExtras["limits"];
    if (lLimits["translation"].IsValid())
    {
        ReadLimits(lLimits["translation"], lNode->GetLimits().mTranslationLimits);
    }
    if (lLimits["rotation"].IsValid())
    {
        ReadLimits(lLimits["rotation"], lNode->GetLimits().mRotationLimits);
    }
    // A bone without degrees of freedom has an empty array, which some programs write as null.
    if (lExtras["dofs"].Is(KQexGltfJson::eARRAY) || lExtras["dofs"].Is(KQexGltfJson::eNULL))
    {
        ReadDofs(lExtras["dofs"], mBoneDofs[lNode->GetName()]);
    }
}

void KQexGltfReader::ReadLimits(const KQexGltfJson::KValue& pFrom, KQexLimits& pLimits) const
{
    bool   lMinActive[3] = {false, false, false};
    bool   lMaxActive[3] = {false, false, false};
    double lMin[3] = {0.0, 0.0, 0.0};
    double lMax[3] = {0.0, 0.0, 0.0};
    ReadBounds(pFrom["min"], lMinActive, lMin);
    ReadBounds(pFrom["max"], lMaxActive, lMax);
    pLimits.SetActive(true);
    pLimits.SetLimitMinActive(lMinActive[0], lMinActive[1], lMinActive[2]);
    pLimits.SetLimitMaxActive(lMaxActive[0], lMaxActive[1], lMaxActive[2]);
    pLimits.SetLimitMin(KQexVector4(lMin[0], lMin[1], lMin[2]));
    pLimits.SetLimitMax(KQexVector4(lMax[0], lMax[1], lMax[2]));
}

void KQexGltfReader::ReadDofs(const KQexGltfJson::KValue& pFrom, std::vector<KQexBoneDof>& pDofs) const
{
    pDofs.clear();
    for (KQexGltfJson::KValue lFrom = pFrom.GetFirst(); lFrom.IsValid() && pDofs.size() < 6; lFrom = lFrom.GetNext())
    {
        KQexBoneDof lDof;
        lDof.mWord = lFrom["dof"].GetText();
        lDof.mHasMin = lFrom["min"].Is(KQexGltfJson::eNUMBER);
        lDof.mHasMax = lFrom["max"].Is(KQexGltfJson::eNUMBER);
        lDof.mMin = lFrom["min"].GetNumber(0.0);
        lDof.mMax = lFrom["max"].GetNumber(0.0);
        if (KDofCodeOf(lDof.mWord) >= 0)
        {
            pDofs.push_back(lDof);
        }
    }
}

} // namespace qexsdk
